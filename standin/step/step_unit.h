// The length unit that a STEP file declares.
#pragma once

#include <STEPControl_Reader.hxx>
#include <string>

namespace standin {

struct LengthUnit {
  std::wstring name = L"mm";  // "mm", "cm", "m", "in", "ft", "mil", "micron", else the file's own name for it
  double millimetres = 1.0;   // in one unit, as the file says
};

// The unit of the first shape in a file that was read; millimetres when it declares none.
LengthUnit lengthUnitOf(STEPControl_Reader& reader);

}  // namespace standin
