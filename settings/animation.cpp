#include "settings/animation.h"

#include <algorithm>

#include "scene/vntScene_api.h"

namespace rendara {
namespace {

void writeMatrices(vntScene_api& scene, const std::vector<FramePlacement>& frames, const Matrix& inverse) {
  scene.beginArray("matrices");
  for (const FramePlacement& frame : frames) {
    const Matrix relative = multiply(frame.matrix(), inverse);
    scene.arrayValue(kMatrix, relative.data());
  }
  scene.endArray();
}

void writeTimestamps(vntScene_api& scene, int count, float frameTime) {
  const float milliseconds = frameTime * 1000.0F;
  scene.beginArray("timestamps");
  for (int frame = 0; frame < count; ++frame) {
    const int time = static_cast<int>(static_cast<float>(frame) * milliseconds);
    scene.arrayValue(kInt, &time);
  }
  scene.endArray();
}

}  // namespace

Matrix FramePlacement::matrix() const {
  Matrix matrix = kIdentityMatrix;
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    matrix[i / 3 * 4 + i % 3] = static_cast<double>(numbers[i]);
  }
  return matrix;
}

void writeComponentAnimation(vntScene_api& scene, const AnimationFrames& frames, const ProAsmcomppath& animationPath,
                             const Matrix& placement, const char* name) {
  const int count = std::clamp(animationPath.table_num, 0, PRO_MAX_ASSEM_LEVEL);
  const auto entry = frames.animationFrames.find({animationPath.comp_id_tab, animationPath.comp_id_tab + count});
  if (entry == frames.animationFrames.end()) {
    return;
  }
  const float frameTime = 1.0F / static_cast<float>(frames.animationFrameRate);
  scene.beginAnimation("fbx_animation", name);
  const int start = 0;
  scene.parameter("start_time", kInt, &start);
  const float duration = static_cast<float>(frames.animationFrameCount) * frameTime;
  scene.parameter("duration", kFloat, &duration);
  scene.parameter("folder", kString, "Creo animation");
  Matrix inverse = kIdentityMatrix;
  invertSimilarity(placement, inverse);
  writeMatrices(scene, entry->second, inverse);
  writeTimestamps(scene, frames.animationFrameCount, frameTime);
  scene.endAnimation();
}

}  // namespace rendara
