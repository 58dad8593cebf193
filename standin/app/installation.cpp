#include "standin/app/installation.h"

#include <vector>

#include "standin/app/system.h"

namespace standin {
namespace {

using std::filesystem::path;

path firstExisting(const std::vector<path>& candidates, const path& below) {
  std::error_code error;
  for (const path& candidate : candidates) {
    const path probe = below.empty() ? candidate : candidate / below;
    if (std::filesystem::exists(probe, error)) return candidate.lexically_normal();
  }
  return candidates.front().lexically_normal();
}

}  // namespace

path programFolder() { return programFile().parent_path(); }

path findPlugin(const path& programFolder) {
  const path parent = programFolder / "..";
  return firstExisting({parent / RENDARA_BUILT_PLUGIN, parent / RENDARA_INSTALLED_PLUGIN}, {});
}

path findMessages(const path& programFolder) {
  return firstExisting({programFolder / "../share/rendara/text", programFolder / "../../../resources/text",
                        path(RENDARA_SOURCE_MESSAGES)},
                       kMessageFile);
}

}  // namespace standin
