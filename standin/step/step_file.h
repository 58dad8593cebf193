// A STEP file read into a document of Open CASCADE: shapes in millimetres with product structure, names, colours and
// layers.
#pragma once

#include <TDocStd_Document.hxx>
#include <filesystem>
#include <string>

#include "standin/step/step_loader.h"
#include "standin/step/step_unit.h"

namespace standin {

struct StepFile {
  Handle(TDocStd_Document) document;
  LengthUnit unit;
};

// Reads the file and the files it refers to. The result is empty, or what is wrong, in one line. Nothing is printed,
// and nothing is thrown.
std::string readStepFile(const std::filesystem::path& path, const LoadProgress& progress, StepFile& file);

}  // namespace standin
