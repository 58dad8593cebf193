#pragma once

#include <tiny_gltf.h>

#include "tools/rpk/gltf/rigid_matrix.h"

namespace rpk {

// As translation, rotation and scale; those that do nothing are left out.
inline void setPose(tinygltf::Node& node, const Pose& pose) {
  const Pose none;
  if (pose.translation != none.translation) node.translation.assign(pose.translation.begin(), pose.translation.end());
  if (pose.rotation != none.rotation) node.rotation.assign(pose.rotation.begin(), pose.rotation.end());
  if (pose.scale != none.scale) node.scale.assign(pose.scale.begin(), pose.scale.end());
}

}  // namespace rpk
