// Real STEP files: what is in them is known, see the table.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "standin/step/exact_measure.h"
#include "standin/step/step_loader.h"
#include "tests/step/mesh_checks.h"
#include "tests/support/large_models.h"

namespace standin::test {

namespace {

struct Expected {
  const char* file;
  const wchar_t* unit;
  std::size_t placed, placedAssemblies;              // components over all levels, expanded
  std::size_t parts, partsWithoutFaces, assemblies;  // distinct
  std::size_t faces, placedFaces;
  std::size_t coloredParts;
  int coloredFaces = -1;  // not counted where colours come from solids
  std::size_t quilts = 0;
  std::size_t openEdges = 0;  // at slivers that the kernel leaves out
};

std::ostream& operator<<(std::ostream& stream, const Expected& expected) { return stream << expected.file; }

struct Found {
  std::size_t placed = 0, placedAssemblies = 0, placedFaces = 0;
};

void count(const Model& model, Found& found) {
  for (const Feature& feature : model.features) {
    if (feature.component == nullptr) continue;
    ++found.placed;
    found.placedAssemblies += feature.component->type == PRO_MDL_ASSEMBLY ? 1 : 0;
    found.placedFaces += feature.component->surfaces.size();
    count(*feature.component, found);
  }
}

std::filesystem::path modelFile(const char* file) { return std::filesystem::path(RENDARA_MODEL_DIR) / file; }

class ModelFile : public ::testing::TestWithParam<Expected> {};

void checkCounts(const Expected& expected, const Session& session, const Model& top) {
  Found found;
  count(top, found);
  EXPECT_EQ(found.placed, expected.placed);
  EXPECT_EQ(found.placedAssemblies, expected.placedAssemblies);
  if (expected.placed > 0) {
    EXPECT_EQ(found.placedFaces, expected.placedFaces);
  }
  std::size_t parts = 0, empty = 0, assemblies = 0, faces = 0, coloredParts = 0, quilts = 0;
  int coloredFaces = 0;
  for (const auto& model : session.models()) {
    EXPECT_EQ(model->lengthUnit, expected.unit);
    if (model->type == PRO_MDL_ASSEMBLY) {
      ++assemblies;
      continue;
    }
    ++parts;
    empty += model->surfaces.empty() ? 1 : 0;
    faces += model->surfaces.size();
    quilts += model->quilts.size();
    coloredParts += model->appearance ? 1 : 0;
    for (const Surface& surface : model->surfaces) coloredFaces += surface.appearance ? 1 : 0;
  }
  EXPECT_EQ(parts, expected.parts);
  EXPECT_EQ(empty, expected.partsWithoutFaces);
  EXPECT_EQ(assemblies, expected.assemblies);
  EXPECT_EQ(faces, expected.faces);
  EXPECT_EQ(quilts, expected.quilts);
  EXPECT_EQ(coloredParts, expected.coloredParts);
  if (expected.coloredFaces >= 0) {
    EXPECT_EQ(coloredFaces, expected.coloredFaces);
  }
}

void checkMeshes(const Expected& expected, Session& session) {
  std::size_t openEdges = 0;
  for (const auto& model : session.models()) {
    if (!model->mesher) continue;
    SCOPED_TRACE(::testing::Message() << "surfaces: " << model->surfaces.size());
    const MeshFacts facts = meshFacts(*model, defaultChordHeight(*model));
    const PartMeasure exact = measurePart(*model).value();
    EXPECT_TRUE(facts.failures.empty()) << facts.failures.front();
    EXPECT_NEAR(facts.area, exact.area, 0.005 * exact.area);
    EXPECT_EQ(facts.badNormals, 0U);
    EXPECT_EQ(facts.facetsAgainstNormals, 0U);
    if (!model->quilts.empty()) continue;
    EXPECT_NEAR(facts.volume, exact.volume, 0.01 * exact.volume);
    openEdges += facts.openEdges;
  }
  EXPECT_LE(openEdges, expected.openEdges);
}

TEST_P(ModelFile, HasTheKnownStructureAndMeshes) {
  if (rendara::testing::leftOutUnderSanitizers(GetParam().file)) GTEST_SKIP() << "left out under sanitizers";
  const std::filesystem::path file = modelFile(GetParam().file);
  if (!std::filesystem::exists(file)) GTEST_SKIP() << file << " is not there";
  Session session;
  const LoadResult result = loadStep(session, file);
  ASSERT_NE(result.model, nullptr) << result.error;
  EXPECT_EQ(session.current, result.model);
  EXPECT_EQ(session.mode, result.model->type == PRO_MDL_ASSEMBLY ? PRO_MODE_ASSEMBLY : PRO_MODE_PART);
  checkCounts(GetParam(), session, *result.model);
  checkMeshes(GetParam(), session);
}

INSTANTIATE_TEST_SUITE_P(
    Files, ModelFile,
    ::testing::Values(Expected{"as1_pe_203.stp", L"in", 63, 27, 10, 5, 9, 53, 160, 5},
                      Expected{"as1-oc-214.stp", L"mm", 27, 9, 5, 0, 4, 53, 160, 5},
                      Expected{"dm1-id-214.stp", L"in", 7, 0, 3, 0, 1, 24, 48, 3},
                      Expected{"io1-tu-203.stp", L"mm", 2, 0, 2, 1, 1, 29, 29, 1, 29},
                      Expected{"s1_pe_214/s1_pe_214.stp", L"cm", 38, 16, 16, 8, 13, 131, 173, 8, 2},
                      Expected{"13_5_hinge_l_assy.stp", L"mm", 6, 0, 5, 0, 1, 241, 248, 4},
                      Expected{"printable_case_full.stp", L"mm", 18, 3, 6, 0, 4, 1641, 1875, 0, 0},
                      Expected{"nist_ctc_02_asme1_ap242-1.stp", L"mm", 2, 0, 2, 1, 1, 487, 487, 1, 0, 0, 6},
                      Expected{"conical-surface.step", L"in", 0, 0, 1, 0, 0, 5, 5, 1, 0},
                      Expected{"cube2.step", L"mm", 0, 0, 1, 0, 0, 6, 6, 1, 6},
                      // Roots without a top assembly: one is made.
                      Expected{"many_roots_metre.stp", L"m", 18, 2, 16, 0, 3, 1795, 1795, 5, -1, 1},
                      Expected{"open_shell_inch.stp", L"in", 0, 0, 1, 0, 0, 99, 99, 0, 0, 1}),
    [](const auto& tested) {
      std::string name = tested.param.file;
      for (char& c : name) c = std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
      return name;
    });

TEST(ModelFiles, GiveOneLengthInEachUnit) {
  if (!std::filesystem::exists(modelFile("units"))) GTEST_SKIP() << "no models";
  const std::pair<const char*, double> cubes[] = {
      {"units/cube-mm.step", 1000.0}, {"units/cube-m.step", 1.0}, {"units/cube-in.step", 1000.0 / 25.4}};
  for (const auto& [file, width] : cubes) {
    Session session;
    const LoadResult result = loadStep(session, modelFile(file));
    ASSERT_NE(result.model, nullptr) << file << ": " << result.error;
    const auto box = measureBox(*result.model);
    ASSERT_TRUE(box);
    for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR((*box)[1][i] - (*box)[0][i], width, 1e-12 * width) << file;
  }
}

// The file's own numbers, such as 0.666666687201, and those of its predefined colours; names made of their bytes.
TEST(ModelFiles, KeepColoursAsWritten) {
  if (!std::filesystem::exists(modelFile("cube2.step"))) GTEST_SKIP() << "no models";
  Session session;
  const LoadResult result = loadStep(session, modelFile("cube2.step"));
  ASSERT_NE(result.model, nullptr) << result.error;
  std::map<std::wstring, Point> colors;
  for (const Surface& surface : result.model->surfaces) {
    ASSERT_TRUE(surface.appearance);
    colors[surface.appearance->name] = surface.appearance->color;
  }
  std::vector<std::wstring> names(colors.size());
  std::transform(colors.begin(), colors.end(), names.begin(), [](const auto& color) { return color.first; });
  EXPECT_EQ(names, (std::vector<std::wstring>{L"color 0000ff", L"color 00aa00", L"color aa55ff", L"color ff0000",
                                              L"color ffaaff", L"color ffff7f"}));
  EXPECT_NEAR(colors[L"color aa55ff"][0], 0.666666687201, 1e-6);
  EXPECT_EQ(colors[L"color ff0000"], (Point{1.0, 0.0, 0.0}));
}

TEST(ModelFiles, KeepNamesBeyondAscii) {
  if (!std::filesystem::exists(modelFile("as1_non_ascii_names.stp"))) GTEST_SKIP() << "no models";
  Session session;
  ASSERT_NE(loadStep(session, modelFile("as1_non_ascii_names.stp")).model, nullptr);
  EXPECT_NE(session.findModel(L"PL\u00C4TTE \u30D7\u30EC\u30FC\u30C8", PRO_MDL_PART), nullptr);
  EXPECT_NE(session.findModel(L"TIGE \u00E9\u00E4"), nullptr);
}

// The box of an assembly holds for its placements: the file states its size.
TEST(ModelFiles, PlaceComponents) {
  if (!std::filesystem::exists(modelFile("as1-oc-214.stp"))) GTEST_SKIP() << "no models";
  Session session;
  const LoadResult result = loadStep(session, modelFile("as1-oc-214.stp"));
  ASSERT_NE(result.model, nullptr) << result.error;
  const auto box = measureBox(*result.model).value();
  const Point size = {200.0, 150.0, 84.0};
  for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(box[1][i] - box[0][i], size[i], 1e-3);
}

}  // namespace

}  // namespace standin::test
