#include "standin/renderer/merged_scene.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "standin/renderer/scene_status.h"
#include "tests/renderer/script_text.h"

namespace renderer_test {
namespace {

using standin::MergedScene;
using standin::ScriptBytes;

std::string take(MergedScene& scene, const std::string& text) { return scene.take(ScriptBytes::ofText(text)); }

nlohmann::json groupsOf(const MergedScene& scene) {
  return nlohmann::json::parse(standin::statusJson(scene, {})).at("groups");
}

// What stands at every path: the first corner and the material of each object drawn, where it is placed, "~" when it
// moves.
class Description {
 public:
  explicit Description(const MergedScene& scene) { add(scene.groups(), ""); }
  const std::string& text() const { return text_; }

 private:
  void add(const std::vector<MergedScene::Node>& nodes, const std::string& around) {
    for (const MergedScene::Node& node : nodes) {
      text_ += around + node.name + ":";
      if (node.content) {
        for (const rpk::DrawnObject& drawn : rpk::drawnObjects(*node.content)) {
          text_ += " " + std::to_string(static_cast<int>(drawn.object->mesh.vertices.number(0))) + drawn.material->name;
        }
      }
      if (node.placement) text_ += " @" + std::to_string(static_cast<int>((*node.placement)[12]));
      if (!node.animations.empty()) text_ += " ~";
      text_ += "\n";
      add(node.children, around + node.name + "/");
    }
  }

