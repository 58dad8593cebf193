// Update against Render, end to end: a model is changed by chance, Update sends what it sends to a renderer of its own
// process, and what the renderer then holds is compared with what a new one gets by Render.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "standin/cad/dialog.h"
#include "standin/renderer/instance_list.h"
#include "standin/step/step_loader.h"
#include "standin/windows/clock.h"
#include "standin/windows/handles.h"
#include "standin/windows/machine_folder.h"
#include "tests/live/expected_scene.h"
#include "tests/live/machine.h"
#include "tests/live/random_changes.h"
#include "tests/live/session_plugin.h"
#include "tests/support/temporary_folder.h"

namespace rendara::testing {
namespace {

using nlohmann::json;

struct UpdateCase {
  const char* name;
  std::string model;
  bool manual;
  unsigned seed;
  int rounds;
};
std::ostream& operator<<(std::ostream& stream, const UpdateCase& test) { return stream << test.name; }

// Of a group that came with geometry of its own, not by a reference.
constexpr unsigned kDefinedHere = 0x400;

// What decides what is seen, without what tells how it came.
json sceneOf(const json& status) {
  json scene;
  for (const char* option : {"import_up_vector", "meter_scale"}) {
    scene[option] = status.at("options").at(option);
  }
  scene["cameras"] = status.at("cameras");
  scene["groups"] = status.at("groups");
  for (json& group : scene["groups"]) {
    group["flags"] = group["flags"].is_null() ? 0U : group["flags"].get<unsigned>() & ~kDefinedHere;
  }
  return scene;
}

// What differs outside the groups, and the first groups that differ, for a message.
std::string differences(const json& heldScene, const json& wantedScene) {
  std::string text;
  for (const auto& [name, value] : heldScene.items()) {
    if (name != "groups" && value != wantedScene.at(name)) {
      text += name + ": held " + value.dump() + ", wanted " + wantedScene.at(name).dump() + "\n";
    }
  }
  const json& held = heldScene.at("groups");
  const json& wanted = wantedScene.at("groups");
  for (std::size_t i = 0; i < std::max(held.size(), wanted.size()) && text.size() < 2000; ++i) {
    const json mine = i < held.size() ? held[i] : json();
    const json other = i < wanted.size() ? wanted[i] : json();
    if (mine != other) {
      text += "held   " + mine.dump() + "\nwanted " + other.dump() + "\n";
    }
  }
  return text;
}

class UpdateTest : public ::testing::TestWithParam<UpdateCase> {
 protected:
  // RENDARA_SEED in the environment asks for other changes.
  static unsigned seed() {
    const char* shift = std::getenv("RENDARA_SEED");
    return GetParam().seed + (shift != nullptr ? static_cast<unsigned>(std::atoi(shift)) : 0U);
  }
  UpdateTest() : changes_(session_, seed()) {
    session_.messageFolder = RENDARA_SOURCE_DIR "/resources/text";
    session_.guardArrays = false;
  }
  ~UpdateTest() override {
    session_.finish();
    EXPECT_EQ(session_.misuse(), std::vector<std::string>());
    EXPECT_EQ(standin::openHandles(), std::vector<std::string>());
    EXPECT_EQ(standin::windowsMisuse(), std::vector<std::string>());
  }

  static void writeSettings(double quality, int upAxis, bool manual) {
    writeFile("rendara_plugin_settings.xml",
              "<?xml version=\"1.0\" ?><rendara_plugin_settings><tessellationQuality>" + std::to_string(quality) +
                  "</tessellationQuality><upAxis>" + std::to_string(upAxis) + "</upAxis><selectionMode>" +
                  (manual ? "manual" : "automatic") +
                  "</selectionMode><includeNURBS>false</includeNURBS></rendara_plugin_settings>");
  }

  // What the user does in the settings dialog when it is opened from now on.
  void set(double quality, int upAxis) {
    static constexpr const char* kAxes[] = {"x", "y", "z", "-x", "-y", "-z"};
    session_.onDialog = [quality, upAxis](standin::Dialog& dialog) {
      EXPECT_EQ(standin::userSet(dialog, "stepbox", std::to_string(quality)), "");
      EXPECT_EQ(standin::userSet(dialog, "Rendara_Axis_Radiogroup", kAxes[upAxis]), "");
      EXPECT_EQ(standin::userPress(dialog, "Rendara_OK"), "");
    };
  }

  // What a renderer gets that was started for it.
  json renderAnew(SessionPlugin& plugin) {
    other_.enter();
    plugin.run("Rendara Render");
    const auto renderers = other_.renderers();
    EXPECT_EQ(renderers.size(), 1U);
    json scene = sceneOf(Machine::status(renderers.begin()->first));
    other_.killRenderer(renderers.begin()->first);
    machine_.enter();
    return scene;
  }

