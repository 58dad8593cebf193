// A group's animation as poses over time.
#pragma once

#include <optional>
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

// Between two moments as readers of glTF do it: shift and scale along a line, the rotation the short way round. Before
// the first moment the pose is the first, after the last the last.
Pose poseAt(const Motion& motion, double seconds);

// Where a group stands in the group around it at a time, by the first of its animations; at rest without a useful one.
Matrix placementAt(const Group& group, double seconds);

// The last moment of all groups' motions; nothing when none moves.
std::optional<double> motionEnd(const Scene& scene);

}  // namespace rpk
