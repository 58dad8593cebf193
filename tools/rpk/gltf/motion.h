// A group's animation as poses over time.
#pragma once

#include <vector>

#include "tools/rpk/gltf/rigid_matrix.h"
#include "tools/rpk/scene_summary.h"

namespace rpk {

// Poses of a node at moments that only increase, in seconds from 0.
struct Motion {
  std::vector<float> times;
  std::vector<Pose> poses;
  // The matrices of the animation are applied before the group's placement. True when the poses hold both; false when
  // they are those of the matrices alone, to be given to a node inside the placed one.
  bool withPlacement = true;
};

// The shorter of the two lists of the animation counts. Samples that go back in time, or stand still in it, are left
// out, as are matrices that are no numbers. Nothing when no sample is left or the matrices themselves shear.
std::optional<Motion> toMotion(const Animation& animation, const Matrix& placement);

}  // namespace rpk
