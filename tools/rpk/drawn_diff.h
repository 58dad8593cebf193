// What differs between the objects that two scenes draw at one place.
#pragma once

#include <string>
#include <vector>

#include "tools/rpk/drawn_content.h"

namespace rpk {

// The objects, and the material that a reference puts in the place of theirs; null for none.
struct DrawnSide {
  const HeldContent& content;
  const Material* replaced = nullptr;
};

struct DrawnDifference {
  std::string remeshed;                 // what differs in the geometry, in words; empty when nothing does
  std::vector<std::string> recoloured;  // "red #ff0000 -> blue #0000ff", each once
};

DrawnDifference compareDrawn(const DrawnSide& before, const DrawnSide& after);

// What two materials differ in, in words; empty when they are the same. Either can be null.
std::string materialChange(const Material* before, const Material* after);

}  // namespace rpk
