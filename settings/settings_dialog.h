// The dialog "Rendara_Settings": one column for each setting, its label above its control, and a row of four buttons.
//
// The two tessellation controls write to the settings at once and follow each other; everything else is read when the
// dialog is accepted.
#pragma once

#include "platform/creo_toolkit.h"
#include "settings/plugin_settings.h"
#include "settings/selection_icons.h"

namespace rendara {

// What the components call; all get the same data.
struct SettingsDialogActions {
  ProUIAction spinboxChanged = nullptr;
  ProUIAction sliderMoved = nullptr;
  ProUIAction update = nullptr;
  ProUIAction exportModel = nullptr;
  ProUIAction accept = nullptr;
  ProUIAction cancel = nullptr;
  ProAppData data = nullptr;
};

// Shows the dialog until it is exited; true when it was accepted.
bool runSettingsDialog(const PluginSettings& settings, const SettingsDialogActions& actions);

// The rest is for the actions, while the dialog runs.

// Takes the quality from one tessellation control and sets the other one to it.
void takeSliderQuality(PluginSettings& settings);
void takeSpinboxQuality(PluginSettings& settings);

// Takes over what the components show; the icons of the selection commands follow. A group without a known selection
// leaves its setting as it is. The dialog has no components for a save path, and is asked for them all the same:
// `savePackage` becomes false.
void readSettingsDialog(PluginSettings& settings, const SelectionCommands& commands);

void exitSettingsDialog(int status);

}  // namespace rendara
