// The one object of the plug-in: the settings, what outlives a command, and the buffers that are reused.
#pragma once

#include <array>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "core/component_cache.h"
#include "core/renderer_link.h"
#include "core/representation.h"
#include "core/scene_script.h"
#include "geometry/mesh_buffers.h"
#include "geometry/part_geometry.h"
#include "platform/creo_toolkit.h"
#include "scene/material.h"
#include "scene/matrix.h"
#include "settings/animation.h"
#include "settings/plugin_settings.h"
#include "settings/selection_icons.h"

namespace rendara {

class SceneBuilder;

// The channel of the export in progress; both null when there is none.
struct SceneOutput {
  std::FILE* file = nullptr;      // the open package; null on the live link
  vntScene_api* scene = nullptr;  // owned by the package writer or by the live link
};

// The model that a command works on.
struct OpenModel {
  ProMdl model = nullptr;
  std::string name;
  ProMode mode = PRO_MODE_UNUSED;
  RepresentationChoice representation;
};

class RendaraPlugin {
 public:
  // Every field at its default, then the settings file over the settings.
  RendaraPlugin();
  ~RendaraPlugin();
  RendaraPlugin(const RendaraPlugin&) = delete;
  RendaraPlugin& operator=(const RendaraPlugin&) = delete;

  // The process's object, made on first use; null when it cannot be made.
  static RendaraPlugin* instance();
  static void destroyInstance();

  // The commands of the ribbon. A failure ends them without output, a cancel too.
  void renderCommand();
  void exportCommand();
  void updateCommand();
  void chooseSelectionMode(SelectionMode mode);

  // Writes the package named by `exportPath`, without asking anything but what belongs to the model.
  void writePackage();

  // The settings dialog, with the settings as they are in the file. True when it was accepted; without an open model it
  // is not shown. Its buttons can run Update and Render.
  bool showSettingsDialog();
  // Asks for a mechanism frame file, whose frames are then `animation`. False when the user cancels.
  bool runMechanismPrompt();

  void loadSettings();
  void saveSettings() const;
  void setSelectionMode(bool manual);

  // One occurrence of a part or of an assembly's own surfaces; see geometry/part_geometry.h. What was written under
  // the name is what later occurrences of the name refer to.
  WrittenOccurrence exportPartGeometry(ProPart part, const ProAsmcomppath& appearancePath,
                                       const ProAsmcomppath& animationPath, const NarrowText& name,
                                       const Matrix& placement, bool defineGeometry);
  // An occurrence of a name under which geometry stands in this scene already.
  WrittenOccurrence writeReference(ProMdl model, const ProAsmcomppath& appearancePath,
                                   const ProAsmcomppath& animationPath, const std::string& name,
                                   const Matrix& placement);
  void writeComponentAnimation(const ProAsmcomppath& animationPath, const char* name);
  bool isNameWritten(const std::string& name) const { return writtenNames.contains(name); }

  ImportSettings importSettings() const { return {settings.includeNURBS, settings.upAxis, meterScale}; }
  GeometryOptions geometryOptions() const {
    return {settings.tessellationQuality, settings.includeNURBS, settings.separateMaterials};
  }
  bool isLive() const { return sceneOutput.file == nullptr; }

  uiCmdCmdId renderCommandId{};
  uiCmdCmdId exportCommandId{};
  uiCmdCmdId settingsCommandId{};
  uiCmdCmdId updateCommandId{};
  SelectionCommands selectionCommands;
  SceneOutput sceneOutput;
  ComponentCache componentCache;
  AnimationFrames animation;  // of the command that runs
  bool updateInProgress = false;
  int lastLiveLinkPort = -1;
  std::vector<ProAsmcomppath> selection;  // what was picked for a manual Update
  bool wholeModelPicked = false;
  bool exportToFile = false;  // Render writes a package
  float meterScale = 1.0F;    // model length units per metre
  PluginSettings settings;
  std::vector<ProAsmcomppath> changedItems;  // what the Update in progress defines anew
  MeshBuffers meshBuffers;
  ExactSurfaceBuffers exactBuffers;
  // The names under which this scene holds geometry, with the first material written under each.
  std::unordered_map<std::string, MaterialRecord> writtenNames;
  std::unique_ptr<RendererLink> rendererLink;

  // Part of the object, with these values from the start; no command reads them.
  uiCmdCmdId spareCommandId{};
  std::vector<ProAsmcomppath> pendingItems;
  std::array<bool, 2> furtherFlags{};
  std::array<wchar_t, 1024> textBufferA{};
  std::array<wchar_t, 1024> textBufferB{};
  int spareIndex = -1;
  unsigned reservedWord = 0;

 private:
  bool acceptMechanism();
  std::optional<OpenModel> openModel();
  bool chooseOpenRepresentation(OpenModel& open);
  bool askSelection(const OpenModel& open);
  void writeOpenPackage(const OpenModel& open);
  void closeLeftOverFile();
  void runUpdate();
  void sendScene(LinkMode mode, const OpenModel& open);
  void writeLiveScene(LinkMode mode, const OpenModel& open);
  void endCommand();

  // What the components of the dialogs do.
  void followSpinbox();
  void followSlider();
  void acceptSettings();
  void acceptSettingsAndUpdate();
  void acceptSettingsAndRender();
  void cancelSettings();
  void browseMechanism();
  void readMechanism();
  void cancelMechanism();

  bool followingControl_ = false;  // a tessellation control is being set to the other one
};

}  // namespace rendara
