// What is told of exact surfaces once they are evaluated, on surfaces whose area is known.
#include <gtest/gtest.h>

#include <functional>
#include <nlohmann/json.hpp>
#include <numbers>
#include <string>
#include <vector>

#include "tests/rpk/exact_model.h"
#include "tests/rpk/model_text.h"
#include "tools/rpk/info.h"
#include "tools/rpk/report/info_json.h"
#include "tools/rpk/report/info_text.h"

namespace {

using namespace rpk_test;  // NOLINT(google-build-using-namespace)

constexpr double kPi = std::numbers::pi;
const double kPrismArea = 3 * 8 * std::sqrt(2.0);

// The mantle of the prism on the square whose corners lie on the cylinder of radius 2 and height 3.
std::string prism() {
  return "geometry \"triangles\" {\n  \"vertices\" [ " +
         packedFloats('c', {2, 0, 0, 0, 2, 0, -2, 0, 0, 0, -2, 0, 2, 0, 3, 0, 2, 3, -2, 0, 3, 0, -2, 3}) +
         "] ,\n  \"triangles\" [ " +
         packedIntegers({0, 1, 5, 0, 5, 4, 1, 2, 6, 1, 6, 5, 2, 3, 7, 2, 7, 6, 3, 0, 4, 3, 4, 7}) + "] ,\n}\n";
}

std::string exactObject(const rpk::TrimmedSurface& trimmed) { return object(exactGeometry(trimmed)); }

// A plate, and a pipe in a group of its material that stands at three places, once enlarged.
std::string plateAndPipes() {
  return package(
      {group("plate.prt", {exactObject(unitSquare()), object(square())}),
       group("pipe.prt", {group("pipe", {"flags 66560\n", exactObject(cylinderWithHole()), object(prism())}), at("1")}),
       group("sub.asm",
             {group("pipe.prt", {object(instance("pipe.prt")), at("5")}),
              group("pipe.prt", {object(instance("pipe.prt")), "transform 2 0 0 0 0 2 0 0 0 0 2 0 0 0 0 1\n"})}),
       group("block.prt", {object(square())})});
}

struct Evaluated {
  explicit Evaluated(std::string bytes) : text(std::move(bytes)), info(rpk::gatherInfo(text)) {
    info.exact = rpk::exactParts(info.scene, [this](std::size_t done, std::size_t all) {
      EXPECT_EQ(done, ++steps);
      announced = all;
    });
  }
  Evaluated(const Evaluated&) = delete;
  Evaluated& operator=(const Evaluated&) = delete;

