// The icons by which the ribbon shows how Update selects.
#pragma once

#include "platform/creo_toolkit.h"
#include "settings/plugin_settings.h"

namespace rendara {

struct SelectionCommands {
  uiCmdCmdId manual{};
  uiCmdCmdId automatic{};
};

// "rd_update_checked.png" on the command of the mode, "rd_update_unchecked.png" on the other.
void setUpdateIcons(const SelectionCommands& commands, bool manual);

// The same with "checked.png" and "unchecked.png".
void setCheckIcons(const SelectionCommands& commands, bool manual);

// Chooses how Update selects; the icons follow.
void setSelectionMode(PluginSettings& settings, const SelectionCommands& commands, bool manual);

}  // namespace rendara
