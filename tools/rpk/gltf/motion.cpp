#include "tools/rpk/gltf/motion.h"

#include <algorithm>

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

}  // namespace rpk
