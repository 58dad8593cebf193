// The plug-in's own time against Open CASCADE's binary glTF writer, what exact surfaces cost, and how the time grows
// with the size of an assembly.
#include <benchmark/benchmark.h>

#include <BRep_Tool.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Message_ProgressRange.hxx>
#include <RWGltf_CafWriter.hxx>
#include <STEPCAFControl_Writer.hxx>
#include <TColStd_IndexedDataMapOfStringString.hxx>
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/generated_assembly.h"
#include "standin/app/plugin_host.h"
#include "standin/cad/session.h"
#include "standin/step/product_structure.h"
#include "standin/step/step_file.h"
#include "standin/step/step_mesher.h"
#include "tests/support/temporary_folder.h"

namespace {

using Clock = std::chrono::steady_clock;
using benchmarks::generateAssembly;
using benchmarks::generateParts;
using benchmarks::kDistinctParts;
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

// Without exact surfaces a package holds what a glTF file holds: meshes and materials.
void writeSettings(bool exactSurfaces = false) {
  rendara::testing::writeFile("rendara_plugin_settings.xml",
                              std::string("<?xml version=\"1.0\" ?><rendara_plugin_settings><includeNURBS>") +
                                  (exactSurfaces ? "true" : "false") + "</includeNURBS></rendara_plugin_settings>");
}

// Hands out what another mesher makes, and notes the chord height that the plug-in asks for.
class NotingMesher : public standin::PartMesher {
 public:
  explicit NotingMesher(std::shared_ptr<standin::StepMesher> mesher) : mesher_(std::move(mesher)) {}
  std::shared_ptr<const standin::SurfaceMesh> mesh(std::size_t surface, double chordHeight,
                                                   std::string& failure) override {
    chordHeight_ = chordHeight;
    return mesher_->mesh(surface, chordHeight, failure);
  }

  // Leaves the same triangulation in the document's shapes, and gives its number of triangles.
  std::size_t meshDocument() const {
    const standin::PartShape& part = mesher_->shape();
    const TopoDS_Shape whole = standin::compoundOf(part.faces);
    standin::triangulate(whole, mesher_->deflection(chordHeight_));
    std::size_t count = 0;
    for (const TopoDS_Face& face : part.faces) {
      TopLoc_Location location;
      const auto mesh = BRep_Tool::Triangulation(face, location);
      count += mesh.IsNull() ? 0 : static_cast<std::size_t>(mesh->NbTriangles());
    }
    return count;
  }

