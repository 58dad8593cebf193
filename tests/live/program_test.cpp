// creo-standin on a machine with a renderer and on one without.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "standin/windows/registry.h"
#include "tests/live/machine.h"
#include "tests/support/temporary_folder.h"

namespace rendara::testing {
namespace {

using nlohmann::json;

const std::string kProgram = RENDARA_BIN_DIR "/creo-standin";
const std::string kRenderer = RENDARA_BIN_DIR "/renderer-standin";
const std::string kSample = RENDARA_SOURCE_DIR "/samples/twin_compressor.step";
// The sample has representations, so each command asks for one.
const std::string kMaster = "representation master\n";

struct Outcome {
  int exitCode;
  std::string output, errors;
};

class ProgramTest : public ::testing::Test {
 protected:
  ProgramTest() { machine_.enter(); }
  ~ProgramTest() override { unsetenv("RENDARA_MACHINE"); }

  // Runs a program in the shell; a renderer that it leaves behind holds none of its streams.
  static Outcome run(const std::string& command) {
    const int status = std::system((command + " >output.txt 2>errors.txt").c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile("output.txt"), readFile("errors.txt")};
  }

  // Of the only renderer that runs, as its own program tells it.
  json status() const {
    const auto renderers = machine_.renderers();
    EXPECT_EQ(renderers.size(), 1U);
    const int port = renderers.empty() ? 0 : renderers.begin()->first;
    const Outcome told = run(kRenderer + " --status " + std::to_string(port));
    EXPECT_EQ(told.exitCode, 0) << told.errors;
    return json::parse(told.output, nullptr, false);
  }

  // A renderer would stay. What a sanitizer had its stacks read by ends a little after its program.
  void expectNothingRuns() const {
    waitFor("the end of what was started", [&] { return machine_.processes().empty(); });
  }

  static std::size_t groupsThatShow(const json& status) {
    const json& groups = status.at("groups");
    return static_cast<std::size_t>(
        std::count_if(groups.begin(), groups.end(), [](const json& group) { return !group.at("geometry").is_null(); }));
  }

