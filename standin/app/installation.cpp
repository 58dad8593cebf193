#include "standin/app/installation.h"

#include <vector>

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

path programFolder() { return std::filesystem::read_symlink("/proc/self/exe").parent_path(); }

path findPlugin(const path& programFolder) {
  const path parent = programFolder / "..";
  return firstExisting({parent / "lib/librendara_creo.so", parent / RENDARA_INSTALLED_PLUGIN}, {});
}

path findMessages(const path& programFolder) {
  return firstExisting({programFolder / "../share/rendara/text", programFolder / "../../../resources/text",
                        path(RENDARA_SOURCE_MESSAGES)},
                       kMessageFile);
}

}  // namespace standin
