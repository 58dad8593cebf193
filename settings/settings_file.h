// The settings as the XML file "rendara_plugin_settings.xml" in the current working directory.
#pragma once

#include "settings/plugin_settings.h"

namespace rendara {

inline constexpr char kSettingsFile[] = "rendara_plugin_settings.xml";

// Fills the settings from the file. A file that is missing, unreadable, not well-formed, or larger than any of this
// system (1 MB, 1000 tags) changes nothing; an element that is missing or has no text leaves its field as it is. Values
// are taken as they are, without a range check.
void loadSettings(PluginSettings& settings);

// Writes all saved settings over the file; a failure passes in silence.
void saveSettings(const PluginSettings& settings);

}  // namespace rendara
