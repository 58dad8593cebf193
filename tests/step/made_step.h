// STEP files that a test makes for itself, where no file at hand has the case.
#pragma once

#include <TopoDS_Shape.hxx>
#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace standin::test {

struct MadeShape {
  TopoDS_Shape shape;
  std::string name;
  std::optional<std::array<double, 3>> color = std::nullopt;       // of the whole shape
  std::optional<std::array<double, 3>> solidColor = std::nullopt;  // of its first solid
  std::string layer = {};
};

// Writes each shape as a root of its own; `unit` is one of Open CASCADE's names, such as "INCH".
void writeStep(const std::filesystem::path& file, const std::vector<MadeShape>& shapes, const std::string& unit = "MM");

// A wedge that no mirror plane maps to itself.
TopoDS_Shape lopsidedSolid();
TopoDS_Shape mirrored(const TopoDS_Shape& shape);

}  // namespace standin::test
