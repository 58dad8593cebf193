#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>

#include "standin/renderer/client.h"
#include "standin/renderer/instance_list.h"
#include "standin/windows/registry.h"
#include "tests/renderer/live_client.h"
#include "tests/renderer/renderer_process.h"
#include "tests/support/temporary_folder.h"
#include "tools/rpk/image_file.h"

namespace renderer_test {
namespace {

namespace fs = std::filesystem;
using standin::Hive;
using standin::Registry;

int run(std::vector<std::string> arguments, std::string* output = nullptr) {
  Process process(std::move(arguments));
  const std::string text = process.readAll();
  if (output) *output = text;
  return process.wait();
}

std::string textOf(const Registry& registry, Hive hive, const char* key, const char* name) {
  const auto* value = registry.find(hive, key, name);
  return value ? value->text().value_or("no text") : "none";
}

TEST(RendererProgram, InstallsItselfAndGoesAgain) {
  const Machine machine;
  const char* const product = "SOFTWARE\\Vantor\\Rendara 5";
  std::string output;
  ASSERT_EQ(run({"--install", "--picture-dir", "pictures", "--idle", "7.5", "--port", "50123"}, &output), 0) << output;
  Registry registry = Registry::load(standin::registryFile());
  EXPECT_EQ(textOf(registry, Hive::kLocalMachine, "SOFTWARE\\Vantor", "RendaraVersion"), "Rendara 5");
  EXPECT_EQ(textOf(registry, Hive::kLocalMachine, product, "CurrentVersion"), "5");
  EXPECT_TRUE(fs::equivalent(textOf(registry, Hive::kLocalMachine, product, "BinName"), kProgram));
  const std::string folder = textOf(registry, Hive::kLocalMachine, product, "BinFolder");
  EXPECT_TRUE(fs::exists(folder + "/vntrendaralive64.so"));
  EXPECT_EQ(textOf(registry, Hive::kCurrentUser, "SOFTWARE\\Vantor", "RendaraActivePath"), folder);
  ASSERT_NE(registry.find(Hive::kCurrentUser, product, "LiveLinkPort"), nullptr);
  EXPECT_EQ(registry.find(Hive::kCurrentUser, product, "LiveLinkPort")->number(), 50123U);
  EXPECT_NE(registry.find(Hive::kCurrentUser, product, "LiveLinkMaxPort"), nullptr);
  const std::string standIn = std::string(product) + "\\StandIn";
  EXPECT_EQ(textOf(registry, Hive::kLocalMachine, standIn.c_str(), "idle"), "7.5");
  EXPECT_TRUE(fs::path(textOf(registry, Hive::kLocalMachine, standIn.c_str(), "picture-dir")).is_absolute());

  ASSERT_EQ(run({"--install"}), 0);
  registry = Registry::load(standin::registryFile());
  EXPECT_EQ(textOf(registry, Hive::kLocalMachine, standIn.c_str(), "idle"), "none") << "what was not given again";
  ASSERT_EQ(run({"--uninstall"}), 0);
  registry = Registry::load(standin::registryFile());
  EXPECT_FALSE(registry.hasKey(Hive::kLocalMachine, product));
  EXPECT_FALSE(registry.hasKey(Hive::kCurrentUser, product));
  EXPECT_EQ(textOf(registry, Hive::kLocalMachine, "SOFTWARE\\Vantor", "RendaraVersion"), "none");
}

// The port of the only renderer that runs; 0 when none shows up.
int listedPort(const fs::path& machine) {
  const std::string mark = "<livelink_port>";
  for (int attempt = 0; attempt < 600; ++attempt) {
    const std::string text = standin::InstanceList(machine).text();
    const std::size_t found = text.find(mark);
    if (found != std::string::npos) return std::stoi(text.substr(found + mark.size()));
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return 0;
}

// As the plug-in starts it.
TEST(RendererProgram, WithoutArgumentsTakesWhatWasInstalledAndIsSilent) {
  const Machine machine;
  const fs::path pictures = machine.folder() / "pictures";
  ASSERT_EQ(run({"--install", "--picture-dir", pictures.string(), "--max-script", "10", "--idle", "600"}), 0);
  Process renderer({});
  const int port = listedPort(machine.folder());
  ASSERT_NE(port, 0);
  EXPECT_TRUE(fs::is_directory(pictures));
  const LoadedLibrary library;
  rendara::vntScene_api* const scene = library->createScene();
  ASSERT_TRUE(connect(*scene, port));
  writeScene(*scene, "top");
  EXPECT_FALSE(scene->endScene()) << "longer than was installed";
  EXPECT_EQ(run({"--quit", std::to_string(port)}), 0);
  EXPECT_EQ(renderer.wait(), 0);
  EXPECT_EQ(renderer.readAll(), "");
}

TEST(RendererProgram, DrawsTheSceneAfterEachScript) {
  const Machine machine;
  const fs::path folder = machine.folder() / "pictures";
  fs::create_directories(folder);
  rendara::testing::writeFile(folder / "scene-0001.png", "another renderer's");
  Renderer renderer({"--picture-dir", folder.string()});
  const LoadedLibrary library;
  rendara::vntScene_api* const scene = library->createScene();
  ASSERT_TRUE(connect(*scene, renderer.port()));
  writeScene(*scene, "top");
  ASSERT_TRUE(scene->endScene());
  standin::askToQuit(renderer.port());
  EXPECT_EQ(renderer.process().wait(), 0);
  EXPECT_EQ(rendara::testing::readFile(folder / "scene-0001.png"), "another renderer's");
  for (const char* name : {"scene-0002.png", "latest.png"}) {
    const auto image = rpk::decodeImage(rendara::testing::readFile(folder / name));
    ASSERT_TRUE(image) << name;
    const auto* const corner = image->at(0, 0);
    const auto* const middle = image->at(image->width / 2, image->height / 2);
    EXPECT_FALSE(std::equal(corner, corner + 3, middle)) << name << " shows something in the middle";
  }
  EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 3) << "and nothing else";
}

TEST(RendererProgram, EndsWhenItIsIdleOrToldTo) {
  const Machine machine;
  {
    Renderer idle({"--idle", "0.5"});
    const LoadedLibrary library;
    rendara::vntScene_api* const scene = library->createScene();
    ASSERT_TRUE(connect(*scene, idle.port()));
    std::this_thread::sleep_for(std::chrono::seconds(1));
    writeScene(*scene, "top");
    EXPECT_TRUE(scene->endScene()) << "an open link is no idleness";
    EXPECT_EQ(idle.process().wait(), 0);
  }
  std::string ports;
  for (const int signal : {SIGTERM, SIGINT}) {
    Renderer told;
    EXPECT_EQ(run({"--list"}, &ports), 0);
    EXPECT_EQ(ports, std::to_string(told.port()) + "\n");
    told.process().signal(signal);
    EXPECT_EQ(told.process().wait(), 0);
  }
  EXPECT_EQ(standin::InstanceList(machine.folder()).text(), "<rendara_instances>\n</rendara_instances>\n");
}

TEST(RendererProgram, SaysInOneLineWhatIsWrong) {
  const Machine machine;
  const Renderer renderer;
  const std::string taken = std::to_string(renderer.port());
  const std::vector<std::pair<std::vector<std::string>, int>> cases = {{{"--stauts", "5"}, 2},
                                                                       {{"--status", "70000"}, 2},
                                                                       {{"--install", "--quit", "5"}, 2},
                                                                       {{"--port", taken}, 4},
                                                                       {{"--picture-dir", "/dev/null/x"}, 4},
                                                                       {{"--status", "1"}, 4},
                                                                       {{"--idle", "soon"}, 2},
                                                                       {{"--quit", "1"}, 4}};
  for (const auto& [arguments, code] : cases) {
    std::string output;
    EXPECT_EQ(run(arguments, &output), code) << output;
    EXPECT_TRUE(output.starts_with("renderer-standin: ")) << output;
    EXPECT_EQ(output.find('\n'), output.size() - 1) << output;
  }
}

}  // namespace
}  // namespace renderer_test
