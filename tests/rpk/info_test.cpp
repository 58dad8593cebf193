// What is told of a package: numbers, boxes, trees, words.
#include "tools/rpk/info.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/rpk/command_run.h"
#include "tests/rpk/damage.h"
#include "tests/rpk/model_text.h"
#include "tests/rpk/whole_package.h"
#include "tests/support/temporary_folder.h"
#include "tools/rpk/report/display_text.h"
#include "tools/rpk/report/group_tree.h"
#include "tools/rpk/report/info_json.h"
#include "tools/rpk/report/info_text.h"
#include "tools/rpk/report/placement_text.h"

namespace {

using namespace rpk_test;  // NOLINT(google-build-using-namespace)

constexpr std::size_t kAllLevels = 1000;

TEST(Info, GathersThePump) {
  const std::string text = pumpPackage();
  const rpk::PackageInfo info = rpk::gatherInfo(text);
  EXPECT_EQ(info.fileBytes, text.size());
  EXPECT_EQ(info.assemblies, 1U);
  EXPECT_EQ(info.materialGroups, 1U);
  EXPECT_EQ(info.meshes, 2U);
  ASSERT_EQ(info.materials.size(), 2U);
  EXPECT_EQ(info.materials[0].material.name, "rotor:red:204:51:26");
  EXPECT_EQ(info.materials[0].objects, 3U) << "the mesh, the object that names it, the reference";
  EXPECT_EQ(info.materials[1].material.texture, "plate.png");
  ASSERT_EQ(info.animated.size(), 1U);
  EXPECT_EQ(rpk::groupPath(*info.animated[0]), "pump/rotor.prt");
  const auto& groups = info.scene.groups[0]->children;
  EXPECT_EQ(info.trianglesAt(*groups[0]), 2U);
  EXPECT_EQ(info.trianglesAt(*groups[2]), 2U) << "a reference draws its source";
  EXPECT_EQ(info.trianglesAt(*info.scene.find("cover.prt")), 1U) << "in the group of its material";
}

TEST(Info, CountsTrims) {
  const std::string text = wholePackage();
  const rpk::TrimCounts trims = rpk::gatherInfo(text).trims;
  EXPECT_EQ(trims.trimmed, 1U);
  EXPECT_EQ(trims.loops, 1U);
  EXPECT_EQ(trims.curves, 4U);
}

struct BoxCase {
  const char* name;
  std::vector<std::string> content;
  rpk::Vector low;
  rpk::Vector high;
};

// About z, (1, 0) to (0.6, 0.8).
const std::string kTurned = "transform 0.6 0.8 0 0 -0.8 0.6 0 0 0 0 1 0 10 0 0 1\n";

const BoxCase kBoxes[] = {
    {"Plain", {group("a.prt", {object(triangle(2)), at("1", "2", "3")})}, {1, 2, 3}, {3, 4, 3}},
    {"TurnedByItsVertices", {group("a.prt", {object(triangle(5)), kTurned})}, {6, 0, 0}, {13, 4, 0}},
    {"Nested",
     {group("a.asm", {group("a.prt", {object(triangle(5)), kTurned}), "transform 0 1 0 0 -1 0 0 0 0 0 1 0 0 0 7 1\n"})},
     {-4, 6, 7},
     {0, 13, 7}},
    {"References",
     {group("a.prt", {object(triangle())}), group("b.prt", {object(instance("a.prt")), at("-5", "0", "9")}),
      group("c.prt", {object(instance("nothing")), at("99")})},
     {-5, 0, 0},
     {1, 1, 9}},
    {"GroupsOfOneMaterial",
     {group("a.prt", {group("a", {"flags 66560\n", object(triangle(4))}), at("1")})},
     {1, 0, 0},
     {5, 4, 0}},
    {"OutsideGroupsOfParts", {object(triangle(3))}, {0, 0, 0}, {3, 3, 0}},
    {"NoNumbers",
     {group("a.prt", {object("geometry \"triangles\" {\n\"vertices\" [ " +
                             packedFloats('c', {NAN, 0, 0, 1, 2, 3, INFINITY, 0, 0}) + "] ,\n}\n")})},
     {1, 2, 3},
     {1, 2, 3}},
    {"VerticesAsText",
     {group("a.prt", {object("geometry \"triangles\" {\n\"vertices\" [ 1 2 3,4 5 6 ] ,\n}\n")})},
     {1, 2, 3},
     {4, 5, 6}},
};

TEST(SceneBox, IsThatOfTheVerticesWhereTheyAreDrawn) {
  for (const BoxCase& entry : kBoxes) {
    SCOPED_TRACE(entry.name);
    const std::string text = package(entry.content);
    const rpk::SceneBox found = rpk::sceneBox(rpk::readScene(text));
    EXPECT_TRUE(found.exact);
    for (std::size_t i = 0; i < 3; ++i) {
      EXPECT_NEAR(found.box.low[i], entry.low[i], 1e-12) << i;
      EXPECT_NEAR(found.box.high[i], entry.high[i], 1e-12) << i;
    }
  }
  const std::string empty = package({});
  EXPECT_TRUE(rpk::sceneBox(rpk::readScene(empty)).box.empty());
}

TEST(SceneBox, IsNeverTooSmallWhenThereIsTooMuchToLookAt) {
  const std::string text = package({group("a.prt", {object(triangle(5)), kTurned})});
  const rpk::SceneBox found = rpk::sceneBox(rpk::readScene(text), 2);
  EXPECT_FALSE(found.exact);
  EXPECT_NEAR(found.box.low[0], 6, 1e-12);
  EXPECT_NEAR(found.box.high[1], 7, 1e-12) << "the corner of the mesh's own box, which is no vertex";
}

std::vector<std::string> tree(const std::vector<std::string>& content, std::size_t depth, bool each = false) {
  const std::string text = package(content);
  const rpk::PackageInfo info = rpk::gatherInfo(text);
  std::vector<std::string> rows;
  for (const rpk::TreeRow& row : rpk::treeRows(info, depth, each)) {
    rows.push_back(std::string(row.level, '-') + row.groups.front()->name + "*" + std::to_string(row.groups.size()) +
                   (row.below > 0 ? "+" + std::to_string(row.below) : ""));
  }
  return rows;
}

TEST(Tree, TellsRepeatedSiblingsOnce) {
  const auto reference = [](const char* x) { return group("bolt.prt", {object(instance("bolt.prt")), at(x)}); };
  const std::vector<std::string> content = {
      group("a.asm", {group("bolt.prt", {object(triangle()), at("1")}), reference("2")}),
      group("a.asm", {reference("1"), reference("3")}),
      group("a.asm", {reference("1"), reference("2"), at("5")}),
      reference("6"),
      group("bolt.prt", {object(square())}),
      reference("7")};
  using Rows = std::vector<std::string>;
  EXPECT_EQ(tree(content, kAllLevels),
            (Rows{"model*1", "-a.asm*2", "--bolt.prt*2", "-a.asm*1", "--bolt.prt*2", "-bolt.prt*1", "-bolt.prt*2"}))
      << "another placement within, or another mesh, is another thing";
  EXPECT_EQ(tree(content, 2), (Rows{"model*1", "-a.asm*2+2", "-a.asm*1+2", "-bolt.prt*1", "-bolt.prt*2"}));
  EXPECT_EQ(tree(content, 2, true),
            (Rows{"model*1", "-a.asm*1+2", "-a.asm*1+2", "-a.asm*1+2", "-bolt.prt*1", "-bolt.prt*1", "-bolt.prt*1"}));
  EXPECT_EQ(tree(content, 0), Rows{});
}

TEST(PlacementText, SaysTurnsInWords) {
  const double half = std::sqrt(0.5);
  const struct {
    rpk::Matrix placement;
    std::string text;
  } cases[] = {
      {rpk::kIdentity, ""},
      {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 5, 6, 7, 1}, ""},
      {{0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, "90 deg about z"},
      {{0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, "-90 deg about z"},
      {{1, 0, 0, 0, 0, -1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1}, "180 deg about x"},
      {{half, 0, -half, 0, 0, 1, 0, 0, half, 0, half, 0, 0, 0, 0, 1}, "45 deg about y"},
      {{0, 1, 0, 0, 0, 0, 1, 0, 1, 0, 0, 0, 0, 0, 0, 1}, "120 deg about (0.58 0.58 0.58)"},
      {{0, 1, 0, 0, 1, 0, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1}, "180 deg about (0.71 0.71 0)"},
      {{0, 2, 0, 0, -2, 0, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1}, "90 deg about z, scaled by 2"},
      {{2, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, "stretched by 2 1 1"},
      {{-1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, "mirrored, 180 deg about x"},
      {{1, 0, 0, 0, 1, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, "skewed"},
      {{0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, "flattened"},
      {{1, 0, 0, 1, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, "not affine"},
      {{NAN, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, "no numbers"},
  };
  for (const auto& entry : cases) EXPECT_EQ(rpk::turnText(entry.placement), entry.text);
  EXPECT_NEAR(rpk::degreesBetween(cases[2].placement, cases[3].placement), 180, 1e-9);
  EXPECT_EQ(rpk::colourText({1, 0.5, NAN}), "#ff8000");
  EXPECT_EQ(rpk::colourText({-1, 2, 0.1}), "#00ff1a");
}

TEST(DisplayText, IsSafeAndFits) {
  EXPECT_EQ(rpk::displayText("a\nb\t\x1b[31m\x7f"), "a\\nb\\t\\x1b[31m\\x7f");
  EXPECT_EQ(rpk::displayText("V\xe9randa"), "V\xc3\xa9randa") << "no UTF-8";
  EXPECT_EQ(rpk::displayText("V\xc3\xa9 \xe6\x97\xa5"), "V\xc3\xa9 \xe6\x97\xa5");
  EXPECT_EQ(rpk::displayText("a\xe2\x80\xae"
                             "b"),
            "a\\u202eb")
      << "turns the writing around";
  EXPECT_EQ(rpk::jsonText("a\nb"), "a\nb");
  EXPECT_EQ(rpk::displayWidth("\xc3\xa9\xe6\x97\xa5"), 3U);
  EXPECT_EQ(rpk::shortened("abcdefgh", 8), "abcdefgh");
  EXPECT_EQ(rpk::shortened("abcdefghi", 8), "abcde...");
  EXPECT_EQ(rpk::shortened("\xe6\x97\xa5\xe6\x97\xa5\xe6\x97\xa5", 5), "\xe6\x97\xa5...") << "two columns each";
  EXPECT_EQ(rpk::grouped(999), "999");
  EXPECT_EQ(rpk::grouped(1234567), "1,234,567");
}

std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// Whatever the package: nothing breaks, no line is too long for the page or could do harm on a terminal, and the JSON
// is valid.
TEST(InfoText, HoldsTogetherWhateverThePackage) {
  const std::string longName(300, 'n');
  std::vector<std::string> texts = {
      wholePackage(),
      package({group(longName, {object(triangle(), material(longName, "1 0 0")), at("-1e-30", "123456789", "1e300")}),
               "group xX1b5b326a0a {\n}\n", "camera xXff0a {\n  fov xX1b\n}\n"},
              "\"" + longName + "\" \"" + longName + "\",\n")};
  for (std::uint32_t seed = 0; seed < 300; ++seed) texts.push_back(Damager(seed).damage(texts[seed % 2]));
  for (const std::string& text : texts) {
    rpk::PackageInfo info = rpk::gatherInfo(text);
    info.exact = rpk::exactParts(info.scene);
    for (const std::string& line : linesOf(rpk::infoText(info, "a\x1b.rpk"))) {
      EXPECT_LE(rpk::displayWidth(line), 120U) << line;
      EXPECT_EQ(line, rpk::displayText(line));
    }
    const std::string json = rpk::infoJson(info, "a.rpk").dump();
    EXPECT_EQ(nlohmann::ordered_json::parse(json).dump(), json);
  }
}

class InfoCommand : public testing::Test {
 protected:
  InfoCommand() {
    rendara::testing::writeFile("pump.rpk", pumpPackage());
    rendara::testing::writeFile("cut.rpk", pumpPackage().substr(0, 2500));
    rendara::testing::writeFile("note.rpk", "a note\n");
  }

 private:
  rendara::testing::WorkingFolder folder_;
};

TEST_F(InfoCommand, TellsHowItEnded) {
  EXPECT_EQ(runCommand("info", {"pump.rpk"}).code, rpk::ExitCode::kDone);
  EXPECT_EQ(runCommand("info", {"pump.rpk"}).errors, "");
  EXPECT_EQ(runCommand("info", {"note.rpk"}).code, rpk::ExitCode::kUnreadable);
  EXPECT_EQ(runCommand("info", {"none.rpk"}).code, rpk::ExitCode::kUnreadable);
  EXPECT_EQ(runCommand("info", {}).code, rpk::ExitCode::kUsage);
  EXPECT_EQ(runCommand("info", {"pump.rpk", "--depth", "deep"}).code, rpk::ExitCode::kUsage);
  const CommandRun cut = runCommand("info", {"cut.rpk"});
  EXPECT_EQ(cut.code, rpk::ExitCode::kFound);
  EXPECT_TRUE(cut.errors.starts_with("rpk: cut.rpk: ")) << cut.errors;
  EXPECT_NE(cut.output.find("Current Creo camera"), std::string::npos) << "what could be read";
}

TEST_F(InfoCommand, SaysItInText) {
  const std::string output = runCommand("info", {"pump.rpk"}).output;
  const std::vector<std::string> lines = linesOf(output);
  for (const char* line : {
           "units           39.3701 to the metre (inches)",
           "groups          6 groups, 1 sub-assembly, 3 placed parts, 1 of one material",
           "objects         2 meshes, 1 reference, 1 exact surface",
           "triangles       3 written, 5 placed",
           "  V\xc3\xa9                   orthographic   55  (0, 1, 0)    (0, 0, 1)",
           "  #808080        1  cover:steel:1:2:3    vnt_advanced  plate.png",
           "       2      2     0.08  pump/rotor.prt",
       }) {
    EXPECT_NE(std::find(lines.begin(), lines.end(), line), lines.end()) << line << "\n" << output;
  }
  const std::string flat = runCommand("info", {"pump.rpk", "--depth", "0"}).output;
  EXPECT_EQ(flat.find("tree"), std::string::npos);
  EXPECT_EQ(flat.find("exact surfaces (1)"), std::string::npos) << "evaluated on request only";
  EXPECT_NE(runCommand("info", {"pump.rpk", "--exact"}).output.find("exact surfaces (1)"), std::string::npos);
  EXPECT_TRUE(output.starts_with(flat));
}

TEST_F(InfoCommand, SaysItInJson) {
  const auto json = nlohmann::json::parse(runCommand("info", {"pump.rpk", "--json"}).output);
  EXPECT_EQ(json["variant"], 7);
  EXPECT_EQ(json["options"]["meter_scale"], "39.3701");
  EXPECT_EQ(json["counts"]["triangles_placed"], 5);
  EXPECT_EQ(json["content"]["mesh"].get<std::size_t>() + json["content"]["exact"].get<std::size_t>() +
                json["content"]["animation"].get<std::size_t>() + json["content"]["text"].get<std::size_t>(),
            json["bytes"].get<std::size_t>());
  EXPECT_EQ(json["cameras"][1]["name"], "V\xc3\xa9");
  EXPECT_EQ(json["materials"][0]["colour"], "#cc331a");
  EXPECT_EQ(json["animations"][0]["timestamps"], 2);
  const auto& housing = json["groups"][0]["groups"][1];
  EXPECT_EQ(housing["kind"], "assembly");
  EXPECT_EQ(housing["flags"], 32768);
  EXPECT_EQ(housing["placement"], (nlohmann::json{0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 3, 1}));
  EXPECT_EQ(json["groups"][0]["groups"][2]["source"], "rotor.prt");
  EXPECT_EQ(json["groups"][0]["placement"], nullptr);
  const auto flat = nlohmann::json::parse(runCommand("info", {"pump.rpk", "--json", "--depth", "1"}).output);
  EXPECT_TRUE(flat["groups"][0]["groups"].empty());
}

}  // namespace
