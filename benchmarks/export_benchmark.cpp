// The plug-in's own time against Open CASCADE's binary glTF writer, and how it grows with the size of an assembly.
#include <benchmark/benchmark.h>

#include <BRepBndLib.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepTools.hxx>
#include <Bnd_Box.hxx>
#include <Message_ProgressRange.hxx>
#include <RWGltf_CafWriter.hxx>
#include <TColStd_IndexedDataMapOfStringString.hxx>
#include <TDF_Label.hxx>
#include <TDF_LabelSequence.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "standin/app/plugin_host.h"
#include "standin/cad/session.h"
#include "standin/step/product_structure.h"
#include "standin/step/step_file.h"
#include "tests/support/temporary_folder.h"

namespace {

using Clock = std::chrono::steady_clock;
using rendara::testing::WorkingFolder;
using standin::Model;
using standin::Session;

double seconds(Clock::duration duration) { return std::chrono::duration<double>(duration).count(); }

// Exports the open model once; the plug-in's own seconds.
double exportSeconds(Session& session, const std::filesystem::path& package) {
  session.fileAnswers.emplace_back(package);
  const auto before = session.clock.plugin;
  session.runCommand("Rendara Export");
  return seconds(session.clock.plugin - before);
}

// Settings that make the package hold what a glTF file holds: meshes and materials.
void writeSettings() {
  rendara::testing::writeFile("rendara_plugin_settings.xml",
                              "<?xml version=\"1.0\" ?><rendara_plugin_settings><includeNURBS>false</includeNURBS>"
                              "</rendara_plugin_settings>");
}

void meshParts(const Handle(TDocStd_Document) & document) {
  TDF_LabelSequence shapes;
  const auto tool = XCAFDoc_DocumentTool::ShapeTool(document->Main());
  tool->GetShapes(shapes);
  for (const TDF_Label& label : shapes) {
    if (!XCAFDoc_ShapeTool::IsSimpleShape(label) || XCAFDoc_ShapeTool::IsReference(label)) {
      continue;
    }
    const TopoDS_Shape shape = XCAFDoc_ShapeTool::GetShape(label);
    Bnd_Box box;
    BRepBndLib::AddOptimal(shape, box, false, false);
    if (!box.IsVoid()) {
      BRepTools::Clean(shape);
      BRepMesh_IncrementalMesh(shape, std::sqrt(box.SquareExtent()) * 0.00016096, false, 0.5, false);
    }
  }
}

double gltfSeconds(const Handle(TDocStd_Document) & document, const std::filesystem::path& file) {
  RWGltf_CafWriter writer(file.c_str(), true);
  const auto start = Clock::now();
  writer.Perform(document, TColStd_IndexedDataMapOfStringString(), Message_ProgressRange());
  return seconds(Clock::now() - start);
}

// (c) Both write the same triangulations; the time is the plug-in's, tessellation left out.
void exportAgainstGltf(benchmark::State& state, const std::filesystem::path& model) {
  const WorkingFolder folder;
  writeSettings();
  Session session;
  session.guardArrays = false;
  standin::StepFile file;
  const std::string error = readStepFile(model, {}, file);
  if (!error.empty()) {
    state.SkipWithError(error.c_str());
    return;
  }
  const standin::LoadResult loaded = buildModels(session, file, L"model");
  session.current = loaded.model;
  session.mode = loaded.model->type == PRO_MDL_ASSEMBLY ? PRO_MODE_ASSEMBLY : PRO_MODE_PART;
  standin::PluginHost plugin(RENDARA_LIB_DIR "/librendara_creo.so");
  plugin.load();
  exportSeconds(session, folder.path() / "warm.rpk");
  meshParts(file.document);

  double own = 0.0;
  double gltf = 0.0;
  for (auto _ : state) {
    const double once = exportSeconds(session, folder.path() / "model.rpk");
    state.SetIterationTime(once);
    own += once;
    gltf += gltfSeconds(file.document, folder.path() / "model.glb");
  }
  state.counters["share_of_gltf"] = own / gltf;
  state.counters["gltf_ms"] = gltf / static_cast<double>(state.iterations()) * 1e3;
  state.counters["rpk_bytes"] = static_cast<double>(std::filesystem::file_size(folder.path() / "model.rpk"));
  state.counters["glb_bytes"] = static_cast<double>(std::filesystem::file_size(folder.path() / "model.glb"));
  plugin.unload(session);
}

// A grid of 8 x 8 quads for every surface.
class GridMesher : public standin::PartMesher {
 public:
  GridMesher() : mesh_(std::make_shared<standin::SurfaceMesh>()) {
    for (int v = 0; v < 9; ++v) {
      for (int u = 0; u < 9; ++u) {
        mesh_->vertices.push_back({u * 1.0, v * 1.0, 0.0});
        mesh_->normals.push_back({0.0, 0.0, 1.0});
        mesh_->params.push_back({u / 8.0, v / 8.0});
        if (u < 8 && v < 8) {
          const int corner = v * 9 + u;
          mesh_->facets.push_back({corner, corner + 1, corner + 10});
          mesh_->facets.push_back({corner, corner + 10, corner + 9});
        }
      }
    }
  }
  std::shared_ptr<const standin::SurfaceMesh> mesh(std::size_t, double, std::string&) override { return mesh_; }

