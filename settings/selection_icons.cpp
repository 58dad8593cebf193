#include "settings/selection_icons.h"

#include "platform/creo_handles.h"

namespace rendara {
namespace {

void setIcons(const SelectionCommands& commands, bool manual, const char* checked, const char* unchecked) {
  ProCmdIconSet(commands.manual, toolkitText(manual ? checked : unchecked));
  ProCmdIconSet(commands.automatic, toolkitText(manual ? unchecked : checked));
}

}  // namespace

void setUpdateIcons(const SelectionCommands& commands, bool manual) {
  setIcons(commands, manual, "rd_update_checked.png", "rd_update_unchecked.png");
}

void setCheckIcons(const SelectionCommands& commands, bool manual) {
  setIcons(commands, manual, "checked.png", "unchecked.png");
}

void setSelectionMode(PluginSettings& settings, const SelectionCommands& commands, bool manual) {
  settings.setSelectionMode(manual);
  setUpdateIcons(commands, manual);
}

}  // namespace rendara