 private:
  std::shared_ptr<standin::StepMesher> mesher_;
  double chordHeight_ = 0.0;
};

using NotingMeshers = std::vector<std::shared_ptr<NotingMesher>>;

NotingMeshers noteChordHeights(Session& session) {
  NotingMeshers meshers;
  for (const auto& model : session.models()) {
    if (auto mesher = std::dynamic_pointer_cast<standin::StepMesher>(model->mesher)) {
      meshers.push_back(std::make_shared<NotingMesher>(std::move(mesher)));
      model->mesher = meshers.back();
    }
  }
  return meshers;
}

std::size_t meshDocument(const NotingMeshers& meshers) {
  std::size_t triangles = 0;
  for (const auto& mesher : meshers) {
    triangles += mesher->meshDocument();
  }
  return triangles;
}

double gltfSeconds(const Handle(TDocStd_Document) & document, const std::filesystem::path& file) {
  RWGltf_CafWriter writer(file.c_str(), true);
  const auto start = Clock::now();
  writer.Perform(document, TColStd_IndexedDataMapOfStringString(), Message_ProgressRange());
  return seconds(Clock::now() - start);
}

// Opens a model for measurements; false, with the benchmark ended, when it cannot be read.
bool open(benchmark::State& state, const std::filesystem::path& model, Session& session, standin::StepFile& file) {
  session.guardArrays = false;
  const std::string error = readStepFile(model, {}, file);
  if (!error.empty()) {
    state.SkipWithError(error.c_str());
    return false;
  }
  const standin::LoadResult loaded = buildModels(session, file, L"model");
  session.current = loaded.model;
  session.mode = loaded.model->type == PRO_MDL_ASSEMBLY ? PRO_MODE_ASSEMBLY : PRO_MODE_PART;
  return true;
}

// (c) Both write the same triangulations; the time is the plug-in's, tessellation left out.
void exportAgainstGltf(benchmark::State& state, const std::filesystem::path& model) {
  const WorkingFolder folder;
  writeSettings();
  Session session;
  standin::StepFile file;
  if (!open(state, model, session, file)) {
    return;
  }
  const NotingMeshers meshers = noteChordHeights(session);
  standin::PluginHost plugin(RENDARA_LIB_DIR "/librendara_creo.so");
  plugin.load();
  exportSeconds(session, folder.path() / "warm.rpk");
  if (meshDocument(meshers) != session.counts.trianglesHandedOut) {
    state.SkipWithError("the two writers would not get the same triangles");
    return;
  }
  Message::DefaultMessenger()->ChangePrinters().Clear();

  double own = 0.0;
  double gltf = 0.0;
  for (auto _ : state) {
    const double once = exportSeconds(session, folder.path() / "model.rpk");
    state.SetIterationTime(once);
    own += once;
    meshDocument(meshers);  // the session has cleaned the shapes that it shares with the document
    gltf += gltfSeconds(file.document, folder.path() / "model.glb");
  }
  state.counters["share_of_gltf"] = own / gltf;
  state.counters["gltf_ms"] = gltf / static_cast<double>(state.iterations()) * 1e3;
  state.counters["rpk_bytes"] = static_cast<double>(std::filesystem::file_size(folder.path() / "model.rpk"));
  state.counters["glb_bytes"] = static_cast<double>(std::filesystem::file_size(folder.path() / "model.glb"));
  plugin.unload(session);
}

double stepSeconds(const Handle(TDocStd_Document) & document, const std::filesystem::path& file) {
  STEPCAFControl_Writer writer;
  const auto start = Clock::now();
  writer.Transfer(document);
  writer.Write(file.c_str());
  return seconds(Clock::now() - start);
}

struct ExportCost {
  double plugin = 0.0;
  double whole = 0.0;  // with the session's work: tessellation and conversion
  double bytes = 0.0;
};

// Exports by a plug-in that is started anew, since it reads its settings then.
ExportCost exportWith(Session& session, bool exactSurfaces, const std::filesystem::path& package) {
  writeSettings(exactSurfaces);
  standin::PluginHost plugin(RENDARA_LIB_DIR "/librendara_creo.so");
  plugin.load();
  for (const auto& model : session.models()) {
    if (model->mesher) model->mesher->forget();
    if (model->converter) model->converter->forget();
  }
  const auto total = [&] { return session.clock.plugin + session.clock.session + session.clock.tessellation; };
  const auto before = total();
  ExportCost cost;
  cost.plugin = exportSeconds(session, package);
  cost.whole = seconds(total() - before);
  cost.bytes = static_cast<double>(std::filesystem::file_size(package));
  plugin.unload(session);
  return cost;
}

// What exact surfaces cost, and the plug-in's own part of it against Open CASCADE writing the same shapes as STEP.
void exactSurfaceCost(benchmark::State& state, const std::filesystem::path& model) {
  const WorkingFolder folder;
  Session session;
  standin::StepFile file;
  if (!open(state, model, session, file)) {
    return;
  }
  exportWith(session, true, folder.path() / "warm.rpk");
  Message::DefaultMessenger()->ChangePrinters().Clear();
  double own = 0.0;
  double step = 0.0;
  ExportCost with;
  ExportCost without;
  for (auto _ : state) {
    without = exportWith(session, false, folder.path() / "without.rpk");
    with = exportWith(session, true, folder.path() / "with.rpk");
    state.SetIterationTime(with.whole);
    own += with.plugin - without.plugin;
    step += stepSeconds(file.document, folder.path() / "model.step");
  }
  state.counters["share_of_step"] = own / step;
  state.counters["times_as_long"] = with.whole / without.whole;
  state.counters["times_as_large"] = with.bytes / without.bytes;
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

// (d) The time is the plug-in's. What every assembly pays once, the definitions of its 50 parts, is measured by an
// assembly of just these and left out of the time of a placement. The memory is the whole process's growth.
void generatedAssembly(benchmark::State& state) {
  const WorkingFolder folder;
  writeSettings();
  Session session;
  session.guardArrays = false;
  const int placements = static_cast<int>(state.range(0));
  const std::vector<Model*> parts = generateParts(session);
  Model& definitions = generateAssembly(session, parts, kDistinctParts);
  Model& assembly = generateAssembly(session, parts, placements);
  session.current = &assembly;
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
    session.current = &definitions;
    total += once - exportSeconds(session, folder.path() / "definitions.rpk");
    session.current = &assembly;
  }
  const double iterations = static_cast<double>(state.iterations());
  state.counters["us_per_placement"] = total / iterations / (placements - kDistinctParts) * 1e6;
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
    benchmark::RegisterBenchmark(("exact_surfaces/" + model.stem().string()).c_str(), exactSurfaceCost, model)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->Iterations(5);
  }
  benchmark::RegisterBenchmark("generated_assembly", generatedAssembly)
      ->Arg(1000)
      ->Arg(10000)
      ->Arg(100000)
      ->UseManualTime()
      ->Unit(benchmark::kMillisecond)
      ->MinTime(0.5);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
