// A command of rpk, run in this process.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tools/rpk/app/program.h"

namespace rpk_test {

struct CommandRun {
  rpk::ExitCode code;
  std::string output;
  std::string errors;
};

inline CommandRun runCommand(const char* name, std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), {"rpk", name});
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const rpk::ExitCode code = rpk::runProgram(static_cast<int>(arguments.size()), arguments.data());
  return {code, testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

}  // namespace rpk_test
