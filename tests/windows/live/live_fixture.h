// The plug-in as Windows loads it, in a session with a small model, on a machine with an installed renderer. Every
// operation of Windows is the real one; so a wait of the plug-in takes its time.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "standin/app/captured_output.h"
#include "standin/app/plugin_host.h"
#include "standin/renderer/scene_keeper.h"
#include "tests/live/link_model.h"
#include "tests/support/temporary_folder.h"
#include "tests/windows/live/windows_machine.h"

namespace rendara::testing {

class WindowsLinkTest : public ::testing::Test {
 protected:
  using json = nlohmann::json;

  static constexpr const char* kRender = "Rendara Render";
  static constexpr const char* kUpdate = "Rendara Update";

  void SetUp() override {
    if (!isUnderWine()) {
      GTEST_SKIP() << "this machine's registry is not the tests'";
    }
    machine_.emplace();
    session_.messageFolder = RENDARA_SOURCE_DIR "/resources/text";
    openPlugin("automatic");
  }
  void TearDown() override {
    if (plugin_) {
      plugin_->unload(session_);
    }
    session_.finish();
    EXPECT_EQ(session_.misuse(), std::vector<std::string>());
  }

  void openPlugin(const std::string& selectionMode) {
    if (plugin_) {
      plugin_->unload(session_);
    }
    writeFile("rendara_plugin_settings.xml",
              "<?xml version=\"1.0\" ?><rendara_plugin_settings><selectionMode>" + selectionMode +
                  "</selectionMode><includeNURBS>false</includeNURBS></rendara_plugin_settings>");
    plugin_.emplace(WindowsMachine::builtPlugin());
    plugin_->load();
  }

  // Runs a command and gives what it printed. The library is unloaded afterwards, however it ended.
  std::string run(const std::string& command) {
    standin::CapturedOutput output;
    EXPECT_EQ(session_.runCommand(command), 0);
    std::string printed = output.end();
    EXPECT_EQ(GetModuleHandleW(L"vntrendaralive32.so"), nullptr);
    return printed;
  }

  // What the package of the session as it is now would show: cameras, and groups without what tells how they came. The
  // flags of the top are the live link's only.
  json exported() {
    const std::filesystem::path package = std::filesystem::absolute("session.rpk");
    session_.fileAnswers.emplace_back(package);
    EXPECT_EQ(session_.runCommand("Rendara Export"), 0);
    standin::SceneKeeper keeper(1);
    EXPECT_EQ(keeper.take(standin::ScriptBytes::ofText(readFile(package))), "");
    return sceneOf(json::parse(keeper.status(0, "")));
  }

  static json sceneOf(const json& status) {
    constexpr unsigned kDefinedHere = 0x400;
    json scene = {{"cameras", status.at("cameras")}, {"groups", status.at("groups")}};
    for (json& group : scene["groups"]) {
      const bool top = group["path"].get<std::string>().find('/') == std::string::npos;
      group["flags"] = top || group["flags"].is_null() ? 0U : group["flags"].get<unsigned>() & ~kDefinedHere;
    }
    return scene;
  }

  // The renderer has taken so many scripts, and holds what the package would show.
  void expectWhole(int port, int scripts) {
    const json status = WindowsMachine::status(port);
    EXPECT_EQ(status.at("scripts_taken"), scripts);
    EXPECT_EQ(status.at("scripts_refused"), 0);
    EXPECT_EQ(status.at("dangling_references"), 0);
    EXPECT_EQ(sceneOf(status), exported());
  }

  // The port of the only renderer on the list; 0 when there is another number of them.
  int onlyRenderer() const {
    const auto renderers = machine_->renderers();
    return renderers.size() == 1 ? renderers.begin()->first : 0;
  }

  WorkingFolder folder_;
  std::optional<WindowsMachine> machine_;
  standin::Session session_;
  standin::Model& bolt_ = standin::test::addBoxPart(session_, L"BOLT");
  standin::Model& case_ = addGridPart(session_, L"CASE");
  standin::Model& top_ = addTop(session_, bolt_, case_);
  std::optional<standin::PluginHost> plugin_;
};

}  // namespace rendara::testing
