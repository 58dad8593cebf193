#include "standin/app/model_commands.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "standin/app/misuse.h"
#include "standin/app/plugin_host.h"
#include "standin/app/scratch_directory.h"
#include "standin/app/settings_file.h"
#include "standin/app/summary.h"
#include "standin/app/workbench.h"
#include "standin/snapshot/mesh_recording.h"
#include "standin/windows/code_page.h"
#include "tools/rpk/app/output_file.h"

namespace standin {
namespace {

namespace fs = std::filesystem;

constexpr const char* kExportCommand = "Rendara Export";
constexpr const char* kRenderCommand = "Rendara Render";

// The options are called as the settings are.
void setOption(SettingsFile& settings, const std::string& name, const std::optional<std::string>& value) {
  if (!value) return;
  try {
    settings.set(name, *value);
  } catch (const Failure& failure) {
    throw Failure(failure.code(), fmt::format("--{}", failure.what()));
  }
}

void writeSettings(const ModelOptions& options) {
  SettingsFile settings(SettingsFile::kName);
  setOption(settings, "quality", options.quality);
  setOption(settings, "up", options.upAxis);
  settings.set("nurbs", options.noNurbs ? "off" : "on");
  settings.set("shared-materials", options.sharedMaterials ? "on" : "off");
  settings.set("mechanism", options.frameFile ? "on" : "off");
  settings.save();
}

void refuseToOverwrite(const fs::path& input, const fs::path& output, const char* what = "package") {
  std::error_code ignored;
  if (fs::equivalent(input, output, ignored)) {
    throw Failure(ExitCode::kUsage, fmt::format("{}: would be overwritten by the {}", input.string(), what));
  }
}

void chooseRepresentation(Session& session, const ModelOptions& options) {
  const std::wstring name = wideFromUtf8(options.representation);
  const auto& known = session.current->representations;
  const auto isMeant = [&name](const SimplifiedRep& candidate) { return candidate.name == name; };
  if (!name.empty() && std::none_of(known.begin(), known.end(), isMeant)) {
    throw Failure(ExitCode::kUsage,
                  fmt::format("{}: has no representation \"{}\"", options.model.string(), options.representation));
  }
  session.representationAnswers.emplace_back(name);
}

// Runs the command; a package that did not become complete is not left behind.
WrittenPackage writePackage(Workbench& bench, const PackageFile& target) {
  std::optional<terminal::RemovedOnSignal> removed;
  if (target.ordinary()) removed.emplace(target.path(), terminal::RemovedOnSignal::Kind::kFile);
  try {
    const CommandReport report = bench.run(kExportCommand);
    if (report.packages.empty()) {
      throw Failure(ExitCode::kOutput, fmt::format("{}: the plug-in asked for no file", target.path().string()));
    }
    return report.packages.front();
  } catch (const Failure&) {
    std::error_code ignored;
    if (target.changed()) fs::remove(target.path(), ignored);
    throw;
  }
}

// The user names the file when the plug-in asks for one.
void answerMechanismPrompt(Session& session, const fs::path& frameFile) {
  checkReadable(frameFile);
  session.onDialog = [frameFile](Dialog& dialog) {
    if (dialog.name == "Rendara_Animation") {
      userSet(dialog, "Rendara_Animation_Inputpanel", frameFile.string());
      userPress(dialog, "Rendara_Animation_Export");
    }
    closeByDefault(dialog);
  };
}

// Ends the plug-in. Misuse outweighs another failure, which may well come from it.
void finish(Session& session, PluginHost& plugin, const std::string& otherFailure) {
  plugin.unload(session);
  session.finish();
  throwMisuse(session, plugin.file(), otherFailure);
}

// The program, the plug-in and the opened model while one command is run on it.
class OpenedModel {
 public:
  OpenedModel(const CommonOptions& common, const ModelOptions& options, const ScratchDirectory& scratch)
      : plugin_(common.plugin), progress_(stderr), bench_(session_, plugin_, progress_, scratch.origin()) {
    applyOptions(common, session_);
    if (common.codePage) bench_.keepCodePage();
    const auto begin = std::chrono::steady_clock::now();
    bench_.open(options.model, options.overlay);
    reading_ = std::chrono::steady_clock::now() - begin;
    chooseRepresentation(session_, options);
    if (options.frameFile) answerMechanismPrompt(session_, scratch.origin() / *options.frameFile);
  }

