// What the geometry of a loaded model measures by its exact surfaces, as the yardstick of meshes.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "standin/cad/model.h"

namespace standin {

struct PartMeasure {
  std::vector<double> surfaceAreas;  // by the index of the surface, in square units
  double area = 0.0;                 // their sum
  double volume = 0.0;               // of the part's solids, in cubic units
  std::size_t solids = 0;
};

// A part as the STEP loader made it, in its own length unit; none for any other model, or when it has no surfaces.
std::optional<PartMeasure> measurePart(const Model& part);

// The box of the exact surfaces of the model and of everything below it, whatever its features' status, in the model's
// own coordinates and length unit; none when there are no surfaces.
std::optional<std::array<Point, 2>> measureBox(const Model& model);

}  // namespace standin
