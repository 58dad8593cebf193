// Real models on two ways to glTF: through the plug-in and a package, and by Open CASCADE's own writer from the same
// file.
#include <gtest/gtest.h>

#include <BRepGProp.hxx>
#include <BRep_Tool.hxx>
#include <GProp_GProps.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Message_ProgressRange.hxx>
#include <RWGltf_CafWriter.hxx>
#include <TColStd_IndexedDataMapOfStringString.hxx>
#include <TDF_LabelSequence.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>
#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <sstream>
#include <string>

#include <fmt/format.h>

#include "standin/app/plugin_host.h"
#include "standin/cad/session.h"
#include "standin/step/part_shape.h"
#include "standin/step/step_file.h"
#include "standin/step/step_loader.h"
#include "tests/gltf/gltf_probe.h"
#include "tests/support/large_models.h"
#include "tests/support/temporary_folder.h"
#include "tools/rpk/drawing.h"
#include "tools/rpk/gltf/gltf_writer.h"

namespace {

using namespace gltf_test;
using rendara::testing::readFile;
using rendara::testing::WorkingFolder;
using rendara::testing::writeFile;

constexpr double kChordFactor = 0.000162;  // of a part's diagonal, at the default quality
constexpr double kMesherShare = 0.5;       // what the session asks of Open CASCADE to stay within a chord height
constexpr double kMetresPerMillimetre = 0.001;

const char* const kSample = RENDARA_SOURCE_DIR "/samples/twin_compressor.step";

const char* const kModels[] = {
    kSample,
    "as1_pe_203.stp",
    "as1-oc-214.stp",
    "dm1-id-214.stp",
    "io1-tu-203.stp",
    "s1_pe_214/s1_pe_214.stp",
    "printable_case_full.stp",
    "13_5_hinge_l_assy.stp",
    "nist_ctc_02_asme1_ap242-1.stp",
    "linkrods.step",
    "conical-surface.step",
    "cube2.step",
    "units/cube-m.step",
    "units/cube-in.step",
    "units/cube-mm.step",
    "many_roots_metre.stp",
    "open_shell_inch.stp",
    "as1_non_ascii_names.stp",
};

struct Reference {
  Measure measure;
  double chord = 0;        // the largest of all parts, in metres
  double missingArea = 0;  // of faces that got no triangulation there, in square metres
};

class ModelGltf : public ::testing::TestWithParam<const char*> {
 protected:
  ModelGltf() { session.messageFolder = RENDARA_SOURCE_DIR "/resources/text"; }

  void TearDown() override {
    plugin.unload(session);
    session.finish();
  }

  std::string exportPackage(bool nurbs) {
    writeFile("rendara_plugin_settings.xml",
              fmt::format("<settings><upAxis>2</upAxis><includeNURBS>{}</includeNURBS></settings>", nurbs));
    const std::filesystem::path package = folder.path() / "model.rpk";
    session.fileAnswers.emplace_back(package);
    plugin.load();
    EXPECT_EQ(session.runCommand("Rendara Export"), 0);
    plugin.unload(session);
    return readFile(package);
  }

  static std::string toGltf(const std::string& package, const std::filesystem::path& model) {
    const rpk::Scene scene = rpk::readScene(package);
    EXPECT_EQ(scene.faultCount, 0U);
    std::stringstream scratch;
    std::ostringstream out;
    const rpk::GltfSummary summary = rpk::writeGltf(scene, {model.parent_path()}, scratch, out);
    EXPECT_TRUE(summary.warnings.empty()) << summary.warnings.front();
    return out.str();
  }

  // The levels of groups, each of which rounds placements to six digits.
  static std::size_t levels(const rpk::Scene& scene) {
    std::size_t most = 0;
    for (const rpk::Group* group : scene.allGroups()) {
      std::size_t depth = 0;
      for (const rpk::Group* around = group; around; around = around->parent) ++depth;
      most = std::max(most, depth);
    }
    return most;
  }

