#include "standin/app/misuse.h"

#include <fmt/format.h>

#include <algorithm>

#include "standin/windows/handles.h"

namespace standin {
namespace {

// One line for several of the same text.
void addOpenHandles(std::vector<std::string>& lines) {
  for (const std::string& handle : openHandles()) {
    std::string line = "never given back: " + handle;
    if (std::find(lines.begin(), lines.end(), line) == lines.end()) lines.push_back(std::move(line));
  }
}

}  // namespace

std::vector<std::string> notedMisuse(const Session& session) {
  std::vector<std::string> lines = session.misuse();
  const std::vector<std::string> ofWindows = windowsMisuse();
  lines.insert(lines.end(), ofWindows.begin(), ofWindows.end());
  return lines;
}

void throwMisuse(const Session& session, const std::filesystem::path& plugin, const std::string& otherFailure) {
  std::vector<std::string> lines = notedMisuse(session);
  addOpenHandles(lines);
  if (lines.empty()) return;
  const std::string often = lines.size() == 1 ? "once" : fmt::format("{} times", lines.size());
  if (!otherFailure.empty()) lines.push_back(otherFailure);
  throw MisuseFailure(fmt::format("{}: the plug-in misused the session {}", plugin.string(), often), std::move(lines));
}

}  // namespace standin