  // The renderer that has taken another script than at the last call, and what it holds.
  std::pair<int, json> receiver() {
    for (const auto& [port, process] : machine_.renderers()) {
      json status = Machine::status(port);
      const int taken = status.at("scripts_taken");
      const auto before = taken_.find(port);
      if (taken > (before != taken_.end() ? before->second : 0)) {
        taken_[port] = taken;
        return {port, std::move(status)};
      }
    }
    return {0, json()};
  }

  WorkingFolder folder_;
  Machine machine_;
  Machine other_;
  standin::Session session_;
  RandomChanges changes_;
  std::map<int, int> taken_;
  // A second is over when the list of renderers has changed, or after a fifth of one.
  standin::SleepReplaced sleep_{[](unsigned) {
    const standin::InstanceList list(standin::machineFolder());
    const std::string before = list.text();
    for (int wait = 0; wait < 40 && list.text() == before; ++wait) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }};
};

TEST_P(UpdateTest, HoldsWhatARenderWouldSend) {
  const UpdateCase& test = GetParam();
  if (!std::filesystem::exists(test.model)) {
    GTEST_SKIP() << test.model << " is not there";
  }
  double quality = 0;
  int upAxis = 1;
  writeSettings(quality, upAxis, test.manual);
  machine_.enter();
  SessionPlugin plugin(session_, "plugin.so");
  SessionPlugin other(session_, "other.so");
  const standin::LoadResult loaded = standin::loadStep(session_, test.model);
  ASSERT_NE(loaded.model, nullptr) << loaded.error;

  ExpectedScene expected;
  plugin.run("Rendara Render");
  int lastPort = receiver().first;
  ASSERT_NE(lastPort, 0);
  expected.take(*session_.current, renderAnew(other).at("groups"), {});

  std::string done;
  for (int round = 0; round < test.rounds; ++round) {
    done += "round " + std::to_string(round) + ":";
    const auto note = [&](const std::string& what) { done += " " + what + ","; };
    for (std::size_t count = 1 + changes_.below(3); count > 0; --count) {
      switch (changes_.below(24)) {
        case 0:
          quality = quality == 0 ? 0.1 : 0;
          expected.settingsChanged();
          note("quality " + std::to_string(quality));
          break;
        case 1:
          upAxis = static_cast<int>(changes_.below(6));
          note("up axis " + std::to_string(upAxis));
          break;
        case 2:
          session_.fileAnswers.emplace_back(std::filesystem::absolute("between.rpk"));
          session_.onDialog = nullptr;
          plugin.run("Rendara Export");
          note("package");
          break;
        case 3:
          machine_.startRenderer();
          note("another renderer");
          break;
        case 4:
          if (machine_.renderers().contains(lastPort)) {
            machine_.killRenderer(lastPort);
            note("renderer killed");
          }
          break;
        default:
          note(test.manual && changes_.below(3) == 0 ? changes_.recolourSilently() : changes_.change());
      }
    }
    set(quality, upAxis);
    plugin.run("Rendara Settings");
    other.run("Rendara Settings");
    ExpectedScene::Picks picks;
    if (test.manual) {
      picks = changes_.picks();
      session_.selectionAnswers.emplace_back(picks);
      note("picks " + json(picks).dump());
    }
    done += "\n";
    plugin.run("Rendara Update");
    EXPECT_TRUE(session_.selectionAnswers.empty()) << "a manual Update asks";
    const auto [port, held] = receiver();
    ASSERT_NE(port, 0) << done;
    if (port != lastPort) {
      expected.forget();
    }
    lastPort = port;

    const json fresh = renderAnew(other);
    json wanted = fresh;
    wanted["groups"] = expected.take(*session_.current, fresh.at("groups"), picks);
    const json scene = sceneOf(held);
    EXPECT_EQ(held.at("dangling_references"), 0) << done;
    ASSERT_TRUE(scene == wanted) << done << differences(scene, wanted);
    if (!test.manual) {
      ASSERT_TRUE(scene == fresh) << done << differences(scene, fresh);
    }
  }
}

const std::string kSample = RENDARA_SOURCE_DIR "/samples/twin_compressor.step";
const std::string kModels = RENDARA_MODEL_DIR;
const UpdateCase kCases[] = {
    {"Sample", kSample, false, 1, 25},
    {"SampleManual", kSample, true, 2, 25},
    {"As1", kModels + "/as1-oc-214.stp", false, 3, 60},
    {"As1Manual", kModels + "/as1-oc-214.stp", true, 4, 60},
    {"Dm1", kModels + "/dm1-id-214.stp", false, 5, 30},
    {"Dm1Manual", kModels + "/dm1-id-214.stp", true, 6, 30},
    {"Hinge", kModels + "/13_5_hinge_l_assy.stp", false, 7, 20},
    {"HingeManual", kModels + "/13_5_hinge_l_assy.stp", true, 8, 20},
};
INSTANTIATE_TEST_SUITE_P(Models, UpdateTest, ::testing::ValuesIn(kCases),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace rendara::testing
