// How the program ends.
#pragma once

#include <stdexcept>
#include <string>

namespace rpk {

enum class ExitCode {
  kDone = 0,        // and nothing wrong, nothing different
  kFound = 1,       // the package has faults, or the two differ
  kUnreadable = 2,  // not a package, or a file that cannot be read
  kUsage = 3,
  kOutput = 4,  // what was asked for could not be written
};

// Ends the program with one line on standard error.
class Failure : public std::runtime_error {
 public:
  Failure(ExitCode code, const std::string& message) : std::runtime_error(message), code_(code) {}
  ExitCode code() const { return code_; }

 private:
  ExitCode code_;
};

}  // namespace rpk
