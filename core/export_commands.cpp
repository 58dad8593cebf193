// Render, Export and Update: each builds one scene from its header to its end in one call.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <memory>
#include <new>
#include <utility>

#include "core/at_end.h"
#include "core/plugin.h"
#include "core/traversal.h"
#include "platform/creo_handles.h"
#include "platform/windows_api.h"
#include "scene/scene_builder.h"
#include "scene/vntScene_api.h"
#include "scene/vntScene_api_file.h"
#include "settings/package_export.h"

namespace rendara {
namespace {

constexpr unsigned kTopGroupFlags = 0x8000;

float modelMeterScale(ProMdl model) {
  ProUnitsystem system{};
  ProMdlPrincipalunitsystemGet(model, &system);
  ProUnitsystemType type = PRO_UNITSYSTEM_MLT;
  ProUnitsystemTypeGet(&system, &type);
  ProUnititem length{};
  ProUnitsystemUnitGet(&system, PRO_UNITTYPE_LENGTH, &length);
  ProUnitConversion conversion{};
  ProUnititem reference{};
  ProUnitConversionGet(&length, &conversion, &reference);
  return meterScaleOfUnit(length.name);
}

}  // namespace

// Frames belong to one command.
bool RendaraPlugin::acceptMechanism() {
  animation.clear();
  return !settings.promptForMechanism || runMechanismPrompt();
}

std::optional<OpenModel> RendaraPlugin::openModel() {
  OpenModel open;
  if (ProMdlCurrentGet(&open.model) != PRO_TK_NO_ERROR || open.model == nullptr) {
    return std::nullopt;
  }
  open.name = modelName(open.model).text;
  ProModeCurrentGet(&open.mode);
  meterScale = modelMeterScale(open.model);
  return open;
}

bool RendaraPlugin::chooseOpenRepresentation(OpenModel& open) {
  if (open.mode != PRO_MODE_ASSEMBLY) {
    return true;
  }
  auto choice = chooseRepresentation(static_cast<ProSolid>(open.model));
  if (!choice) {
    return false;
  }
  open.representation = std::move(*choice);
  return true;
}

void RendaraPlugin::endCommand() {
  writtenNames.clear();
  changedItems.clear();
  updateInProgress = false;
}

void RendaraPlugin::renderCommand() {
  const AtEnd end([this] { endCommand(); });
  componentCache.clear();
  if (!acceptMechanism()) {
    return;
  }
  if (exportToFile) {
    writePackage();
    return;
  }
  auto open = openModel();
  if (open && chooseOpenRepresentation(*open)) {
    sendScene(LinkMode::kLaunch, *open);
  }
}

void RendaraPlugin::updateCommand() {
  if (!acceptMechanism()) {
    return;
  }
  const AtEnd end([this] { endCommand(); });
  updateInProgress = true;
  runUpdate();
}

void RendaraPlugin::runUpdate() {
  auto open = openModel();
  if (open && askSelection(*open) && chooseOpenRepresentation(*open)) {
    sendScene(LinkMode::kUpdate, *open);
  }
}

bool RendaraPlugin::askSelection(const OpenModel& open) {
  selection.clear();
  wholeModelPicked = false;
  if (settings.selectionMode != kManualSelection || open.mode != PRO_MODE_ASSEMBLY) {
    return true;
  }
  ProSelection* picks = nullptr;  // the host's own
  int count = 0;
  if (ProSelect(toolkitText("prt_or_asm"), -1, nullptr, nullptr, nullptr, nullptr, &picks, &count) != PRO_TK_NO_ERROR) {
    return false;
  }
  for (int pick = 0; pick < count && picks != nullptr; ++pick) {
    ProAsmcomppath path{};
    if (ProSelectionAsmcomppathGet(picks[pick], &path) == PRO_TK_NO_ERROR) {
      selection.push_back(path);
      wholeModelPicked = wholeModelPicked || path.table_num == 0;
    }
  }
  return true;
}

void RendaraPlugin::sendScene(LinkMode mode, const OpenModel& open) {
  const AtEnd release([this] {
    sceneOutput = {};
    componentCache.abandonScene();
    rendererLink->release();
  });
  const int portBefore = lastLiveLinkPort;
  const LiveScene live = rendererLink->connect(mode, lastLiveLinkPort);
  if (live.newInstance || lastLiveLinkPort != portBefore) {
    componentCache.clear();
  }
  if (live.scene != nullptr) {
    sceneOutput = {nullptr, live.scene};
    writeLiveScene(mode, open);
  } else if (mode == LinkMode::kLaunch) {
    std::fputs("Failed", stdout);
    std::fflush(stdout);
  }
}

void RendaraPlugin::writeLiveScene(LinkMode mode, const OpenModel& open) {
  vntScene_api& scene = *sceneOutput.scene;
  if (mode == LinkMode::kLaunch) {
    writeRenderHeader(scene, importSettings());
  } else {
    writeUpdateHeader(scene, importSettings());
  }
  componentCache.beginScene(geometryOptions());
  SceneBuilder builder(&scene);
  builder.openGroup(open.name.c_str());
  scene.flags(kTopGroupFlags);
  traverseModel(*this, builder, open);
  builder.closeGroup();
  if (builder.finish()) {
    componentCache.finishScene();
  }
}

void RendaraPlugin::writePackage() {
  const AtEnd end([this] { writtenNames.clear(); });
  if (!acceptMechanism() || settings.exportPath.empty()) {
    return;
  }
  auto open = openModel();
  if (open && chooseOpenRepresentation(*open)) {
    writeOpenPackage(*open);
  }
}

void RendaraPlugin::writeOpenPackage(const OpenModel& open) {
  closeLeftOverFile();
  std::FILE* file = _wfopen(settings.exportPath.c_str(), L"wb+");
  if (file == nullptr) {
    return;
  }
  sceneOutput.file = file;
  std::unique_ptr<vntScene_api_file> writer;
  try {
    writer = std::make_unique<vntScene_api_file>(file, true);
  } catch (const std::bad_alloc&) {
    return;  // the file stays open until the next package or the end
  }
  sceneOutput.scene = writer.get();
  // The writer closes the file; the handle is only forgotten.
  const AtEnd forget([&] {
    writer.reset();
    sceneOutput = {};
  });
  writePackageHeader(*writer, importSettings());
  SceneBuilder builder(writer.get());
  builder.openGroup(open.name.c_str());
  traverseModel(*this, builder, open);
  builder.closeGroup();
}

void RendaraPlugin::exportCommand() {
  const AtEnd end([this] { endCommand(); });
  auto chosen = askPackagePath(settings.exportPath);
  if (!chosen) {
    return;
  }
  settings.setExportPath(*chosen);
  try {
    writePackage();
  } catch (const std::exception&) {
    // A package that could not be finished ends as any other failure: without a word.
  }
  showExportFinished();
  saveSettings();
}

}  // namespace rendara