  std::string text;
  rpk::PackageInfo info;
  std::size_t steps = 0;
  std::size_t announced = 0;
};

TEST(ExactInfo, MeasuresEachPartOnce) {
  const Evaluated evaluated(plateAndPipes());
  EXPECT_EQ(evaluated.steps, 2U);
  EXPECT_EQ(evaluated.announced, 2U);
  const std::vector<rpk::ExactPart>& parts = *evaluated.info.exact;
  ASSERT_EQ(parts.size(), 2U) << "a part without exact surfaces is none of them";
  EXPECT_EQ(parts[0].group->name, "plate.prt");
  EXPECT_EQ(parts[0].places, 1U);
  EXPECT_NEAR(parts[0].sums.area, 1, 1e-9);
  EXPECT_NEAR(parts[0].sums.meshArea, 1, 1e-12);
  EXPECT_NEAR(parts[0].sums.meshExcess().value(), 0, 1e-6);
  EXPECT_EQ(parts[1].group->name, "pipe.prt");
  EXPECT_EQ(parts[1].places, 3U);
  EXPECT_NEAR(parts[1].sums.area, 11 * kPi, 1e-3);
  EXPECT_NEAR(parts[1].sums.meshArea, kPrismArea, 1e-5);
  EXPECT_NEAR(parts[1].sums.meshExcess().value(), (kPrismArea / (11 * kPi) - 1) * 100, 0.01);
  const rpk::ExactSums sums = rpk::sumOf(parts);
  EXPECT_EQ(sums.sound, 2U);
  EXPECT_NEAR(sums.area, 1 + 11 * kPi, 1e-3);
}

struct DamageCase {
  const char* name;
  std::function<void(rpk::TrimmedSurface&)> damage;
  const char* what;  // part of what is said
  double area;       // what is left to measure
};

const DamageCase kDamages[] = {
    {"OpenLoop", [](auto& pipe) { pipe.loops[0].curves[3].points[1][1] = 0.5; }, "a loop is open by 0.125", 11 * kPi},
    {"HoleAsAnOuterLoop", [](auto& pipe) { pipe.loops[1].inside = true; }, "marked as the opposite", 13 * kPi},
    {"HoleAlone", [](auto& pipe) { pipe.loops.erase(pipe.loops.begin()); }, "the area within the trims is -", -kPi},
    {"MissingPoint", [](auto& pipe) { pipe.surface.points.pop_back(); }, "control points do not go together", 0},
    {"MissingCurveKnot", [](auto& pipe) { pipe.loops[1].curves[2].knots.push_back(2); }, "trimming arrays", 0},
    {"NoWeight", [](auto& pipe) { pipe.surface.points[4][3] = 0; }, "control points do not go together", 0},
    {"NoExtent",
     [](auto& pipe) {
       pipe.surface.points.assign(18, {5, 5, 5, 1});
     },
     "the area within the trims is 0", 0},
};

TEST(ExactInfo, SaysWhichSurfacesAreNotSound) {
  for (const DamageCase& entry : kDamages) {
    SCOPED_TRACE(entry.name);
    rpk::TrimmedSurface pipe = cylinderWithHole();
    entry.damage(pipe);
    // The damaged surface is the second of its part, in a group of another material than the first.
    const Evaluated evaluated(package(
        {group("pipe.prt", {group("red", {"flags 66560\n", exactObject(unitSquare())}),
                            group("blue", {"flags 66560\n", object(exactGeometry(pipe), blue()), object(prism())})})}));
    const rpk::ExactPart& part = evaluated.info.exact->at(0);
    EXPECT_EQ(part.sums.surfaces, 2U);
    EXPECT_EQ(part.sums.sound, 1U);
    EXPECT_NEAR(part.sums.area, 1 + entry.area, 0.02);
    ASSERT_EQ(part.unsound.size(), 1U);
    EXPECT_EQ(part.unsound[0].number, 1U);
    EXPECT_NE(part.unsound[0].what.find(entry.what), std::string::npos) << part.unsound[0].what;
    const auto json = nlohmann::json::parse(rpk::infoJson(evaluated.info, "a.rpk").dump())["exact"];
    EXPECT_EQ(json["sound_share"], 0.5);
    EXPECT_EQ(json["unsound"][0]["group"], "model/pipe.prt");
    EXPECT_EQ(json["unsound"][0]["surface"], 1);
    EXPECT_EQ(json["unsound"][0]["what"], part.unsound[0].what);
    const std::string text = rpk::infoText(evaluated.info, "a.rpk");
    EXPECT_NE(text.find("\nnot sound (1)\n"), std::string::npos) << text;
    EXPECT_NE(text.find("  pipe.prt        1  "), std::string::npos) << text;
  }
}

TEST(ExactInfo, SaysItPerPartInTextAndPerGroupInJson) {
  const Evaluated evaluated(plateAndPipes());
  const std::string text = rpk::infoText(evaluated.info, "a.rpk");
  EXPECT_NE(text.find("\nexact surfaces (2)\n"
                      "  part            times  surfaces  sound     area  of meshes  difference\n"),
            std::string::npos)
      << text;
  for (const char* line : {"  plate.prt                     1      1        1          1         0 %\n",
                           "  pipe.prt          x 3         1      1  34.5575    33.9411     -1.78 %\n",
                           "  all, each once                2      2  35.5575    34.9411     -1.73 %\n"}) {
    EXPECT_NE(text.find(line), std::string::npos) << line << text;
  }
  const auto json = nlohmann::json::parse(rpk::infoJson(evaluated.info, "a.rpk").dump());
  EXPECT_EQ(json["exact"]["surfaces"], 2);
  EXPECT_EQ(json["exact"]["sound_share"], 1.0);
  EXPECT_TRUE(json["exact"]["unsound"].empty());
  const auto& groups = json["groups"][0]["groups"];
  EXPECT_NEAR(groups[1]["exact"]["area"].get<double>(), 11 * kPi, 1e-3);
  EXPECT_EQ(groups[2]["groups"][1]["exact"], groups[1]["exact"]) << "a reference draws its source";
  EXPECT_FALSE(groups[1]["groups"][0].contains("exact")) << "its material's group is part of it";
  EXPECT_FALSE(groups[3].contains("exact"));
  const Evaluated without(package({group("block.prt", {object(square())})}));
  EXPECT_EQ(nlohmann::json::parse(rpk::infoJson(without.info, "a.rpk").dump())["exact"]["sound_share"], nullptr);
  EXPECT_NE(rpk::infoText(without.info, "a.rpk").find("\nexact surfaces  none\n"), std::string::npos);
}

// In surfaces outside any group there is no part to name.
TEST(ExactInfo, CountsWhatStandsOutsideAnyGroup) {
  const Evaluated evaluated("//---vantor:dal:7---\n" + exactObject(unitSquare()) + exactObject(cylinderWithHole()));
  ASSERT_EQ(evaluated.info.exact->size(), 1U);
  EXPECT_EQ(evaluated.info.exact->at(0).group, nullptr);
  EXPECT_EQ(evaluated.info.exact->at(0).sums.sound, 2U);
  EXPECT_FALSE(evaluated.info.exact->at(0).sums.meshExcess());
  EXPECT_NE(rpk::infoText(evaluated.info, "a.rpk").find("outside any group"), std::string::npos);
}

}  // namespace
