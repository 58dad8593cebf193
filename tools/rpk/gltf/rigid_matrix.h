// Placements as glTF wants them: a scale along the axes, then a rotation, then a shift. Whatever cannot be said so is
// split into two such steps.
#pragma once

#include <optional>
#include <vector>

#include "tools/rpk/scene_summary.h"

namespace rpk {

// x y z w, of length 1.
using Quaternion = std::array<double, 4>;

struct Pose {
  Vector translation = {0, 0, 0};
  Quaternion rotation = {0, 0, 0, 1};
  Vector scale = {1, 1, 1};
};

// The matrix with the fourth column that a placement has. Nothing when a number is none or beyond 1e30, which a reader
// with 32-bit floats could not take in.
std::optional<Matrix> cleanPlacement(const Matrix& matrix);

// Nothing when the matrix shears: its first three rows must stand at right angles to within 1e-5, the rounding of
// numbers with six digits. A mirroring becomes a negative scale along x.
std::optional<Pose> toPose(const Matrix& placement);

Matrix toMatrix(const Pose& pose);

// A placement of any kind as one pose, or as a rotation and the pose that follows it: point × first × second. Only the
// second shifts and scales.
struct SplitPlacement {
  std::optional<Pose> first;
  Pose second;
};
SplitPlacement splitPlacement(const Matrix& placement);

// Turns the up axis of "import_up_vector" (0 to 5: x, y, z, -x, -y, -z; all other values are y) to Y by the shortest
// rotation; -y by half a turn about X.
Matrix upRotation(double upVector);

}  // namespace rpk
