// The dialogs of the plug-in object: what their components do. Nothing is thrown into the CAD system.
#include <cstdio>
#include <memory>

#include "core/at_end.h"
#include "core/plugin.h"
#include "platform/windows_api.h"
#include "settings/animation_dialog.h"
#include "settings/dialog_building.h"
#include "settings/frame_file.h"
#include "settings/settings_dialog.h"

namespace rendara {
namespace {

template <void (RendaraPlugin::*member)()>
void callBack(char*, char*, ProAppData plugin) noexcept {
  try {
    (static_cast<RendaraPlugin*>(plugin)->*member)();
  } catch (...) {
    // What cannot be done ends without output.
  }
}

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

}  // namespace

bool RendaraPlugin::showSettingsDialog() {
  loadSettings();
  ProMdl model = nullptr;
  if (ProMdlCurrentGet(&model) != PRO_TK_NO_ERROR) {
    return false;
  }
  SettingsDialogActions actions;
  actions.spinboxChanged = callBack<&RendaraPlugin::followSpinbox>;
  actions.sliderMoved = callBack<&RendaraPlugin::followSlider>;
  actions.update = callBack<&RendaraPlugin::acceptSettingsAndUpdate>;
  actions.exportModel = callBack<&RendaraPlugin::acceptSettingsAndRender>;
  actions.accept = callBack<&RendaraPlugin::acceptSettings>;
  actions.cancel = callBack<&RendaraPlugin::cancelSettings>;
  actions.data = this;
  return runSettingsDialog(settings, actions);
}

// A host may call back when a value is set from code; the two controls must not answer each other then.
void RendaraPlugin::followSpinbox() {
  if (!followingControl_) {
    followingControl_ = true;
    const AtEnd end([this] { followingControl_ = false; });
    takeSpinboxQuality(settings);
  }
}

void RendaraPlugin::followSlider() {
  if (!followingControl_) {
    followingControl_ = true;
    const AtEnd end([this] { followingControl_ = false; });
    takeSliderQuality(settings);
  }
}

void RendaraPlugin::acceptSettings() {
  readSettingsDialog(settings, selectionCommands);
  saveSettings();
  exitSettingsDialog(kAccepted);
}

// The commands run before the dialog is gone; it has been told to end.
void RendaraPlugin::acceptSettingsAndUpdate() {
  acceptSettings();
  updateCommand();
}

void RendaraPlugin::acceptSettingsAndRender() {
  acceptSettings();
  renderCommand();
}

void RendaraPlugin::cancelSettings() {
  settings.tessellationQuality = settings.previousTessellationQuality;
  exitSettingsDialog(kCancelled);
}

bool RendaraPlugin::runMechanismPrompt() {
  AnimationDialogActions actions;
  actions.browse = callBack<&RendaraPlugin::browseMechanism>;
  actions.accept = callBack<&RendaraPlugin::readMechanism>;
  actions.cancel = callBack<&RendaraPlugin::cancelMechanism>;
  actions.data = this;
  return runAnimationDialog(settings.fraPath, actions);
}

void RendaraPlugin::browseMechanism() { browseFrameFile(settings.fraPath); }

void RendaraPlugin::readMechanism() {
  // The dialog ends whatever becomes of the file.
  const AtEnd exit([] { exitAnimationDialog(kAccepted); });
  settings.setFraPath(framePathInDialog());
  animation.clear();
  std::FILE* opened = nullptr;
  if (_wfopen_s(&opened, settings.fraPath.c_str(), L"r") == 0 && opened != nullptr) {
    const std::unique_ptr<std::FILE, FileCloser> file(opened);
    readFrameFile(file.get(), animation);
  }
  saveSettings();
}

void RendaraPlugin::cancelMechanism() { exitAnimationDialog(kCancelled); }

}  // namespace rendara
