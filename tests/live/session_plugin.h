// The plug-in, loaded by its real entry; several copies of it can be in one session, each with commands of its own.
#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <filesystem>
#include <string>
#include <utility>

#include "standin/app/plugin_host.h"
#include "standin/cad/session.h"

namespace rendara::testing {

class SessionPlugin {
 public:
  // `copy` is the name of a copy of the library; each copy has a state of its own.
  SessionPlugin(standin::Session& session, const std::filesystem::path& copy)
      : session_(session), host_(copyLibrary(copy)) {
    within([&] { host_.load(); });
  }
  ~SessionPlugin() {
    within([&] { host_.unload(session_); });
  }
  SessionPlugin(const SessionPlugin&) = delete;
  SessionPlugin& operator=(const SessionPlugin&) = delete;

  void run(const std::string& command) {
    within([&] { EXPECT_EQ(session_.runCommand(command), 0); });
  }

 private:
  static std::filesystem::path copyLibrary(const std::filesystem::path& copy) {
    std::filesystem::copy_file(RENDARA_LIB_DIR "/librendara_creo.so", copy);
    return std::filesystem::absolute(copy);
  }

  // The commands of the session are those of this copy meanwhile.
  template <typename Action>
  void within(Action action) {
    std::swap(session_.commands(), commands_);
    action();
    std::swap(session_.commands(), commands_);
  }

  standin::Session& session_;
  std::deque<standin::Command> commands_;
  standin::PluginHost host_;
};

}  // namespace rendara::testing
