#include "core/plugin.h"

#include <exception>
#include <new>

#include "core/live_renderer_link.h"
#include "scene/appearance_reader.h"
#include "scene/vntScene_api.h"
#include "settings/settings_file.h"

namespace rendara {
namespace {

RendaraPlugin*& storedInstance() {
  static RendaraPlugin* plugin = nullptr;
  return plugin;
}

}  // namespace

RendaraPlugin::RendaraPlugin() : rendererLink(std::make_unique<LiveRendererLink>()) {
  loadSettings();
  settings.previousTessellationQuality = settings.tessellationQuality;
}

RendaraPlugin::~RendaraPlugin() { closeLeftOverFile(); }

void RendaraPlugin::closeLeftOverFile() {
  if (sceneOutput.file != nullptr) {
    std::fclose(sceneOutput.file);
  }
  sceneOutput = {};
}

RendaraPlugin* RendaraPlugin::instance() {
  RendaraPlugin*& plugin = storedInstance();
  if (plugin == nullptr) {
    try {
      plugin = new RendaraPlugin;
    } catch (const std::exception&) {
      plugin = nullptr;
    }
  }
  return plugin;
}

void RendaraPlugin::destroyInstance() {
  delete storedInstance();
  storedInstance() = nullptr;
}

void RendaraPlugin::loadSettings() { rendara::loadSettings(settings); }

void RendaraPlugin::saveSettings() const { rendara::saveSettings(settings); }

void RendaraPlugin::setSelectionMode(bool manual) { rendara::setSelectionMode(settings, selectionCommands, manual); }

void RendaraPlugin::chooseSelectionMode(SelectionMode mode) {
  const bool manual = mode == kManualSelection;
  setSelectionMode(manual);
  saveSettings();
  // The second pair is the one that stays on the ribbon.
  setCheckIcons(selectionCommands, manual);
}

WrittenOccurrence RendaraPlugin::exportPartGeometry(ProPart part, const ProAsmcomppath& appearancePath,
                                                    const ProAsmcomppath& animationPath, const NarrowText& name,
                                                    const Matrix& placement, bool defineGeometry) {
  const PartOccurrence occurrence{part, appearancePath, name.text.c_str(), placement.data(), defineGeometry};
  WrittenOccurrence written =
      rendara::exportPartGeometry(*sceneOutput.scene, occurrence, geometryOptions(), {meshBuffers, exactBuffers},
                                  [&] { writeComponentAnimation(animationPath, name.text.c_str()); });
  // Two names that lost characters can be equal without meaning the same part.
  if (written.material && name.exact) {
    writtenNames.try_emplace(name.text, *written.material);
  }
  return written;
}

WrittenOccurrence RendaraPlugin::writeReference(ProMdl model, const ProAsmcomppath& appearancePath,
                                                const ProAsmcomppath& animationPath, const std::string& name,
                                                const Matrix& placement) {
  const std::string partName = modelName(model).text;
  const auto own = occurrenceMaterial(model, appearancePath);
  const MaterialRecord& record = own ? *own : writtenNames.at(name);
  vntScene_api& scene = *sceneOutput.scene;
  scene.beginGroup(name.c_str(), true);
  scene.beginObject(partName.c_str(), true);
  scene.beginGeometry("instance");
  scene.parameter("source", kString, name.c_str());
  scene.endGeometry();
  writeMaterial(scene, materialName(record, partName, settings.separateMaterials), record);
  scene.endObject();
  writeComponentAnimation(animationPath, name.c_str());
  scene.transform(placement.data(), false);
  scene.endGroup();
  return {true, record};
}

void RendaraPlugin::writeComponentAnimation(const ProAsmcomppath& animationPath, const char* name) {
  if (!animation.animationFrames.empty()) {
    rendara::writeComponentAnimation(*sceneOutput.scene, animation, animationPath, componentTransform(animationPath),
                                     name);
  }
}

}  // namespace rendara
