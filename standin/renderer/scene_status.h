// What a renderer holds, as JSON: two renderers that hold the same print the same groups, however it came.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "standin/renderer/merged_scene.h"

namespace standin {

struct ScriptCounts {
  std::size_t taken = 0;
  std::size_t refused = 0;
  std::string lastRefusal;      // why
  std::uint64_t lastBytes = 0;  // of the last script taken
  std::uint64_t allBytes = 0;   // of all scripts taken
  std::size_t pictures = 0;
  std::string pictureFailure;  // the last
};

std::string statusJson(const MergedScene& scene, const ScriptCounts& counts);

}  // namespace standin
