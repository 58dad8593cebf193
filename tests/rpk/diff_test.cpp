// Differences of small packages, each case told in full.
#include "tools/rpk/diff.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <ostream>

#include "tests/rpk/command_run.h"
#include "tests/rpk/damage.h"
#include "tests/rpk/model_text.h"
#include "tests/rpk/whole_package.h"
#include "tests/support/temporary_folder.h"

namespace {

using namespace rpk_test;  // NOLINT(google-build-using-namespace)
using rpk::DifferenceKind;
using rpk::DiffOptions;

std::vector<std::string> told(const std::string& before, const std::string& after, const DiffOptions& options = {}) {
  const rpk::Scene first = rpk::readScene(before);
  const rpk::Scene second = rpk::readScene(after);
  EXPECT_EQ(first.faultCount, 0U);
  EXPECT_EQ(second.faultCount, 0U);
  std::vector<std::string> lines;
  for (const rpk::Difference& difference : rpk::diffScenes(first, second, options)) {
    lines.push_back(std::string(differenceKindName(difference.kind)) + " " + difference.path + ": " + difference.what);
  }
  return lines;
}

struct Case {
  const char* name;
  std::vector<std::string> before;  // what the top group holds
  std::vector<std::string> after;
  std::vector<std::string> differences;
  DiffOptions options = {};
};

std::ostream& operator<<(std::ostream& out, const Case& entry) { return out << entry.name; }

DiffOptions all() { return {0, {}}; }

DiffOptions within(double tolerance) { return {tolerance, {DifferenceKind::kWritten}}; }

// Bolts in a row, the first one with the mesh.
std::vector<std::string> bolts(const std::vector<int>& places) {
  std::vector<std::string> groups;
  groups.reserve(places.size());
  for (const int place : places) {
    groups.push_back(
        group("bolt.prt", {groups.empty() ? "flags 1024\n" + object(triangle()) : object(instance("bolt.prt")),
                           at(std::to_string(place))}));
  }
  return groups;
}

std::string part(const std::string& content) { return group("a.prt", {content}); }

std::string camera(const std::string& name, const std::string& content) {
  return "camera \"" + name + "\" {\n" + content + "}\n";
}

std::string motion(const std::string& duration, const std::string& x) {
  return "animation \"fbx_animation\" \"a.prt\" {\n\"duration\" " + duration +
         ",\n\"matrices\" [\n1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1, 1 0 0 0 0 1 0 0 0 0 1 0 " + x +
         " 0 0 1 ],\n\"timestamps\" [\n" + packedIntegers({0, 40}) + " ],\n}\n";
}

std::string textTriangle(const std::string& corner) {
  return "geometry \"triangles\" {\n\"vertices\" [ 0 0 0," + corner + ",0 1 0 ] ,\n\"triangles\" [ 0,1,2 ] ,\n}\n";
}

std::string packedTriangle(float corner) {
  return "geometry \"triangles\" {\n\"vertices\" [ " + packedFloats('c', {0, 0, 0, corner, 0, 0, 0, 1, 0}) +
         "] ,\n\"triangles\" [ " + packedIntegers({0, 1, 2}) + "] ,\n}\n";
}

const Case kCases[] = {
    {"Moved",
     {group("a.prt", {object(triangle()), at("1", "2", "3")})},
     {group("a.prt", {object(triangle()), at("4", "6", "3")})},
     {"moved model/a.prt: by 5 (3, 4, 0)"}},
    {"TurnedWithAll",
     {group("a.asm", {part(object(triangle()))})},
     {group("a.asm", {part(object(triangle())), "transform 0 1 0 0 -1 0 0 0 0 0 1 0 0 0 0 1\n"})},
     {"moved model/a.asm: turned by 90 deg"}},
    {"Stretched",
     {part(object(triangle()))},
     {part(object(triangle()) + "transform 2 0 0 0 0 2 0 0 0 0 2 0 0 0 0 1\n")},
     {"moved model/a.prt: stretched"}},
    {"WithinTheTolerance",
     {group("a.prt", {object(triangle()), at("1")}), group("b.prt", {object(triangle()), at("1")})},
     {group("a.prt", {object(triangle()), at("1.001")}), group("b.prt", {object(triangle()), at("1.1")})},
     {"moved model/b.prt: by 0.1 (0.1, 0, 0)"},
     within(0.01)},
    {"OneOfEightTakenOut",
     bolts({0, 10, 20, 30, 40, 50, 60, 70}),
     bolts({0, 10, 20, 40, 50, 60, 70}),
     {"removed model/bolt.prt[4]: 1 triangle"}},
    {"TheOneWithTheMeshTakenOut",
     bolts({0, 10, 20}),
     bolts({10, 20}),
     {"removed model/bolt.prt[1]: 1 triangle", "written model/bolt.prt[2]: now holds its geometry itself",
      "written model/bolt.prt[2]: flags none -> 1024"},
     all()},
    {"OneTakenOutAndOneMoved",
     bolts({0, 10, 20, 30}),
     bolts({0, 21, 30}),
     {"removed model/bolt.prt[2]: 1 triangle", "moved model/bolt.prt[3]: by 1 (1, 0, 0)"}},
    {"ARowMoved",
     bolts({0, 10, 20}),
     bolts({7, 17, 27}),
     {"moved model/bolt.prt[1]: by 7 (7, 0, 0)", "moved model/bolt.prt[2]: by 7 (7, 0, 0)",
      "moved model/bolt.prt[3]: by 7 (7, 0, 0)"}},
    {"OtherContentIsNoNeighbour",
     {group("a.prt", {object(triangle()), at("0")}), group("a.prt", {object(square()), at("10")})},
     {group("a.prt", {object(square()), at("1")}), group("a.prt", {object(triangle()), at("11")})},
     {"moved model/a.prt[1]: by 11 (11, 0, 0)", "moved model/a.prt[2]: by 9 (-9, 0, 0)"}},
    {"AddedAndRemoved",
     {part(object(triangle())), group("old.asm", {group("x.prt", {}), group("y.prt", {object(square())})})},
     {group("new.prt", {}), part(object(triangle()))},
     {"removed model/old.asm: 3 groups, 2 triangles", "added model/new.prt: empty"}},
    {"OtherOrderOfSiblings",
     {group("a.prt", {object(triangle())}), group("b.prt", {object(square())})},
     {group("b.prt", {object(square())}), group("a.prt", {object(triangle())})},
     {},
     all()},
    {"OtherVertices",
     {part(object(triangle(1)))},
     {part(object(triangle(2)))},
     {"remeshed model/a.prt: triangles 1, vertices 3; differs in vertices"}},
    {"MoreTriangles",
     {part(object(triangle()))},
     {part(object(square()))},
     {"remeshed model/a.prt: triangles 1 -> 2, vertices 3 -> 4"}},
    {"NoGeometryAnyMore",
     {part(object(triangle()))},
     {part("")},
     {"remeshed model/a.prt: triangles 1 -> 0, vertices 3 -> 0"}},
    {"ExactSurfacesBeside",
     {part(object(wholeMesh()))},
     {part("flags 1024\n" + group("a", {"flags 66560\n", object(wholeSurface()), object(wholeMesh())}))},
     {"remeshed model/a.prt: triangles 2, vertices 4, exact surfaces 0 -> 1"}},
    {"TextAndPackedAlike", {part(object(textTriangle("0.333333 0 0")))}, {part(object(packedTriangle(1.0F / 3)))}, {}},
    {"TextAndPackedDiffer",
     {part(object(textTriangle("0.333333 0 0")))},
     {part(object(packedTriangle(0.33334F)))},
     {"remeshed model/a.prt: triangles 1, vertices 3; differs in vertices"}},
    {"PackedInTheLastBit",
     {part(object(packedTriangle(0.33333333F)))},
     {part(object(packedTriangle(0.33333337F)))},
     {"remeshed model/a.prt: triangles 1, vertices 3; differs in vertices"}},
    {"OtherMaterial",
     {part(object(triangle()))},
     {part(object(triangle(), blue()))},
     {"recoloured model/a.prt: red #ff0000 -> blue #0000ff"}},
    {"OtherColourOfOneName",
     {part(object(triangle()))},
     {part(object(triangle(), material("red", "0.9 0 0")))},
     {"recoloured model/a.prt: red: colour 1 0 0 -> 0.9 0 0"}},
    {"OtherTexture",
     {part(object(triangle(),
                  material("wood", "1 1 1", "\"diffuse\" ! \"texture_rgb\" {\n\"texture\" \"a.png\",\n},\n")))},
     {part(object(triangle(),
                  material("wood", "1 1 1", "\"diffuse\" ! \"texture_rgb\" {\n\"texture\" \"b.png\",\n},\n")))},
     {"recoloured model/a.prt: wood: texture a.png -> b.png"}},
    {"OtherValueOfTheShader",
     {part(object(triangle(), material("red", "1 0 0", "\"ior\" 1.5,\n")))},
     {part(object(triangle(), material("red", "1 0 0", "\"ior\" 1.4,\n")))},
     {"recoloured model/a.prt: red: other values of the shader"}},
    {"OneMoreMaterial",
     {part(object(square()))},
     {part(object(triangle()) + object(triangle(), blue()))},
     {"remeshed model/a.prt: triangles 2, vertices 4 -> 6", "recoloured model/a.prt: now also blue #0000ff"}},
    {"ObjectsInAnotherOrder",
     {part(object(square()) + object(triangle(), blue()))},
     {part(object(triangle(), blue()) + object(square()))},
     {},
     all()},
    {"MaterialOfAReference",
     {part(object(triangle())), group("b.prt", {object(instance("a.prt"))})},
     {part(object(triangle())), group("b.prt", {object(instance("a.prt"), blue())})},
     {"recoloured model/b.prt: red #ff0000 -> blue #0000ff"}},
    {"ReferencesToAChangedSource",
     bolts({0, 10, 20}),
     {group("bolt.prt", {"flags 1024\n", object(square()), at("0")}), bolts({0, 10})[1],
      group("bolt.prt", {object(instance("bolt.prt")), at("20")})},
     {"remeshed model/bolt.prt[1]: triangles 1 -> 2, vertices 3 -> 4"}},
    {"AChangedSourceThatStandsElsewhere",
     {group("old.asm", {part(object(triangle()))}), group("b.asm", {part(object(instance("a.prt")))}),
      group("c.asm", {part(object(instance("a.prt")))})},
     {group("new.asm", {part(object(square()))}), group("b.asm", {part(object(instance("a.prt")))}),
      group("c.asm", {part(object(instance("a.prt")))})},
     {"removed model/old.asm: 2 groups, 1 triangle", "added model/new.asm: 2 groups, 2 triangles",
      "remeshed model/b.asm/a.prt: triangles 1 -> 2, vertices 3 -> 4"}},
    {"AReferenceInThePlaceOfAMesh",
     {part(object(triangle())), group("b.prt", {object(triangle())})},
     {part(object(triangle())), group("b.prt", {object(instance("a.prt"))})},
     {"written model/b.prt: now a reference to a.prt"},
     all()},
    {"AReferenceToNothing",
     {part(object(triangle())), group("b.prt", {object(instance("a.prt"))})},
     {part(object(triangle())), group("b.prt", {object(instance("c.prt"))})},
     {"remeshed model/b.prt: triangles 1 -> 0, vertices 3 -> 0"}},
    {"Cameras",
     {camera("front", "fov 55\n" + at("0")), camera("old", "fov 55\n")},
     {camera("front", "fov 60\nup 0 1 0\ntransform 1 0 0 0 0 0 1 0 0 -1 0 0 0 0 0 1\n"), camera("new", "fov 55\n")},
     {"camera : front: fov 55 -> 60, up none -> 0 1 0, moved turned by 90 deg", "camera : old: removed",
      "camera : new: added"}},
    {"CamerasLeftOut",
     {camera("front", "fov 55\n")},
     {camera("front", "fov 60\n")},
     {},
     {0, {DifferenceKind::kCamera}}},
    {"Animations",
     {part(motion("0.08", "1")), group("b.prt", {motion("0.08", "1")})},
     {part(motion("0.1", "2")), group("b.prt", {})},
     {"animated model/a.prt: duration 0.08 -> 0.1, 1 of 2 matrices differ",
      "animated model/b.prt: removed, 2 matrices"}},
};

class Diff : public testing::TestWithParam<Case> {};

TEST_P(Diff, Tells) {
  const Case& entry = GetParam();
  EXPECT_EQ(told(package(entry.before), package(entry.after), entry.options), entry.differences);
}

INSTANTIATE_TEST_SUITE_P(Cases, Diff, testing::ValuesIn(kCases),
                         [](const auto& entry) { return std::string(entry.param.name); });

TEST(DiffHead, TellsHeadersModulesOptionsAndTheNameOfTheModel) {
  const std::string before = package({}, "\"meter_scale\" 1000,\n\"ext\" off,\n");
  const std::string after =
      "//---vantor:dal:5---\n//---import:dal:1---\nload \"other.so\" {\n\"meter_scale\" 1,\n\"mode\" on,\n}\n" +
      group("pump", {});
  EXPECT_EQ(told(before, after),
            (std::vector<std::string>{"header : //---vantor:dal:7--- -> //---vantor:dal:5---",
                                      "module : vntrtopt.so -> other.so", "option : meter_scale 1000 -> 1",
                                      "option : ext off -> none", "option : mode none -> on",
                                      "renamed model: model -> pump"}));
}

TEST(DiffNumbers, AreThereForPrograms) {
  const std::string before = package(bolts({0, 10}));
  const std::string after =
      package({group("bolt.prt", {object(square()), "transform 0 1 0 0 -1 0 0 0 0 0 1 0 3 4 0 1\n"})});
  const rpk::Scene first = rpk::readScene(before);
  const rpk::Scene second = rpk::readScene(after);
  const auto differences = rpk::diffScenes(first, second);
  ASSERT_EQ(differences.size(), 3U);
  EXPECT_EQ(differences[0].kind, DifferenceKind::kMoved);
  EXPECT_NEAR(differences[0].distance, 5, 1e-12);
  EXPECT_NEAR(differences[0].degrees, 90, 1e-9);
  EXPECT_EQ(differences[1].before, (rpk::DrawnCounts{3, 1, 0}));
  EXPECT_EQ(differences[1].after, (rpk::DrawnCounts{4, 2, 0}));
  EXPECT_EQ(differences[2].kind, DifferenceKind::kRemoved);
  EXPECT_EQ(differences[2].before, (rpk::DrawnCounts{3, 1, 0})) << "what the reference draws";
}

// More than are compared each with each: still matched by where they are.
TEST(DiffMany, MatchesByPlacement) {
  std::vector<std::string> before;
  std::vector<std::string> after;
  for (int i = 0; i < 1500; ++i) {
    const std::string x = std::to_string((i * 7919) % 1500 * 10);
    before.push_back(group("bolt.prt", {at(x)}));
    if (i != 700) after.push_back(group("bolt.prt", {at(x + ".25")}));
  }
  const auto lines = told(package(before), package(after), within(0.25));
  EXPECT_EQ(lines, std::vector<std::string>{"removed model/bolt.prt[701]: empty"});
}

// Whatever stands in a package: it is the same as itself, and nothing breaks where it is damaged.
TEST(DiffDamaged, TellsWhatItCan) {
  for (const std::string& text : {wholePackage(), pumpPackage()}) {
    const rpk::Scene scene = rpk::readScene(text);
    EXPECT_TRUE(rpk::diffScenes(scene, scene, all()).empty());
    for (std::uint32_t seed = 0; seed < 300; ++seed) {
      const std::string damagedText = Damager(seed).damage(text);
      const rpk::Scene damaged = rpk::readScene(damagedText);
      EXPECT_TRUE(rpk::diffScenes(damaged, damaged, all()).empty()) << seed;
      const std::size_t there = rpk::diffScenes(scene, damaged, all()).size();
      const std::size_t back = rpk::diffScenes(damaged, scene, all()).size();
      EXPECT_EQ(there == 0, back == 0) << seed;
    }
  }
}

TEST(DiffCommand, TellsHowItEnded) {
  using rendara::testing::writeFile;
  using rpk::ExitCode;
  const rendara::testing::WorkingFolder folder;
  writeFile("a.rpk", package({part(object(triangle()))}));
  writeFile("b.rpk", package({group("a.prt", {object(triangle(), blue()), at("0.5")})}));
  writeFile("c.rpk", "\n" + package({part(object(triangle()))}));
  writeFile("cut.rpk", package({part(object(triangle()))}).substr(0, 300));
  writeFile("note.rpk", "a note\n");
  const struct {
    std::vector<const char*> arguments;
    ExitCode code;
    std::string output;
    std::string errors;  // its beginning
  } cases[] = {
      {{"a.rpk", "a.rpk"}, ExitCode::kDone, "a.rpk and a.rpk are the same, byte for byte\n", ""},
      {{"a.rpk", "c.rpk"}, ExitCode::kDone, "a.rpk and c.rpk are the same\n", ""},
      {{"a.rpk", "b.rpk"},
       ExitCode::kFound,
       "moved       model/a.prt: by 0.5 (0.5, 0, 0)\nrecoloured  model/a.prt: red #ff0000 -> blue #0000ff\n"
       "2 differences: 1 moved, 1 recoloured\n",
       ""},
      {{"a.rpk", "b.rpk", "--quiet"}, ExitCode::kFound, "", ""},
      {{"a.rpk", "b.rpk", "--tolerance", "0.5", "--without", "recoloured"},
       ExitCode::kDone,
       "a.rpk and b.rpk are the same\n",
       ""},
      {{"cut.rpk", "cut.rpk", "--quiet"}, ExitCode::kFound, "", "rpk: cut.rpk: "},
      {{"a.rpk", "note.rpk"}, ExitCode::kUnreadable, "", "rpk: note.rpk: not a package"},
      {{"none.rpk", "a.rpk"}, ExitCode::kUnreadable, "", "rpk: none.rpk: "},
      {{"a.rpk"}, ExitCode::kUsage, "", "rpk: "},
      {{"a.rpk", "b.rpk", "--without", "colour"}, ExitCode::kUsage, "", "rpk: "},
      {{"a.rpk", "b.rpk", "--tolerance", "-1"}, ExitCode::kUsage, "", "rpk: "},
      {{"a.rpk", "b.rpk", "--tolerence", "1"}, ExitCode::kUsage, "", "rpk: unknown option --tolerence; did you mean"},
  };
  for (const auto& entry : cases) {
    const CommandRun result = runCommand("diff", entry.arguments);
    SCOPED_TRACE(testing::PrintToString(entry.arguments) + result.errors);
    EXPECT_EQ(result.code, entry.code);
    EXPECT_EQ(result.output, entry.output);
    EXPECT_TRUE(result.errors.starts_with(entry.errors));
    EXPECT_EQ(result.errors.empty(), entry.errors.empty());
  }
  const auto json = nlohmann::json::parse(runCommand("diff", {"a.rpk", "b.rpk", "--json"}).output);
  EXPECT_EQ(json["same"], false);
  EXPECT_EQ(json["counts"], (nlohmann::json{{"moved", 1}, {"recoloured", 1}}));
  EXPECT_EQ(json["differences"][0], (nlohmann::json{{"kind", "moved"},
                                                    {"path", "model/a.prt"},
                                                    {"what", "by 0.5 (0.5, 0, 0)"},
                                                    {"distance", 0.5},
                                                    {"degrees", 0.0}}));
}

}  // namespace
