// The plug-in in a session of small models, with a recording scene in the renderer's place.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "core/command_table.h"
#include "core/plugin.h"
#include "tests/support/recording_scene.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/test_session.h"

namespace rendara::testing {

// A scene that runs out of memory at its n-th geometry.
class FailingScene : public RecordingScene {
 public:
  bool beginGeometry(const char* type) override {
    if (--geometriesLeft == 0) {
      throw std::bad_alloc();
    }
    return RecordingScene::beginGeometry(type);
  }
  int geometriesLeft = 0;
};

// A link to a renderer that takes every scene, as long as it is told to.
class RecordingLink : public RendererLink {
 public:
  LiveScene connect(LinkMode mode, int& lastPort) override {
    modes.push_back(mode);
    scene.clear();
    if (!reachable) {
      return {};
    }
    lastPort = port;
    return {&scene, newInstance};
  }
  void release() noexcept override { ++releases; }

  FailingScene scene;
  std::vector<LinkMode> modes;
  bool reachable = true;
  bool newInstance = false;
  int port = 20000;
  int releases = 0;
};

class PluginTest : public ::testing::Test {
 protected:
  PluginTest() {
    session.messageFolder = RENDARA_SOURCE_DIR "/resources/text";
    registerCommands(RendaraPlugin::instance());
    auto made = std::make_unique<RecordingLink>();
    link = made.get();
    plugin().rendererLink = std::move(made);
    plugin().settings.includeNURBS = false;
  }
  ~PluginTest() override {
    RendaraPlugin::destroyInstance();
    session.finish();
    EXPECT_TRUE(session.misuse().empty()) << session.misuse().front();
  }

  static RendaraPlugin& plugin() { return *RendaraPlugin::instance(); }
  const RecordingScene& run(const std::string& command) {
    EXPECT_EQ(session.runCommand(command), 0);
    return link->scene;
  }
  const RecordingScene& render() { return run("Rendara Render"); }
  const RecordingScene& update() { return run("Rendara Update"); }

  // The tree of groups of the last scene: "name" with "*" when it holds a mesh, "@" when it holds a reference, and
  // its children in brackets.
  std::string tree() const {
    std::string result;
    for (const std::string& call : link->scene.calls()) {
      if (call.starts_with("beginGroup \"")) {
        result += call.substr(12, call.find('"', 12) - 12) + "(";
      } else if (call == "beginGeometry \"triangles\"") {
        result += "*";
      } else if (call == "beginGeometry \"instance\"") {
        result += "@";
      } else if (call == "endGroup") {
        result += ")";
      }
    }
    return result;
  }

  WorkingFolder folder;
  standin::Session session;
  RecordingLink* link = nullptr;
};

}  // namespace rendara::testing
