#include <dlfcn.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <chrono>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <future>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <thread>

#include "scene/vntScene_api_file.h"
#include "standin/renderer/scene_keeper.h"
#include "tests/renderer/live_client.h"
#include "tests/renderer/renderer_process.h"
#include "tests/support/temporary_folder.h"

namespace renderer_test {
namespace {

// The same scene as a file.
std::string sceneText(const char* top, int triangles) {
  const rendara::testing::TemporaryFolder folder;
  const auto path = folder.path() / "scene.rpk";
  {
    rendara::vntScene_api_file writer(std::fopen(path.c_str(), "wb"), true);
    writeScene(writer, top, triangles);
  }
  return rendara::testing::readFile(path);
}

nlohmann::json heldAlone(const std::string& text) {
  standin::SceneKeeper keeper(1);
  EXPECT_EQ(keeper.take(standin::ScriptBytes::ofText(text)), "");
  return nlohmann::json::parse(keeper.status(0, ""));
}

class LiveLibrary : public testing::Test {
 protected:
  rendara::vntScene_api& scene() { return *library_->createScene(); }

  Machine machine_;
  LoadedLibrary library_;
};

// What the renderer holds is what a file of the same calls holds, whatever the locale and however long it is.
TEST_F(LiveLibrary, HandsOverTheScriptWhole) {
  Renderer renderer;
  const std::string before = std::setlocale(LC_NUMERIC, nullptr);
  std::setlocale(LC_NUMERIC, "de_DE.UTF-8");  // where there is none the rest holds all the same
  for (const int triangles : {2, 300000}) {
    rendara::vntScene_api& live = scene();
    live.id(1);
    ASSERT_TRUE(connect(live, renderer.port()));
    writeScene(live, "top", triangles);
    ASSERT_TRUE(live.endScene());
    const std::string expected = sceneText("top", triangles);
    const nlohmann::json status = renderer.status();
    EXPECT_EQ(status["bytes_last"], expected.size());
    const nlohmann::json alone = heldAlone(expected);
    for (const char* part : {"headers", "modules", "options", "groups"}) EXPECT_EQ(status[part], alone[part]) << part;
  }
  std::setlocale(LC_NUMERIC, before.c_str());
}

TEST_F(LiveLibrary, GivesTheNumericLocaleBack) {
  if (std::setlocale(LC_NUMERIC, "de_DE.UTF-8") == nullptr) GTEST_SKIP() << "no such locale";
  scene();
  scene();
  EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
  library_->shutdown();
  EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "de_DE.UTF-8");
  std::setlocale(LC_NUMERIC, "C");
}

TEST_F(LiveLibrary, SeveralScenesAtATime) {
  Renderer renderer;
  rendara::vntScene_api& first = scene();
  rendara::vntScene_api& second = scene();
  ASSERT_TRUE(connect(first, renderer.port()));
  ASSERT_TRUE(connect(second, renderer.port()));
  writeScene(first, "one", 50000);
  writeScene(second, "two");
  EXPECT_TRUE(second.endScene());
  EXPECT_TRUE(first.endScene());
  const nlohmann::json groups = renderer.status()["groups"];
  ASSERT_EQ(groups.size(), 4U);
  EXPECT_EQ(groups[0]["path"], "two");
  EXPECT_EQ(groups[2]["path"], "one");
}

TEST_F(LiveLibrary, NothingIsWrittenBeforeConnectingAndAfterTheEnd) {
  Renderer renderer;
  rendara::vntScene_api& live = scene();
  writeScene(live, "early");
  EXPECT_FALSE(live.endScene());
  EXPECT_FALSE(live.beginGroup("early", true));
  EXPECT_EQ(live.currentCapture(), nullptr);
  ASSERT_TRUE(connect(live, renderer.port()));
  EXPECT_FALSE(connect(live, renderer.port())) << "is connected";
  writeScene(live, "top");
  ASSERT_TRUE(live.endScene());
  writeScene(live, "late");
  EXPECT_FALSE(live.endScene());
  EXPECT_FALSE(live.reserved5(1, 2, 3));
  EXPECT_EQ(live.identity17(7), 7U);
  EXPECT_EQ(live.arrayVersion75(), 10);
  EXPECT_EQ(renderer.status()["bytes_all"], sceneText("top", 2).size());
}

TEST_F(LiveLibrary, ASceneWithoutAnEndIsDropped) {
  Renderer renderer;
  rendara::vntScene_api& good = scene();
  ASSERT_TRUE(connect(good, renderer.port()));
  writeScene(good, "good");
  ASSERT_TRUE(good.endScene());
  const nlohmann::json before = renderer.status();
  for (const bool destroyed : {true, false}) {
    rendara::vntScene_api& half = scene();
    ASSERT_TRUE(connect(half, renderer.port()));
    writeScene(half, "good", 100000);
    if (destroyed) {
      EXPECT_EQ(half.destroy(1), &half);
      EXPECT_FALSE(half.endScene());
    } else {
      library_->shutdown();
    }
    EXPECT_EQ(renderer.status(), before);
  }
}

TEST_F(LiveLibrary, TheRendererGoesAwayInTheMiddle) {
  std::optional<Renderer> renderer(std::in_place);
  rendara::vntScene_api& live = scene();
  ASSERT_TRUE(connect(live, renderer->port()));
  writeScene(live, "top", 100000);
  renderer->process().signal(SIGKILL);
  renderer->process().wait();
  for (int i = 0; i < 20; ++i) writePart(live, "part", 100000);
  EXPECT_FALSE(live.beginGroup("dead", true));
  EXPECT_FALSE(live.endScene());
  Renderer other;
  EXPECT_FALSE(connect(live, other.port())) << "a part of its script is lost";
  EXPECT_TRUE(connect(scene(), other.port()));
}

TEST_F(LiveLibrary, ARefusedScriptIsToldAndTheNextOneIsTaken) {
  Renderer renderer;
  rendara::vntScene_api& bad = scene();
  ASSERT_TRUE(connect(bad, renderer.port()));
  bad.beginGroup("no header", true);
  bad.endGroup();
  EXPECT_FALSE(bad.endScene());
  rendara::vntScene_api& good = scene();
  ASSERT_TRUE(connect(good, renderer.port()));
  writeScene(good, "good");
  EXPECT_TRUE(good.endScene());
  const nlohmann::json status = renderer.status();
  EXPECT_EQ(status["scripts_refused"], 1);
  EXPECT_EQ(status["scripts_taken"], 1);
}

TEST_F(LiveLibrary, ConnectsToARendererOfThisMachineOnly) {
  std::optional<Renderer> renderer(std::in_place);
  const int port = renderer->port();
  rendara::vntScene_api& live = scene();
  for (const char* host : {"localhost", "127.0.0.2", "", static_cast<const char*>(nullptr)}) {
    EXPECT_FALSE(live.connect(host, port, 1));
  }
  for (const int strange : {-1, 0, 65536, port + 65536}) EXPECT_FALSE(connect(live, strange));
  standin::askToQuit(port);
  EXPECT_EQ(renderer->process().wait(), 0);
  renderer.reset();
  EXPECT_FALSE(connect(live, port)) << "nobody is there, and one attempt is all";
  auto connected = std::async(std::launch::async, [&] { return connect(live, port, 5); });
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  renderer.emplace(std::vector<std::string>{"--port", std::to_string(port)});
  EXPECT_TRUE(connected.get()) << "it was still starting";
}

TEST_F(LiveLibrary, ListsTheRenderers) {
  rendara::LiveLinkInstances* const instances = library_->instances();
  ASSERT_NE(instances, nullptr);
  EXPECT_FALSE(instances->isOpen());
  EXPECT_STREQ(instances->listText(), "<rendara_instances>\n</rendara_instances>\n");
  EXPECT_TRUE(instances->isOpen());
  const Renderer renderer;
  EXPECT_NE(std::string(instances->listText()).find(std::to_string(renderer.port())), std::string::npos);
  instances->close();
  EXPECT_FALSE(instances->isOpen());
}

std::ptrdiff_t openFiles() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), std::filesystem::directory_iterator());
}

TEST(LiveLibraryReloaded, LeavesNothingBehind) {
  const Machine machine;
  const Renderer renderer;
  const auto round = [&](int number) {
    const LoadedLibrary library;
    rendara::vntScene_api* const scene = library->createScene();
    ASSERT_NE(library->instances()->listText(), nullptr);
    if (number % 10 != 0) return;
    ASSERT_TRUE(connect(*scene, renderer.port()));
    writeScene(*scene, "top");
    if (number % 20 != 0) return;
    EXPECT_TRUE(scene->endScene());
  };
  for (int i = 0; i < 20; ++i) round(i);
  const auto files = openFiles();
  const std::size_t memory = mallinfo2().uordblks;
  for (int i = 0; i < 1000; ++i) {
    round(i);
    ASSERT_EQ(dlopen(kLibrary, RTLD_NOW | RTLD_NOLOAD), nullptr) << "is still loaded";
  }
  EXPECT_EQ(openFiles(), files);
  EXPECT_LE(mallinfo2().uordblks, memory + 4096) << "bytes in use";
  EXPECT_EQ(renderer.status()["scripts_taken"], 1 + 50);
}

}  // namespace
}  // namespace renderer_test
