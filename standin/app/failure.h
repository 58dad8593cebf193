// How the program ends, and how a step that failed says so.
#pragma once

#include <stdexcept>
#include <string>

namespace standin {

enum class ExitCode {
  kDone = 0,
  kUsage = 2,   // an option, a command or its arguments
  kModel = 3,   // the model cannot be opened
  kOutput = 4,  // the command ended without the output that was asked for, or could not be run
  kMisuse = 5   // the plug-in misused the session
};

// The message is one line that names the file it is about. Never thrown through a callback of the plug-in.
class Failure : public std::runtime_error {
 public:
  Failure(ExitCode code, const std::string& message) : std::runtime_error(message), code_(code) {}
  ExitCode code() const { return code_; }

 private:
  ExitCode code_;
};

[[noreturn]] inline void failUsage(const std::string& message) { throw Failure(ExitCode::kUsage, message); }

}  // namespace standin
