// A machine on which the renderer is installed, the plug-in in a session, and a small model.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "standin/app/captured_output.h"
#include "standin/windows/clock.h"
#include "standin/windows/handles.h"
#include "tests/live/link_model.h"
#include "tests/live/machine.h"
#include "tests/live/session_plugin.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/test_session.h"

namespace rendara::testing {

class LinkTest : public ::testing::Test {
 protected:
  using json = nlohmann::json;

  static constexpr const char* kRender = "Rendara Render";
  static constexpr const char* kUpdate = "Rendara Update";
  static constexpr std::size_t kShown = 4;  // groups that show a part

  LinkTest() {
    session_.messageFolder = RENDARA_SOURCE_DIR "/resources/text";
    standin::forgetWindowsMisuse();
    machine_.enter();
    plugin_.emplace(session_, "plugin.so");
  }
  ~LinkTest() override {
    plugin_.reset();
    session_.finish();
    EXPECT_EQ(session_.misuse(), std::vector<std::string>());
    unsetenv("RENDARA_MACHINE");
  }

  // Runs a command and gives what it printed. Nothing of the way to the renderer is left behind, however it ended.
  std::string run(const std::string& command) {
    sleeps_.clear();
    before_ = machine_.renderers();
    standin::CapturedOutput output;
    plugin_->run(command);
    std::string printed = output.end();
    EXPECT_EQ(standin::openHandles(), std::vector<std::string>());
    EXPECT_EQ(standin::windowsMisuse(), std::vector<std::string>());
    EXPECT_EQ(readFile("/proc/self/maps").find("vntrendaralive"), std::string::npos) << "the library is unloaded";
    return printed;
  }

  // The port of the renderer that came with the last command; 0 for none.
  int launched() const {
    for (const auto& [port, process] : machine_.renderers()) {
      if (!before_.contains(port)) {
        return port;
      }
    }
    return 0;
  }

  // The groups that show something: their geometry, material and placement.
  static std::map<std::string, json> shown(const json& status) {
    std::map<std::string, json> groups;
    for (const json& group : status.at("groups")) {
      if (!group.at("geometry").is_null()) {
        groups[group.at("path")] = {group.at("geometry"), group.at("material"), group.at("placement")};
      }
    }
    return groups;
  }

  // The renderer has taken so many scripts, and the last left it with the whole model.
  static void expectWhole(int port, int scripts) {
    const json status = Machine::status(port);
    EXPECT_EQ(status.at("scripts_taken"), scripts);
    EXPECT_EQ(status.at("scripts_refused"), 0);
    EXPECT_EQ(status.at("dangling_references"), 0);
    EXPECT_EQ(shown(status).size(), kShown) << status.dump(1);
  }

  // Nothing has changed: an Update sends groups that have no geometry, and the renderer keeps what it had.
  void expectUpdateOfGroups(int port) {
    const json held = Machine::status(port);
    const std::size_t tessellated = session_.counts.surfacesTessellated;
    EXPECT_EQ(run(kUpdate), "");
    const json status = Machine::status(port);
    EXPECT_EQ(status.at("scripts_taken"), held.at("scripts_taken").get<int>() + 1);
    EXPECT_EQ(session_.counts.surfacesTessellated, tessellated);
    EXPECT_LT(status.at("bytes_last"), 10000);
    EXPECT_EQ(shown(status), shown(held));
  }

  // The commands do what they are for: a Render starts a renderer and shows it everything, an Update finds it.
  void expectCommandsWork() {
    patience_ = kLaunchPatience;
    EXPECT_EQ(run(kRender), "");
    renderer_ = launched();
    ASSERT_NE(renderer_, 0);
    expectWhole(renderer_, 1);
    expectUpdateOfGroups(renderer_);
  }

  // A second: ends when a renderer has come, or when there is no more to wait for.
  static constexpr std::chrono::milliseconds kLaunchPatience{3000};
  void sleep(unsigned milliseconds) {
    sleeps_.push_back(milliseconds);
    const auto end = std::chrono::steady_clock::now() + patience_;
    while (std::chrono::steady_clock::now() < end && launched() == 0) {
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
  }

  WorkingFolder folder_;
  Machine machine_;
  standin::Session session_;
  standin::Model& bolt_ = standin::test::addBoxPart(session_, L"BOLT");
  standin::Model& case_ = addGridPart(session_, L"CASE");
  standin::Model& top_ = addTop(session_, bolt_, case_);
  std::optional<SessionPlugin> plugin_;
  std::vector<unsigned> sleeps_;  // milliseconds, in the last command
  std::chrono::milliseconds patience_{0};
  int renderer_ = 0;             // the port of the one that expectCommandsWork() started
  std::map<int, pid_t> before_;  // renderers, before the last command
  standin::SleepReplaced sleepReplaced_{[this](unsigned milliseconds) { sleep(milliseconds); }};
};

}  // namespace rendara::testing