  WorkingFolder folder_;
  Machine machine_;
};

TEST_F(ProgramTest, RenderStartsTheRendererThatIsInstalled) {
  std::filesystem::remove(machine_.path() / "registry.reg");
  const Outcome installed = run(kRenderer + " --install --idle 600");
  ASSERT_EQ(installed.exitCode, 0) << installed.errors;
  const Outcome rendered = run(kProgram + " render --quality 0 --no-nurbs " + kSample);
  EXPECT_EQ(rendered.exitCode, 0);
  EXPECT_EQ(rendered.errors, "");
  EXPECT_TRUE(rendered.output.starts_with("parts ")) << rendered.output;
  EXPECT_NE(rendered.output.find("\nleft out      0\n"), std::string::npos) << rendered.output;
  const json held = status();
  EXPECT_EQ(held.at("scripts_taken"), 1);
  // The same model as a package has as many occurrences.
  const Outcome exported = run(kProgram + " export --quality 0 --no-nurbs " + kSample + " out.rpk");
  ASSERT_EQ(exported.exitCode, 0) << exported.errors;
  const std::size_t at = exported.output.find("occurrences");
  ASSERT_NE(at, std::string::npos) << exported.output;
  EXPECT_EQ(held.at("groups").at(0).at("path"), "twin_compressor");
  EXPECT_EQ(groupsThatShow(held), std::stoul(exported.output.substr(at + 11)));
}

// A renderer at the installed port is found though it is on no list.
TEST_F(ProgramTest, InstalledPortIsTheOneThatPluginsKnow) {
  const Machine elsewhere;
  const int port = elsewhere.startRenderer();
  machine_.enter();
  ASSERT_EQ(run(kRenderer + " --install --port " + std::to_string(port)).exitCode, 0);
  writeFile("update.txt", "open " + kSample + "\nset nurbs off\nset quality 0\n" + kMaster + "update\n");
  const Outcome updated = run(kProgram + " run update.txt");
  EXPECT_EQ(updated.exitCode, 0) << updated.errors;
  EXPECT_EQ(Machine::status(port).at("scripts_taken"), 1);
  expectNothingRuns();  // none had to be started
  ASSERT_EQ(run(kRenderer + " --uninstall").exitCode, 0);
  EXPECT_FALSE(standin::Registry::load(machine_.path() / "registry.reg").hasKey(standin::Hive::kCurrentUser, kPortKey));
}

TEST_F(ProgramTest, RenderWithoutARendererFailsInOneLine) {
  std::filesystem::remove(machine_.path() / "registry.reg");
  const Outcome outcome = run(kProgram + " render --quality 0 " + kSample);
  EXPECT_EQ(outcome.exitCode, 4);
  EXPECT_EQ(outcome.output, "");
  EXPECT_TRUE(outcome.errors.starts_with("creo-standin: no renderer could be reached: ")) << outcome.errors;
  EXPECT_EQ(outcome.errors.find('\n'), outcome.errors.size() - 1) << outcome.errors;
  expectNothingRuns();
}

// The placements of the groups that show something.
std::map<std::string, json> placements(const json& status) {
  std::map<std::string, json> found;
  for (const json& group : status.at("groups")) {
    found[group.at("path")] = group.at("placement");
  }
  return found;
}

TEST_F(ProgramTest, ScriptRendersAndUpdates) {
  const std::string opening = "set nurbs off\nset quality 0\nopen " + kSample + "\n";
  // The first component of the tree.
  writeFile("tree.txt", "open " + kSample + "\ntree 1\n");
  const Outcome tree = run(kProgram + " run tree.txt");
  ASSERT_EQ(tree.exitCode, 0) << tree.errors;
  const std::size_t line = tree.output.find("\n  ");
  ASSERT_NE(line, std::string::npos) << tree.output;
  const std::string component = std::to_string(std::stoi(tree.output.substr(line)));

  writeFile("render.txt", opening + kMaster + "render\n");
  const Outcome rendered = run(kProgram + " run render.txt");
  EXPECT_EQ(rendered.exitCode, 0) << rendered.errors;
  const json before = status();
  EXPECT_EQ(before.at("scripts_taken"), 1);
  machine_.killRenderer(machine_.renderers().begin()->first);

  writeFile("update.txt", opening + kMaster + "render\nmove " + component + " 12.5 0 0\n" + kMaster + "update\n" +
                              kMaster + "update\nstatus\n");
  const Outcome updated = run(kProgram + " run update.txt");
  EXPECT_EQ(updated.exitCode, 0);
  EXPECT_EQ(updated.errors, "");
  EXPECT_EQ(updated.output.find("says"), std::string::npos) << updated.output;
  EXPECT_NE(updated.output.find("\nmisuse: 0\n"), std::string::npos) << updated.output;
  const json after = status();
  EXPECT_EQ(after.at("scripts_taken"), 3);
  EXPECT_LT(after.at("bytes_last"), before.at("bytes_last").get<int>() / 10) << "the second had nothing to tell";
  EXPECT_EQ(groupsThatShow(after), groupsThatShow(before));
  std::map<std::string, json> was = placements(before);
  std::size_t moved = 0;
  for (const auto& [path, placement] : placements(after)) {
    if (placement != was[path]) {
      ++moved;
      EXPECT_NEAR(placement.at(12).get<double>() - was[path].at(12).get<double>(), 12.5, 1e-6) << path;
    }
  }
  EXPECT_GE(moved, 1U);
}

TEST_F(ProgramTest, ScriptTellsWhatThePluginSays) {
  std::filesystem::remove(machine_.path() / "registry.reg");
  writeFile("steps.txt", "open " + kSample + "\n" + kMaster + "render\n" + kMaster + "update\nstatus\n");
  const Outcome outcome = run(kProgram + " run steps.txt");
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_EQ(outcome.errors, "");
  EXPECT_NE(outcome.output.find("\nthe plug-in says \"Failed\"\nmodel: "), std::string::npos) << outcome.output;
  expectNothingRuns();
}

}  // namespace
}  // namespace rendara::testing
