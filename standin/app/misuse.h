// What the plug-in did wrong, told at the end.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "standin/app/failure.h"
#include "standin/cad/session.h"

namespace standin {

// One line, and every single misuse after it.
class MisuseFailure : public Failure {
 public:
  MisuseFailure(const std::string& message, std::vector<std::string> lines)
      : Failure(ExitCode::kMisuse, message), lines_(std::move(lines)) {}
  const std::vector<std::string>& lines() const { return lines_; }

 private:
  std::vector<std::string> lines_;
};

// What the session and the operations of Windows have noted so far.
std::vector<std::string> notedMisuse(const Session& session);

// To be called when the plug-in has ended and the session is finished. Throws MisuseFailure when anything was noted or
// is still open; another failure, when there is one, becomes a line of it.
void throwMisuse(const Session& session, const std::filesystem::path& plugin, const std::string& otherFailure);

}  // namespace standin