  // Ends the plug-in after the action, whatever becomes of it.
  template <typename Action>
  void run(Action action) {
    try {
      action(bench_);
    } catch (const Failure& failure) {
      finish(session_, plugin_, failure.what());
      throw;
    }
    finish(session_, plugin_, {});
  }

  Session& session() { return session_; }
  std::chrono::steady_clock::duration reading() const { return reading_; }

 private:
  Session session_;
  PluginHost plugin_;
  terminal::Progress progress_;
  Workbench bench_;
  std::chrono::steady_clock::duration reading_{};
};

// Runs the export of the open model for what it asks of the session alone; the package is nobody's.
void exportForRecord(Workbench& bench, const fs::path& package) {
  Session& session = bench.session();
  session.representationAnswers.assign(1, std::wstring());
  session.fileAnswers.assign(1, package);
  if (bench.run(kExportCommand).packages.empty()) {
    throw Failure(ExitCode::kOutput, "no snapshot can be made: the plug-in asked for no file");
  }
}

}  // namespace

void exportModel(const CommonOptions& common, const ExportOptions& options, std::ostream& output) {
  ScratchDirectory scratch;
  writeSettings(options);
  const fs::path packagePath = scratch.origin() / options.output;
  refuseToOverwrite(scratch.origin() / options.model, packagePath);
  if (options.overlay) refuseToOverwrite(scratch.origin() / *options.overlay, packagePath);
  const PackageFile target(packagePath);
  target.checkPlace();

  OpenedModel opened(common, options, scratch);
  opened.session().fileAnswers.emplace_back(packagePath);
  opened.run([&](Workbench& bench) {
    const WrittenPackage package = writePackage(bench, target);
    printSummary(output, opened.session(), &package, opened.reading());
  });
}

void saveSnapshot(const CommonOptions& common, const SnapshotOptions& options, std::ostream& output) {
  ScratchDirectory scratch;
  writeSettings(options);
  const fs::path path = scratch.origin() / options.output;
  refuseToOverwrite(scratch.origin() / options.model, path, "snapshot");
  if (options.overlay) refuseToOverwrite(scratch.origin() / *options.overlay, path, "snapshot");
  rpk::OutputFile file(path.string());

  const fs::path package = scratch.path() / "part.rpk";
  const terminal::RemovedOnSignal removed(package, terminal::RemovedOnSignal::Kind::kFile);
  OpenedModel opened(common, options, scratch);
  opened.run([&](Workbench& bench) {
    Session& session = opened.session();
    const MeshSource meshes = recordedMeshes(session, [&] { exportForRecord(bench, package); });
    const SnapshotCounts counts = writeSnapshot(file.stream(), session, fs::absolute(path).parent_path(), meshes);
    if (!file.stream().flush()) file.fail(errno);
    file.finish();
    fmt::print(output, "{}\nparts         {}\nsurfaces      {}\ntriangles     {}\n", path.string(), counts.parts,
               counts.surfaces, counts.triangles);
    printFailedSurfaces(output, session.counts);
    fmt::print(output, "snapshot      {} bytes\n", counts.bytes);
  });
}

void renderModel(const CommonOptions& common, const RenderOptions& options, std::ostream& output) {
  ScratchDirectory scratch;
  writeSettings(options);
  OpenedModel opened(common, options, scratch);
  opened.run([&](Workbench& bench) {
    const CommandReport report = bench.run(kRenderCommand);
    if (!report.printed.empty()) {
      throw Failure(ExitCode::kOutput,
                    fmt::format("no renderer could be reached: the plug-in says \"{}\"; \"renderer-standin --install\" "
                                "installs one",
                                report.printed));
    }
    printSummary(output, opened.session(), nullptr, opened.reading());
  });
}

}  // namespace standin
