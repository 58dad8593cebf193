// Real assemblies through the real plug-in: what stands in the package against Open CASCADE's exact measures.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "scene/narrow_text.h"
#include "standin/app/plugin_host.h"
#include "standin/cad/session.h"
#include "standin/step/exact_measure.h"
#include "standin/step/exact_part.h"
#include "standin/step/step_loader.h"
#include "tests/support/large_models.h"
#include "tests/support/temporary_folder.h"
#include "tools/rpk/check.h"
#include "tools/rpk/exact/exact_check.h"
#include "tools/rpk/exact/trimmed_area.h"
#include "tools/rpk/package_counts.h"
#include "tools/rpk/scene_summary.h"
#include "tools/rpk/vector_math.h"

namespace {

using rendara::testing::readFile;
using rendara::testing::WorkingFolder;
using rendara::testing::writeFile;
using rpk::Vector;
using standin::Model;

constexpr double kDefaultChord = 0.000162;  // of the part's diagonal, at the default quality

struct ModelCase {
  const char* file;
  int parts;  // distinct, those without faces included
  int placedParts;
  int faces;  // of the distinct parts
  int placedFaces;
  double meterScale;  // units per metre
  // Vertices of meshes that lie more than three chord heights off their exact surface: edges that are off it in the
  // file.
  int strayVertices = 0;
};

void PrintTo(const ModelCase& model, std::ostream* out) { *out << model.file; }

const ModelCase kModels[] = {
    {RENDARA_SOURCE_DIR "/samples/twin_compressor.step", 21, 45, 543, 1019, 1000},
    {"as1_pe_203.stp", 10, 36, 53, 160, 39.3701},
    {"as1-oc-214.stp", 5, 18, 53, 160, 1000},
    {"dm1-id-214.stp", 3, 7, 24, 48, 39.3701},
    {"io1-tu-203.stp", 2, 2, 29, 29, 1000},
    {"s1_pe_214/s1_pe_214.stp", 16, 22, 131, 173, 100},
    {"printable_case_full.stp", 6, 15, 1641, 1875, 1000},
    {"13_5_hinge_l_assy.stp", 5, 6, 241, 248, 1000, 19},
    {"nist_ctc_02_asme1_ap242-1.stp", 2, 2, 487, 487, 1000},
    {"linkrods.step", 1, 1, 37, 37, 1000},
    {"conical-surface.step", 1, 1, 5, 5, 39.3701},
    {"cube2.step", 1, 1, 6, 6, 1000},
    {"units/cube-m.step", 1, 1, 6, 6, 1},
    {"units/cube-in.step", 1, 1, 6, 6, 39.3701},
    {"units/cube-mm.step", 1, 1, 6, 6, 1000},
    {"many_roots_metre.stp", 16, 16, 1795, 1795, 1},
    {"open_shell_inch.stp", 1, 1, 99, 99, 39.3701},
    {"as1_non_ascii_names.stp", 10, 36, 53, 160, 39.3701},
};

struct Box {
  Vector low{1e300, 1e300, 1e300};
  Vector high{-1e300, -1e300, -1e300};

  void add(const Vector& point) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      low[axis] = std::min(low[axis], point[axis]);
      high[axis] = std::max(high[axis], point[axis]);
    }
  }
};

