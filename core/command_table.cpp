#include "core/command_table.h"

#include <cstddef>
#include <iterator>

#include "core/plugin.h"
#include "platform/creo_handles.h"
#include "settings/messages.h"
#include "settings/selection_icons.h"

namespace rendara {
namespace {

constexpr uiCmdPriority kPriority = 2;

// What every action does: nothing without an object, and nothing thrown into the CAD system.
template <typename Action>
int runAction(Action action) noexcept {
  try {
    if (RendaraPlugin* plugin = RendaraPlugin::instance()) {
      action(*plugin);
    }
  } catch (...) {
    // A command that cannot proceed ends without output.
  }
  return 0;
}

int renderAction(uiCmdCmdId, uiCmdValue*, void*) {
  ProPath value{};
  ProConfigoptGet(toolkitText(L"rendara_settings"), value);
  ProConfigoptGet(toolkitText(L"what"), value);
  return runAction([](RendaraPlugin& plugin) { plugin.renderCommand(); });
}

int exportAction(uiCmdCmdId, uiCmdValue*, void*) {
  return runAction([](RendaraPlugin& plugin) { plugin.exportCommand(); });
}

int updateAction(uiCmdCmdId, uiCmdValue*, void*) {
  return runAction([](RendaraPlugin& plugin) { plugin.updateCommand(); });
}

int settingsAction(uiCmdCmdId, uiCmdValue*, void*) {
  return runAction([](RendaraPlugin& plugin) { plugin.showSettingsDialog(); });
}

int manualSelectionAction(uiCmdCmdId, uiCmdValue*, void*) {
  return runAction([](RendaraPlugin& plugin) { plugin.chooseSelectionMode(kManualSelection); });
}

int automaticSelectionAction(uiCmdCmdId, uiCmdValue*, void*) {
  return runAction([](RendaraPlugin& plugin) { plugin.chooseSelectionMode(kAutomaticSelection); });
}

// The commands are available whatever the CAD system shows.
uiCmdAccessState alwaysAvailable(uiCmdAccessMode) { return ACCESS_AVAILABLE; }

struct CommandEntry {
  const char* name;
  const char* icon;
  const char* labelKey;
  const char* helpKey;
  const char* descriptionKey;
  uiCmdCmdActFn action;
};

uiCmdCmdId addCommand(const char* name, uiCmdCmdActFn action) {
  uiCmdCmdId id{};
  ProCmdActionAdd(toolkitText(name), action, kPriority, alwaysAvailable, PRO_B_TRUE, PRO_B_FALSE, &id);
  return id;
}

void designate(uiCmdCmdId id, const CommandEntry& entry) {
  ProCmdDesignate(id, toolkitText(entry.labelKey), toolkitText(entry.helpKey), toolkitText(entry.descriptionKey),
                  toolkitText(kMessageFile));
}

// The help text is the description of the selection commands too.
constexpr CommandEntry kManualSelectionEntry = {"Manual selection",          nullptr,
                                                "rendaraSettingsManual",     "rendaraSettingsManualHelp",
                                                "rendaraSettingsManualHelp", manualSelectionAction};
constexpr CommandEntry kAutomaticSelectionEntry = {"Automatic selection",          nullptr,
                                                   "rendaraSettingsAutomatic",     "rendaraSettingsAutomaticHelp",
                                                   "rendaraSettingsAutomaticHelp", automaticSelectionAction};
constexpr CommandEntry kMainEntries[] = {
    {"Rendara Settings", "rd_settings.png", "rendaraSettings", "rendaraSettingsHelp", "Rendara settings",
     settingsAction},
    {"Rendara Render", "rd_render.png", "rendaraRender", "rendaraRenderHelp", "Rendara render", renderAction},
    {"Rendara Export", "rd_export.png", "rendaraExport", "rendaraExportHelp", "Rendara export", exportAction},
    {"Rendara Update", "rd_update.png", "rendaraUpdate", "rendaraUpdateHelp", "Rendara update", updateAction},
};

SelectionCommands registerSelectionCommands(const RendaraPlugin* plugin) {
  SelectionCommands commands;
  commands.manual = addCommand(kManualSelectionEntry.name, kManualSelectionEntry.action);
  commands.automatic = addCommand(kAutomaticSelectionEntry.name, kAutomaticSelectionEntry.action);
  designate(commands.manual, kManualSelectionEntry);
  designate(commands.automatic, kAutomaticSelectionEntry);
  if (plugin != nullptr) {
    const int mode = plugin->settings.selectionMode;
    if (mode == kAutomaticSelection || mode == kManualSelection) {
      setUpdateIcons(commands, mode == kManualSelection);
    }
  }
  return commands;
}

}  // namespace

void registerCommands(RendaraPlugin* pluginOrNull) {
  const SelectionCommands selectionCommands = registerSelectionCommands(pluginOrNull);
  uiCmdCmdId main[std::size(kMainEntries)] = {};
  for (std::size_t i = 0; i < std::size(kMainEntries); ++i) {
    main[i] = addCommand(kMainEntries[i].name, kMainEntries[i].action);
    if (pluginOrNull != nullptr) {
      ProCmdIconSet(main[i], toolkitText(kMainEntries[i].icon));
    }
  }
  for (std::size_t i = 0; i < std::size(kMainEntries); ++i) {
    designate(main[i], kMainEntries[i]);
  }
  if (pluginOrNull != nullptr) {
    pluginOrNull->selectionCommands = selectionCommands;
    pluginOrNull->settingsCommandId = main[0];
    pluginOrNull->renderCommandId = main[1];
    pluginOrNull->exportCommandId = main[2];
    pluginOrNull->updateCommandId = main[3];
  }
}

}  // namespace rendara
