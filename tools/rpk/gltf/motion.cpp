#include "tools/rpk/gltf/motion.h"

#include <algorithm>
#include <cmath>

namespace rpk {
namespace {

struct Samples {
  std::vector<float> times;
  std::vector<Matrix> matrices;
};

Samples samplesOf(const Animation& animation) {
  Samples samples;
  const std::size_t count = std::min(animation.matrices.size(), animation.timestamps.size());
  for (std::size_t i = 0; i < count; ++i) {
    const auto matrix = cleanPlacement(animation.matrices[i]);
    const float time = static_cast<float>(animation.timestamps[i] / 1000.0);
    if (!matrix || time < 0 || (!samples.times.empty() && time <= samples.times.back())) continue;
    samples.times.push_back(time);
    samples.matrices.push_back(*matrix);
  }
  return samples;
}

// A rotation and its negative are the same; a reader that goes from one to the next is to take the short way.
void alignRotations(std::vector<Pose>& poses) {
  for (std::size_t i = 1; i < poses.size(); ++i) {
    const Quaternion& before = poses[i - 1].rotation;
    Quaternion& rotation = poses[i].rotation;
    double cosine = 0;
    for (std::size_t part = 0; part < 4; ++part) cosine += before[part] * rotation[part];
    if (cosine >= 0) continue;
    for (double& part : rotation) part = -part;
  }
}

std::optional<std::vector<Pose>> posesOf(const std::vector<Matrix>& matrices, const Matrix& after) {
  std::vector<Pose> poses;
  poses.reserve(matrices.size());
  for (const Matrix& matrix : matrices) {
    const auto whole = cleanPlacement(multiply(matrix, after));
    const auto pose = whole ? toPose(*whole) : std::nullopt;
    if (!pose) return std::nullopt;
    poses.push_back(*pose);
  }
  alignRotations(poses);
  return poses;
}

// The short way is the straight one, since poses are aligned.
Quaternion turnBetween(const Quaternion& first, const Quaternion& second, double part) {
  double cosine = 0;
  for (std::size_t i = 0; i < 4; ++i) cosine += first[i] * second[i];
  const double angle = std::acos(std::clamp(cosine, -1.0, 1.0));
  const bool small = angle < 1e-4;  // an arc like its chord
  const double begin = small ? 1 - part : std::sin((1 - part) * angle) / std::sin(angle);
  const double end = small ? part : std::sin(part * angle) / std::sin(angle);
  Quaternion turn{};
  for (std::size_t i = 0; i < 4; ++i) turn[i] = begin * first[i] + end * second[i];
  return turn;
}

Pose between(const Pose& first, const Pose& second, double part) {
  Pose pose;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    pose.translation[axis] = std::lerp(first.translation[axis], second.translation[axis], part);
    pose.scale[axis] = std::lerp(first.scale[axis], second.scale[axis], part);
  }
  pose.rotation = turnBetween(first.rotation, second.rotation, part);
  return pose;
}

std::optional<Motion> motionOf(const Group& group) {
  const auto placement = cleanPlacement(group.placement.value_or(kIdentity));
  if (group.animations.empty() || !placement) return std::nullopt;
  return toMotion(group.animations.front(), *placement);
}

void findEnd(const Group& group, std::optional<double>& end) {
  if (const auto motion = motionOf(group)) end = std::max(end.value_or(0), double{motion->times.back()});
  for (const auto& child : group.children) findEnd(*child, end);
}

}  // namespace

std::optional<Motion> toMotion(const Animation& animation, const Matrix& placement) {
  Samples samples = samplesOf(animation);
  if (samples.times.empty()) return std::nullopt;
  Motion motion;
  auto poses = toPose(placement) ? posesOf(samples.matrices, placement) : std::nullopt;
  if (!poses) {
    motion.withPlacement = false;
    poses = posesOf(samples.matrices, kIdentity);
  }
  if (!poses) return std::nullopt;
  motion.times = std::move(samples.times);
  motion.poses = std::move(*poses);
  return motion;
}

Pose poseAt(const Motion& motion, double seconds) {
  const auto next = std::upper_bound(motion.times.begin(), motion.times.end(), seconds,
                                     [](double wanted, float time) { return wanted < static_cast<double>(time); });
  const auto place = static_cast<std::size_t>(next - motion.times.begin());
  if (place == 0) return motion.poses.front();
  if (place == motion.times.size()) return motion.poses.back();
  const double before = motion.times[place - 1];
  return between(motion.poses[place - 1], motion.poses[place], (seconds - before) / (motion.times[place] - before));
}

Matrix placementAt(const Group& group, double seconds) {
  const Matrix resting = group.placement.value_or(kIdentity);
  const auto motion = motionOf(group);
  if (!motion) return resting;
  const Matrix posed = toMatrix(poseAt(*motion, seconds));
  return motion->withPlacement ? posed : multiply(posed, resting);
}

std::optional<double> motionEnd(const Scene& scene) {
  std::optional<double> end;
  for (const auto& group : scene.groups) findEnd(*group, end);
  return end;
}

}  // namespace rpk