Vector minus(const Vector& a, const Vector& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
using rpk::cross;
using rpk::dot;

Vector tripleAt(const rpk::ArrayView& array, std::size_t index) {
  return {array.number(index * 3), array.number(index * 3 + 1), array.number(index * 3 + 2)};
}

// What the meshes of one part measure.
struct MeshMeasure {
  double area = 0.0;
  double volume = 0.0;
  double againstNormals = 0.0;  // the largest area of a facet whose corners run against its normals
  std::size_t triangles = 0;

  void add(const rpk::MeshView& mesh) {
    for (std::size_t triangle = 0; triangle < mesh.triangleCount(); ++triangle) {
      std::array<Vector, 3> corners{};
      Vector normal{};
      for (std::size_t corner = 0; corner < 3; ++corner) {
        const auto index = static_cast<std::size_t>(mesh.triangles.number(triangle * 3 + corner));
        ASSERT_LT(index, mesh.vertexCount());
        corners[corner] = tripleAt(mesh.vertices, index);
        const Vector vertexNormal = tripleAt(mesh.normals, index);
        EXPECT_NEAR(dot(vertexNormal, vertexNormal), 1.0, 1e-4);
        normal = {normal[0] + vertexNormal[0], normal[1] + vertexNormal[1], normal[2] + vertexNormal[2]};
      }
      const Vector facet = cross(minus(corners[1], corners[0]), minus(corners[2], corners[0]));
      const double facetArea = std::sqrt(dot(facet, facet)) / 2;
      area += facetArea;
      volume += dot(corners[0], cross(corners[1], corners[2])) / 6;
      if (dot(facet, normal) <= 0) {
        againstNormals = std::max(againstNormals, facetArea);
      }
      ++triangles;
    }
  }
};

// Those of a part's group and of its groups of one material.
void forEachObject(const rpk::Group& group, const std::string& type, const auto& action) {
  for (const rpk::Object& object : group.objects) {
    if (object.geometryType == type) {
      action(object);
    }
  }
  for (const auto& child : group.children) {
    if (child->materialGroup()) {
      forEachObject(*child, type, action);
    }
  }
}

void forEachMesh(const rpk::Group& group, const auto& action) {
  forEachObject(group, "triangles", [&](const rpk::Object& object) { action(object.mesh); });
}

// The areas of a part's exact surfaces, of their control points and trims alone, smallest first.
std::vector<double> exactAreas(const rpk::Group& group) {
  std::vector<double> areas;
  forEachObject(group, "nurbs", [&](const rpk::Object& object) {
    std::string fault;
    const auto trimmed = rpk::readTrimmedSurface(object, &fault);
    EXPECT_TRUE(trimmed.has_value()) << group.name << ": " << fault;
    areas.push_back(trimmed ? rpk::trimmedArea(*trimmed) : 0.0);
  });
  std::sort(areas.begin(), areas.end());
  return areas;
}

std::string sceneName(const Model& model) { return rendara::narrowText(model.name).text + ".prt"; }

struct Placed {
  std::size_t parts = 0;
  std::size_t partsWithFaces = 0;
};

// The placed parts of a model; one that was opened on its own counts as placed once.
Placed countPlaced(const Model& model) {
  if (model.type == PRO_MDL_PART) {
    return {1, model.surfaces.empty() ? 0U : 1U};
  }
  Placed placed;
  for (const standin::Feature& feature : model.features) {
    if (feature.component != nullptr) {
      const Placed below = countPlaced(*feature.component);
      placed.parts += below.parts;
      placed.partsWithFaces += below.partsWithFaces;
    }
  }
  return placed;
}

class ModelExport : public ::testing::TestWithParam<ModelCase> {
 protected:
  ModelExport() { session.messageFolder = RENDARA_SOURCE_DIR "/resources/text"; }

  void SetUp() override {
    if (rendara::testing::leftOutUnderSanitizers(GetParam().file)) {
      GTEST_SKIP() << "left out under sanitizers";
    }
    path = std::filesystem::path(RENDARA_MODEL_DIR) / GetParam().file;
    if (!std::filesystem::exists(path)) {
      GTEST_SKIP() << "there is no " << path;
    }
    const standin::LoadResult loaded = loadStep(session, path);
    ASSERT_NE(loaded.model, nullptr) << loaded.error;
    top = loaded.model;
    for (const auto& model : session.models()) {
      if (model->type == PRO_MDL_PART) {
        parts.push_back(model.get());
        byName[sceneName(*model)] = model.get();
      }
    }
    bytes = exportPackage();
    scene = rpk::readScene(bytes);
  }

  void TearDown() override {
    plugin.unload(session);
    session.finish();
    EXPECT_TRUE(session.misuse().empty()) << session.misuse().front();
  }

  std::string exportPackage() {
    const std::filesystem::path package = folder.path() / "model.rpk";
    session.fileAnswers.emplace_back(package);
    plugin.load();
    EXPECT_EQ(session.runCommand("Rendara Export"), 0);
    return readFile(package);
  }

  // No fault, exact surfaces that are closed and whole, and meshes that lie on them.
  void expectSound() const {
    const rpk::CheckReport report = rpk::checkPackage(bytes);
    EXPECT_EQ(report.count(rpk::Severity::kFault), 0U) << report.findings.front().what;
    EXPECT_EQ(report.count(rpk::Severity::kWarning), 0U) << report.findings.front().what;
    const rpk::ExactReport exact = rpk::checkExact(scene, rpk::exactTolerance(0.2));
    EXPECT_EQ(exact.surfaces, static_cast<std::size_t>(GetParam().faces));
    EXPECT_EQ(exact.sound, exact.surfaces);
    EXPECT_LE(exact.strayVertices, static_cast<std::size_t>(GetParam().strayVertices));
    for (const rpk::ExactFinding& finding : exact.findings) {
      RecordProperty(finding.path, finding.what);
    }
  }

  // The groups that stand for placed parts. A part that was opened on its own is the top-level group's only child.
  std::vector<const rpk::Group*> occurrences() const {
    std::vector<const rpk::Group*> found;
    for (const rpk::Group* group : scene.allGroups()) {
      if ((group->holdsGeometry() && !group->materialGroup()) || group->reference() != nullptr) {
        found.push_back(group);
      }
    }
    return found;
  }

  const Model* modelOf(const rpk::Group& group) const {
    const auto found = byName.find(group.name);
    return found != byName.end() ? found->second : top;
  }

  double largestCoordinate(const Box& box) const {
    double largest = 0.0;
    for (std::size_t axis = 0; axis < 3; ++axis) {
      largest = std::max({largest, std::abs(box.low[axis]), std::abs(box.high[axis])});
    }
    return largest;
  }

  standin::Session session;
  standin::PluginHost plugin{RENDARA_LIB_DIR "/librendara_creo.so"};
  WorkingFolder folder;
  std::filesystem::path path;
  Model* top = nullptr;
  std::vector<const Model*> parts;
  std::map<std::string, const Model*> byName;
  std::string bytes;
  rpk::Scene scene;
};

TEST_P(ModelExport, PackageMeasuresWhatTheModelMeasures) {
  expectSound();
  const ModelCase& expected = GetParam();
  EXPECT_NEAR(std::stod(std::string(scene.option("meter_scale"))), expected.meterScale, 1e-3);
  EXPECT_EQ(parts.size(), static_cast<std::size_t>(expected.parts));
  EXPECT_EQ(countPlaced(*top).parts, static_cast<std::size_t>(expected.placedParts));
  EXPECT_EQ(countPlaced(*top).partsWithFaces, occurrences().size());
  EXPECT_TRUE(session.counts.failedSurfaces.empty()) << session.counts.failedSurfaces.begin()->second;

  // Every part with faces is defined, or placed by a reference to where it was defined.
  std::set<const Model*> defined;
  std::size_t placedFaces = 0;
  std::size_t faces = 0;
  Box box;
  double chord = 0.0;
  std::size_t levels = 0;
  for (const rpk::Group* group : occurrences()) {
    const Model* model = modelOf(*group);
    ASSERT_NE(model, nullptr) << group->name;
    placedFaces += model->surfaces.size();
    const rpk::Group* source = group;
    if (const rpk::Object* reference = group->reference()) {
      ASSERT_NE(reference->sourceGroup, nullptr) << group->name;
      source = reference->sourceGroup;
    }
    std::size_t depth = 0;
    for (const rpk::Group* around = group; around->parent != nullptr; around = around->parent) {
      ++depth;
    }
    levels = std::max(levels, depth);
    const rpk::Matrix placement = group->placementInScene();
    Box own;
    forEachMesh(*source, [&](const rpk::MeshView& mesh) {
      for (std::size_t vertex = 0; vertex < mesh.vertexCount(); ++vertex) {
        const Vector point = tripleAt(mesh.vertices, vertex);
        own.add(point);
        box.add(rpk::transformPoint(point, placement));
      }
    });
    const Vector diagonal = minus(own.high, own.low);
    chord = std::max(chord, kDefaultChord * std::sqrt(dot(diagonal, diagonal)));
    if (!defined.insert(model).second || source != group) {
      continue;
    }
    faces += model->surfaces.size();

    const auto exact = measurePart(*model);
    ASSERT_TRUE(exact.has_value()) << group->name;
    MeshMeasure measure;
    forEachMesh(*group, [&](const rpk::MeshView& mesh) { measure.add(mesh); });
    EXPECT_NEAR(measure.area / exact->area, 1.0, 0.005) << group->name;
    if (exact->solids > 0 && model->quilts.empty()) {
      EXPECT_GT(measure.volume, 0.0) << group->name;
      EXPECT_NEAR(measure.volume / exact->volume, 1.0, 0.005) << group->name;
    }
    EXPECT_LE(measure.againstNormals, exact->area * 1e-6) << group->name;

    std::vector<double> expectedAreas = exact->surfaceAreas;
    std::sort(expectedAreas.begin(), expectedAreas.end());
    const std::vector<double> areas = exactAreas(*group);
    ASSERT_EQ(areas.size(), expectedAreas.size()) << group->name;
    for (std::size_t surface = 0; surface < areas.size(); ++surface) {
      // Slivers with gaps have no area that is certain to half a per cent.
      EXPECT_NEAR(areas[surface], expectedAreas[surface], 0.005 * expectedAreas[surface] + 1e-9 * exact->area)
          << group->name;
    }
  }
  EXPECT_EQ(faces, static_cast<std::size_t>(expected.faces));
  EXPECT_EQ(placedFaces, static_cast<std::size_t>(expected.placedFaces));

  const auto exactBox = measureBox(*top);
  ASSERT_TRUE(exactBox.has_value());
  const double tolerance = chord + 5e-6 * largestCoordinate(box) * static_cast<double>(levels);
  for (std::size_t axis = 0; axis < 3; ++axis) {
    EXPECT_NEAR(box.low[axis], (*exactBox)[0][axis], tolerance) << "axis " << axis;
    EXPECT_NEAR(box.high[axis], (*exactBox)[1][axis], tolerance) << "axis " << axis;
  }
  EXPECT_TRUE(exportPackage() == bytes) << "a second export of the session differs";
}

// Records whose ids no surface has are found by their contours: none is lost, and with the exact surfaces switched off
// they make no difference.
class ForeignRecords : public ModelExport {};

TEST_P(ForeignRecords, AreFoundByTheirContours) {
  for (const auto& model : session.models()) {
    if (auto* converter = dynamic_cast<standin::StepConverter*>(model->converter.get())) {
      converter->setForeignIds(3);
    }
  }
  const std::string foreign = exportPackage();
  EXPECT_EQ(rpk::checkPackage(foreign).count(rpk::Severity::kFault), 0U);
  EXPECT_EQ(rpk::countPackage(foreign).nurbsObjects, rpk::countPackage(bytes).nurbsObjects);
  plugin.unload(session);
  writeFile("rendara_plugin_settings.xml", "<settings><includeNURBS>false</includeNURBS></settings>");
  const std::string plain = exportPackage();
  EXPECT_EQ(rpk::countPackage(plain).nurbsObjects, 0U);
  EXPECT_EQ(rpk::countPackage(plain).triangles, rpk::countPackage(bytes).triangles);
}

std::string caseName(const ::testing::TestParamInfo<ModelCase>& model) {
  std::string name = std::filesystem::path(model.param.file).stem().string();
  std::replace_if(
      name.begin(), name.end(), [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; }, '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Models, ModelExport, ::testing::ValuesIn(kModels), caseName);
INSTANTIATE_TEST_SUITE_P(Models, ForeignRecords,
                         ::testing::Values(kModels[1], kModels[4], kModels[5], kModels[7], kModels[16]), caseName);

}  // namespace
