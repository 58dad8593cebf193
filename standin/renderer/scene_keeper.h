// The renderer's scene with what is told about it. Used by one thread at a time.
#pragma once

#include <cstddef>
#include <string>

#include "standin/renderer/merged_scene.h"
#include "standin/renderer/scene_status.h"

namespace standin {

class SceneKeeper {
 public:
  explicit SceneKeeper(std::size_t maxScripts) : scene_(maxScripts) {}

  // As MergedScene::take, counted; memory that runs out is a reason, too.
  std::string take(ScriptBytes bytes);
  std::string status(std::size_t pictures, const std::string& pictureFailure);

  const MergedScene& scene() const { return scene_; }

 private:
  MergedScene scene_;
  ScriptCounts counts_;
};

}  // namespace standin