  Reference byOpenCascade(const std::filesystem::path& path) const {
    Reference reference;
    standin::StepFile file;
    EXPECT_EQ(standin::readStepFile(path, {}, file), "");
    const Handle(XCAFDoc_ShapeTool) shapes = XCAFDoc_DocumentTool::ShapeTool(file.document->Main());
    TDF_LabelSequence labels;
    shapes->GetShapes(labels);
    for (const TDF_Label& label : labels) {
      if (!XCAFDoc_ShapeTool::IsSimpleShape(label)) continue;
      const TopoDS_Shape shape = XCAFDoc_ShapeTool::GetShape(label);
      const auto outline = standin::outlineOf(standin::collectFaces(shape, 1.0));
      if (!outline) continue;
      const auto& [low, high] = *outline;
      const double chord = kChordFactor * std::hypot(high[0] - low[0], high[1] - low[1], high[2] - low[2]);
      standin::triangulate(shape, kMesherShare * chord);
      reference.chord = std::max(reference.chord, chord * kMetresPerMillimetre);
    }
    shapes->GetFreeShapes(labels);
    for (const TDF_Label& label : labels) {
      for (TopExp_Explorer face(XCAFDoc_ShapeTool::GetShape(label), TopAbs_FACE); face.More(); face.Next()) {
        TopLoc_Location ignored;
        if (!BRep_Tool::Triangulation(TopoDS::Face(face.Current()), ignored).IsNull()) continue;
        GProp_GProps properties;
        BRepGProp::SurfaceProperties(face.Current(), properties);
        reference.missingArea += properties.Mass() * kMetresPerMillimetre * kMetresPerMillimetre;
      }
    }
    const std::string glb = (folder.path() / "reference.glb").string();
    Message::DefaultMessenger()->ChangePrinters().Clear();
    RWGltf_CafWriter writer(glb.c_str(), true);
    writer.ChangeCoordinateSystemConverter().SetInputLengthUnit(kMetresPerMillimetre);
    writer.ChangeCoordinateSystemConverter().SetInputCoordinateSystem(RWMesh_CoordinateSystem_Zup);
    EXPECT_TRUE(writer.Perform(file.document, TColStd_IndexedDataMapOfStringString(), Message_ProgressRange()));
    reference.measure = measure(load(readFile(glb)));
    return reference;
  }

  standin::Session session;
  standin::PluginHost plugin{RENDARA_LIB_DIR "/librendara_creo.so"};
  WorkingFolder folder;
};

TEST_P(ModelGltf, MeasuresWhatOpenCascadesFileMeasures) {
  if (rendara::testing::leftOutUnderSanitizers(GetParam())) GTEST_SKIP() << "left out under sanitizers";
  const std::filesystem::path path = std::filesystem::path(RENDARA_MODEL_DIR) / GetParam();
  if (!std::filesystem::exists(path)) GTEST_SKIP() << "there is no " << path;
  const standin::LoadResult loaded = standin::loadStep(session, path);
  ASSERT_NE(loaded.model, nullptr) << loaded.error;
  const std::string package = exportPackage(true);
  const std::string glb = toGltf(package, path);
  keepForValidator("model_" + path.stem().string(), glb);
  EXPECT_TRUE(glb == toGltf(exportPackage(false), path)) << "exact surfaces make a difference";

  const rpk::Scene scene = rpk::readScene(package);
  const Measure own = measure(load(glb));
  const Reference reference = byOpenCascade(path);
  // One node with a mesh for every placed part with faces. Open CASCADE's writer makes one for every placed shape that
  // is no assembly, whatever colours its faces have; parts of curves only get nodes without a mesh there and none here.
  EXPECT_EQ(own.placedMeshes, reference.measure.placedMeshes);
  EXPECT_EQ(own.placedMeshes, rpk::placedGroups(scene).size());
  EXPECT_NEAR(own.area / (reference.measure.area + reference.missingArea), 1, 0.005);

  double largest = 0;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    largest = std::max({largest, std::abs(own.box.low[axis]), std::abs(own.box.high[axis])});
  }
  const double tolerance = reference.chord + 5e-6 * largest * static_cast<double>(levels(scene));
  for (std::size_t axis = 0; axis < 3; ++axis) {
    EXPECT_NEAR(own.box.low[axis], reference.measure.box.low[axis], tolerance) << "axis " << axis;
    EXPECT_NEAR(own.box.high[axis], reference.measure.box.high[axis], tolerance) << "axis " << axis;
  }
}

INSTANTIATE_TEST_SUITE_P(Models, ModelGltf, ::testing::ValuesIn(kModels), [](const auto& model) {
  std::string name = std::filesystem::path(model.param).stem().string();
  std::replace_if(
      name.begin(), name.end(), [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; }, '_');
  return name;
});

}  // namespace
