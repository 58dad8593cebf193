#include "standin/renderer/scene_keeper.h"

#include <exception>
#include <utility>

namespace standin {

std::string SceneKeeper::take(ScriptBytes bytes) {
  const std::size_t size = bytes.bytes.size();
  std::string refusal;
  try {
    refusal = bytes.owner ? scene_.take(std::move(bytes)) : "the script cannot be read back";
  } catch (const std::exception& error) {
    refusal = error.what();
  }
  if (refusal.empty()) {
    ++counts_.taken;
    counts_.lastBytes = size;
    counts_.allBytes += size;
  } else {
    ++counts_.refused;
    counts_.lastRefusal = refusal;
  }
  return refusal;
}

std::string SceneKeeper::status(std::size_t pictures, const std::string& pictureFailure) {
  counts_.pictures = pictures;
  counts_.pictureFailure = pictureFailure;
  return statusJson(scene_, counts_);
}

}  // namespace standin
