// A machine of its own for a test: an empty registry, and nothing open when it ends.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "standin/windows/handles.h"
#include "standin/windows/registry.h"
#include "tests/support/temporary_folder.h"

namespace standin {

// An environment variable has another value, or none, while this lives.
class VariableReplaced {
 public:
  VariableReplaced(std::string name, const std::optional<std::string>& value) : name_(std::move(name)) {
    if (const char* before = std::getenv(name_.c_str())) {
      before_ = before;
    }
    set(value);
  }
  ~VariableReplaced() { set(before_); }
  VariableReplaced(const VariableReplaced&) = delete;
  VariableReplaced& operator=(const VariableReplaced&) = delete;

 private:
  void set(const std::optional<std::string>& value) const {
    if (value) {
      setenv(name_.c_str(), value->c_str(), 1);
    } else {
      unsetenv(name_.c_str());
    }
  }

  std::string name_;
  std::optional<std::string> before_;
};

class OnMachine : public ::testing::Test {
 protected:
  OnMachine() { forgetWindowsMisuse(); }
  ~OnMachine() override {
    EXPECT_EQ(openHandles(), std::vector<std::string>{});
    forgetWindowsMisuse();
  }

  const std::filesystem::path& folder() const { return folder_.path(); }
  static void writeRegistry(const std::string& text) {
    rendara::testing::writeFile(registryFile(), "Windows Registry Editor Version 5.00\n" + text);
  }

 private:
  rendara::testing::TemporaryFolder folder_;
  VariableReplaced variable_{"RENDARA_MACHINE", folder_.path().string()};
};

}  // namespace standin
