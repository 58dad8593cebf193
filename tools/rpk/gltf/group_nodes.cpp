#include "tools/rpk/gltf/group_nodes.h"

#include <fmt/format.h>
#include <tiny_gltf.h>

#include <algorithm>
#include <cmath>

#include "tools/rpk/gltf/pose_node.h"
#include "tools/rpk/utf8_text.h"

namespace rpk {
namespace {

// Readers check a matrix with tolerances of their own, made for parts in an assembly: one that scales much is written
// as what it was taken apart into.
bool hasUsualScale(const Pose& pose) {
  return std::all_of(pose.scale.begin(), pose.scale.end(),
                     [](double factor) { return std::abs(factor) > 0.01 && std::abs(factor) < 100; });
}

// The rounding of matrices with six digits is no change of size.
bool scaleChanges(const Motion& motion, const Vector& rest) {
  constexpr double kTolerance = 1e-4;
  return std::any_of(motion.poses.begin(), motion.poses.end(), [&](const Pose& pose) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      if (std::abs(pose.scale[axis] - rest[axis]) > kTolerance * std::abs(rest[axis])) return true;
    }
    return false;
  });
}

template <typename Part>
std::vector<float> collect(const Motion& motion, Part part) {
  std::vector<float> values;
  for (const Pose& pose : motion.poses) {
    for (const double value : part(pose)) values.push_back(static_cast<float>(value));
  }
  return values;
}

}  // namespace

std::vector<int> GroupNodes::add(const std::vector<std::unique_ptr<Group>>& groups, const Matrix& around) {
  std::vector<int> nodes;
  for (const auto& group : groups) {
    if (!group->materialGroup()) nodes.push_back(addGroup(*group, around));
  }
  return nodes;
}

int GroupNodes::addGroup(const Group& group, const Matrix& around) {
  const Matrix placement = placementOf(group);
  const Matrix inScene = multiply(placement, around);
  const Chain chain = addChain(group, placement);
  const int mesh = meshes_.meshOf(group);
  if (mesh >= 0) bounds_.add(meshes_.boundsOf(mesh), inScene);
  const std::vector<int> children = add(group.children, inScene);
  tinygltf::Node& content = model_.nodes[static_cast<std::size_t>(chain.content)];
  content.mesh = mesh;
  content.children = children;
  return chain.outer;
}

Matrix GroupNodes::placementOf(const Group& group) {
  if (!group.placement) return kIdentity;
  const auto placement = cleanPlacement(*group.placement);
  if (!placement) {
    warnings_.push_back(fmt::format("group {}: its transform is out of range and left out", toUtf8(group.name)));
  }
  return placement.value_or(kIdentity);
}

GroupNodes::Chain GroupNodes::addChain(const Group& group, const Matrix& placement) {
  std::optional<Motion> motion;
  if (!group.animations.empty()) {
    motion = toMotion(group.animations.front(), placement);
    if (!motion || group.animations.size() > 1) {
      warnings_.push_back(fmt::format("group {}: {} left out", toUtf8(group.name),
                                      motion ? "every animation but the first is" : "its animation has no use and is"));
    }
  }
  const SplitPlacement split = splitPlacement(placement);
  Chain chain;
  chain.outer = chain.content = addNode(group);
  tinygltf::Node& outer = model_.nodes.back();
  const bool asMatrix = !motion && !split.first && hasUsualScale(split.second);
  if (!asMatrix) {
    setPose(outer, split.second);
  } else if (placement != kIdentity) {
    outer.matrix.assign(placement.begin(), placement.end());
  }
  if (split.first) {
    chain.content = addInside(chain.content, group);
    setPose(model_.nodes.back(), *split.first);
  }
  if (!motion) return chain;
  if (!motion->withPlacement) chain.content = addInside(chain.content, group);
  animate(chain.content, *motion);
  return chain;
}

int GroupNodes::addNode(const Group& group) {
  tinygltf::Node node;
  node.name = toUtf8(group.name);
  model_.nodes.push_back(std::move(node));
  return static_cast<int>(model_.nodes.size() - 1);
}

int GroupNodes::addInside(int node, const Group& group) {
  const int inner = addNode(group);
  model_.nodes[static_cast<std::size_t>(node)].children.push_back(inner);
  return inner;
}

void GroupNodes::animate(int node, const Motion& motion) {
  if (model_.animations.empty()) {
    model_.animations.emplace_back();
    model_.animations.back().name = "motion";
  }
  const int times = timesOf(motion.times);
  addChannel(node, "translation", times, collect(motion, [](const Pose& pose) { return pose.translation; }), 3);
  addChannel(node, "rotation", times, collect(motion, [](const Pose& pose) { return pose.rotation; }), 4);
  const std::vector<double>& written = model_.nodes[static_cast<std::size_t>(node)].scale;
  Vector rest = {1, 1, 1};
  std::copy(written.begin(), written.end(), rest.begin());
  if (!scaleChanges(motion, rest)) return;
  addChannel(node, "scale", times, collect(motion, [](const Pose& pose) { return pose.scale; }), 3);
}

void GroupNodes::addChannel(int node, const char* path, int times, const std::vector<float>& values,
                            std::size_t components) {
  tinygltf::Animation& animation = model_.animations.front();
  tinygltf::AnimationSampler sampler;
  sampler.input = times;
  sampler.output = data_.addFloats(values, components, false, 0);
  sampler.interpolation = "LINEAR";
  tinygltf::AnimationChannel channel;
  channel.sampler = static_cast<int>(animation.samplers.size());
  channel.target_node = node;
  channel.target_path = path;
  animation.samplers.push_back(std::move(sampler));
  animation.channels.push_back(std::move(channel));
}

// Groups mostly move at the same moments.
int GroupNodes::timesOf(const std::vector<float>& times) {
  const auto known = times_.find(times);
  if (known != times_.end()) return known->second;
  return times_[times] = data_.addFloats(times, 1, true, 0);
}

}  // namespace rpk