  std::string text_;
};

struct Case {
  const char* name;
  std::vector<std::string> scripts;  // the groups of each
  std::string expected;
};

class Merging : public testing::TestWithParam<Case> {};

TEST_P(Merging, GivesWhatIsDrawn) {
  MergedScene scene(10);
  for (const std::string& groups : GetParam().scripts) ASSERT_EQ(take(scene, script(groups)), "");
  EXPECT_EQ(Description(scene).text(), GetParam().expected);
}

std::vector<Case> cases() {
  const std::string two = group("a", mesh(1) + placed(5)) + group("a", mesh(2));
  return {
      {"WithGeometryReplaces",
       {group("top", group("a", mesh(1) + placed(5))), group("top", group("a", mesh(2)))},
       "top:\ntop/a: 2steel\n"},
      {"WithoutGeometryKeepsAndMoves",
       {group("top", group("a", mesh(1) + placed(5))), group("top", group("a", animation(3) + placed(7)))},
       "top:\ntop/a: 1steel @7 ~\n"},
      {"PlacementAndAnimationThatDoNotComeGo",
       {group("top", group("a", mesh(1) + animation(1) + placed(5))), group("top", group("a"))},
       "top:\ntop/a: 1steel\n"},
      {"WhatDoesNotComeGoesWithAllBelow",
       {group("top", group("a", mesh(1) + group("b", mesh(2))) + group("c", mesh(3))), group("top", group("c"))},
       "top:\ntop/c: 3steel\n"},
      {"WhatWentIsForgotten",
       {group("top", group("a", mesh(1))), group("top"), group("top", group("a"))},
       "top:\ntop/a:\n"},
      {"AnotherModelStays",
       {group("one", group("a", mesh(1))), group("two", group("a", mesh(2))), group("one", group("a") + group("b"))},
       "one:\none/a: 1steel\none/b:\ntwo:\ntwo/a: 2steel\n"},
      {"SameNamesAreToldApartByTheirOrder",
       {group("top", two + group("a", mesh(3))),
        group("top", group("a") + group("x") + group("a", mesh(4) + placed(6)))},
       "top:\ntop/a: 1steel\ntop/x:\ntop/a: 4steel @6\n"},
      {"PathsDoNotMixLevels",
       {group("top", group("a", mesh(1) + group("a", mesh(2)))), group("top", group("a", group("a")) + group("a"))},
       "top:\ntop/a: 1steel\ntop/a/a: 2steel\ntop/a:\n"},
      {"ReferenceDrawsTheLastBeforeIt",
       {group("top",
              group("a", mesh(1)) + group("b", reference("a")) + group("a", mesh(2)) + group("c", reference("a")))},
       "top:\ntop/a: 1steel\ntop/b: 1steel\ntop/a: 2steel\ntop/c: 2steel\n"},
      {"ReferenceKeepsWhatItFoundWhenTheSourceChanges",
       {group("top", group("a", mesh(1)) + group("b", reference("a"))), group("top", group("a", mesh(2)) + group("b"))},
       "top:\ntop/a: 2steel\ntop/b: 1steel\n"},
      {"ReferenceKeepsWhatItFoundWhenTheSourceGoes",
       {group("top", group("a", mesh(1)) + group("b", reference("a"))), group("top", group("b"))},
       "top:\ntop/b: 1steel\n"},
      {"ReferenceDoesNotReachIntoEarlierScripts",
       {group("top", group("a", mesh(1)) + group("b", mesh(2))), group("top", group("a") + group("b", reference("a")))},
       "top:\ntop/a: 1steel\ntop/b:\n"},
      {"ReferenceBringsItsMaterialToASingleOne",
       {group("top", group("a", mesh(1) + mesh(2)) + group("b", reference("a", "brass")))},
       "top:\ntop/a: 1steel 2steel\ntop/b: 1brass 2brass\n"},
      {"ReferenceLeavesSeveralMaterials",
       {group("top", group("a", mesh(1) + mesh(2, "oak")) + group("b", reference("a", "brass")))},
       "top:\ntop/a: 1steel 2oak\ntop/b: 1steel 2oak\n"},
      {"MaterialGroupsArePartOfTheirGroup",
       {group("top", group("a", materialGroup(mesh(1)) + materialGroup(mesh(2, "oak")))),
        group("top", group("a", placed(4)))},
       "top:\ntop/a: 1steel 2oak @4\n"},
  };
}

INSTANTIATE_TEST_SUITE_P(Table, Merging, testing::ValuesIn(cases()),
                         [](const auto& test) { return std::string(test.param.name); });

// Whether geometry is defined or referred to, and when it came, cannot be told from what is held.
TEST(MergedSceneDigests, AreThoseOfWhatIsDrawn) {
  MergedScene defined(10);
  MergedScene referred(10);
  const std::string content = materialGroup(mesh(1)) + materialGroup(mesh(2));
  const std::vector<std::string> updates = {group("a", content) + group("b", mesh(7)) + group("c", mesh(9)),
                                            group("a") + group("b", content + placed(3))};
  for (const std::string& groups : updates) ASSERT_EQ(take(defined, script(group("top", groups))), "");
  const std::string reused = group("a", content) + group("b", reference("a") + placed(3));
  ASSERT_EQ(take(referred, script(group("top", reused))), "");
  EXPECT_EQ(groupsOf(defined), groupsOf(referred));
  EXPECT_EQ(groupsOf(defined)[1]["geometry"], groupsOf(defined)[2]["geometry"]);
}

TEST(MergedSceneDigests, TellApartWhatDiffers) {
  const std::string same = group("top", group("a", mesh(1) + animation(1) + placed(1)));
  const std::map<std::string, std::string> differing = {
      {"geometry", group("top", group("a", mesh(2) + animation(1) + placed(1)))},
      {"material", group("top", group("a", mesh(1, "oak") + animation(1) + placed(1)))},
      {"animation", group("top", group("a", mesh(1) + animation(2) + placed(1)))},
      {"placement", group("top", group("a", mesh(1) + animation(1) + placed(2)))},
      {"flags", group("top", group("a", "flags 4\n" + mesh(1) + animation(1) + placed(1)))}};
  MergedScene first(10);
  ASSERT_EQ(take(first, script(same)), "");
  for (const auto& [field, groups] : differing) {
    MergedScene second(10);
    ASSERT_EQ(take(second, script(groups)), "");
    auto expected = groupsOf(first);
    const auto other = groupsOf(second);
    EXPECT_NE(other[1][field], expected[1][field]) << field;
    expected[1][field] = other[1][field];
    EXPECT_EQ(other, expected) << field << " is all that differs";
  }
}

TEST(MergedScene, HoldsTheLastOptionsAndCameras) {
  MergedScene scene(10);
  ASSERT_EQ(take(scene, script(group("top", camera("one") + camera("two")), "  \"meter_scale\" 1000,\n")), "");
  ASSERT_EQ(take(scene, script(group("top"), "  \"meter_scale\" 1,\n")), "");
  EXPECT_EQ(scene.head().option("meter_scale"), "1");
  EXPECT_EQ(scene.head().cameras.size(), 2U) << "none came";
  ASSERT_EQ(take(scene, script(group("top", camera("three")))), "");
  ASSERT_EQ(scene.head().cameras.size(), 1U);
  EXPECT_EQ(scene.head().cameras[0].name, "three");
  EXPECT_EQ(scene.head().option("meter_scale"), "");
}

TEST(MergedScene, RefusesAScriptWholeAndStaysAsItWas) {
  MergedScene scene(2);
  ASSERT_EQ(take(scene, script(group("top", camera("one") + group("a", mesh(1))))), "");
  const std::string before = standin::statusJson(scene, {});
  const std::string good = script(group("top", camera("two") + group("a", mesh(2))));
  const std::map<std::string, std::string> bad = {
      {"empty", ""},
      {"garbage", std::string("\x01\x02\x03\xff{{{\"", 7)},
      {"cut within an array", good.substr(0, good.find("\"triangles\" [ ") + 18)},
      {"cut before the last brace", good.substr(0, good.size() - 2)},
      {"no header", group("top")},
      {"no group", script("")},
      {"merges groups", "//---vantor:dal:7---\nload \"o\" {\n\"import_merge_groups\" on,\n}\n" + group("top")},
      {"keeps nothing", "//---vantor:dal:7---\nload \"o\" {\n\"import_keep_original\" off,\n}\n" + group("top")}};
  for (const auto& [name, text] : bad) {
    const std::string refusal = take(scene, text);
    EXPECT_NE(refusal, "") << name;
    EXPECT_EQ(refusal.find('\n'), std::string::npos) << name;
    EXPECT_EQ(standin::statusJson(scene, {}), before) << name;
  }
}

TEST(MergedScene, HoldsScriptsOnlyAsLongAsTheyAreDrawnAndNoMoreThanAllowed) {
  MergedScene scene(2);
  auto bytes = ScriptBytes::ofText(script(group("top", group("a", mesh(1)) + group("b", mesh(1)))));
  const std::weak_ptr<const void> first = bytes.owner;
  ASSERT_EQ(scene.take(std::move(bytes)), "");
  ASSERT_EQ(take(scene, script(group("top", group("a", mesh(2)) + group("b") + group("c")))), "");
  EXPECT_EQ(scene.scriptsHeld(), 2U);
  const std::string before = standin::statusJson(scene, {});
  EXPECT_NE(take(scene, script(group("top", group("a") + group("b") + group("c", mesh(3))))), "") << "a third one";
  EXPECT_EQ(standin::statusJson(scene, {}), before);
  EXPECT_FALSE(first.expired());
  ASSERT_EQ(take(scene, script(group("top", group("a") + group("b", mesh(4))))), "");
  EXPECT_TRUE(first.expired()) << "nothing of it is drawn any more";
  EXPECT_EQ(scene.scriptsHeld(), 2U);
}

}  // namespace
}  // namespace renderer_test