 private:
  std::shared_ptr<standin::SurfaceMesh> mesh_;
};

// An assembly three levels deep: groups of groups of placed parts, 50 distinct ones.
Model& generateAssembly(Session& session, int placements) {
  const auto mesher = std::make_shared<GridMesher>();
  std::vector<Model*> parts;
  for (int part = 0; part < 50; ++part) {
    Model& model = session.addModel(PRO_MDL_PART, L"part_" + std::to_wstring(part));
    const int feature = model.addFeature(917).id;
    for (int surface = 0; surface < 6; ++surface) {
      model.addSurface(feature);
    }
    model.mesher = mesher;
    model.outline = {{{0, 0, 0}, {8, 8, 8}}};
    parts.push_back(&model);
  }
  constexpr int kPerUnit = 50;
  constexpr int kUnitsPerGroup = 20;
  Model& top = session.addModel(PRO_MDL_ASSEMBLY, L"generated");
  Model* group = nullptr;
  Model* unit = nullptr;
  for (int placed = 0; placed < placements; ++placed) {
    const auto place = [&](double step) {
      standin::Matrix matrix = standin::kIdentity;
      matrix[12] = step;
      return matrix;
    };
    if (placed % (kPerUnit * kUnitsPerGroup) == 0) {
      group = &session.addModel(PRO_MDL_ASSEMBLY, L"group_" + std::to_wstring(placed));
      top.addComponent(*group, place(placed));
    }
    if (placed % kPerUnit == 0) {
      unit = &session.addModel(PRO_MDL_ASSEMBLY, L"unit_" + std::to_wstring(placed));
      group->addComponent(*unit, place(placed));
    }
    unit->addComponent(*parts[static_cast<std::size_t>(placed % 50)], place(placed));
  }
  return top;
}

// The process's peak of resident memory since it was last forgotten, in bytes.
void forgetPeakMemory() { std::ofstream("/proc/self/clear_refs") << "5"; }
double memory(const std::string& field) {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    if (word == field) {
      double kilobytes = 0.0;
      status >> kilobytes;
      return kilobytes * 1024;
    }
  }
  return 0.0;
}

// (d) The time is the plug-in's; the memory is the whole process's growth while it exports.
void generatedAssembly(benchmark::State& state) {
  const WorkingFolder folder;
  writeSettings();
  Session session;
  session.guardArrays = false;
  const int placements = static_cast<int>(state.range(0));
  session.current = &generateAssembly(session, placements);
  session.mode = PRO_MODE_ASSEMBLY;
  standin::PluginHost plugin(RENDARA_LIB_DIR "/librendara_creo.so");
  plugin.load();
  exportSeconds(session, folder.path() / "warm.rpk");
  double total = 0.0;
  double growth = 0.0;
  for (auto _ : state) {
    forgetPeakMemory();
    const double before = memory("VmRSS:");
    const double once = exportSeconds(session, folder.path() / "model.rpk");
    growth = std::max(growth, memory("VmHWM:") - before);
    state.SetIterationTime(once);
    total += once;
  }
  const double iterations = static_cast<double>(state.iterations());
  state.counters["us_per_placement"] = total / iterations / placements * 1e6;
  state.counters["bytes_per_placement"] = growth / placements;
  state.counters["peak_growth_kB"] = growth / 1024;
  plugin.unload(session);
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  std::vector<std::filesystem::path> models = {RENDARA_SOURCE_DIR "/samples/twin_compressor.step"};
  for (const char* name : {"printable_case_full.stp", "nist_ctc_02_asme1_ap242-1.stp", "as1-oc-214.stp"}) {
    const auto model = std::filesystem::path(RENDARA_MODEL_DIR) / name;
    if (std::filesystem::exists(model)) {
      models.push_back(model);
    }
  }
  for (const auto& model : models) {
    benchmark::RegisterBenchmark(("export_against_gltf/" + model.stem().string()).c_str(), exportAgainstGltf, model)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->Iterations(20);
  }
  benchmark::RegisterBenchmark("generated_assembly", generatedAssembly)
      ->Arg(1000)
      ->Arg(10000)
      ->Arg(100000)
      ->UseManualTime()
      ->Unit(benchmark::kMillisecond)
      ->MinTime(2.0);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
