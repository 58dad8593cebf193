#include "standin/app/misuse.h"

#include <fmt/format.h>

namespace standin {

void throwMisuse(const Session& session, const std::filesystem::path& plugin, const std::string& otherFailure) {
  std::vector<std::string> lines = session.misuse();
  if (lines.empty()) return;
  const std::string often = lines.size() == 1 ? "once" : fmt::format("{} times", lines.size());
  if (!otherFailure.empty()) lines.push_back(otherFailure);
  throw MisuseFailure(fmt::format("{}: the plug-in misused the session {}", plugin.string(), often), std::move(lines));
}

}  // namespace standin
