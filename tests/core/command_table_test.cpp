#include "core/command_table.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "core/plugin.h"
#include "settings/settings_file.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/test_session.h"

namespace rendara {
namespace {

using Icons = std::vector<std::string>;

class CommandTable : public ::testing::Test {
 protected:
  ~CommandTable() override {
    RendaraPlugin::destroyInstance();
    session.finish();
    EXPECT_TRUE(session.misuse().empty()) << session.misuse().front();
  }
  static RendaraPlugin& plugin() { return *RendaraPlugin::instance(); }
  Icons icons(const std::string& command) { return session.findCommand(command)->icons; }
  static void saveMode(int mode) {
    PluginSettings settings;
    settings.selectionMode = mode;
    saveSettings(settings);
  }

  testing::WorkingFolder folder;
  standin::Session session;
};

TEST_F(CommandTable, RegistersSixCommandsInTheirOrder) {
  registerCommands(RendaraPlugin::instance());
  std::string table;
  for (const standin::Command& command : session.commands()) {
    table += command.name + "|" + (command.icons.empty() ? "" : command.icons.back()) + "|" + command.labelKey + "|" +
             command.helpKey + "|" + command.descriptionKey + "\n";
    EXPECT_EQ(command.priority, 2);
    EXPECT_TRUE(command.inNonActiveWindow);
    EXPECT_FALSE(command.inAccessoryWindow);
    EXPECT_EQ(command.messageFile, L"rendara_msg.txt");
    for (int mode = -1; mode < 8; ++mode) {
      EXPECT_EQ(command.access(mode), ACCESS_AVAILABLE);
    }
  }
  EXPECT_EQ(table,
            "Manual selection|rd_update_unchecked.png|rendaraSettingsManual|rendaraSettingsManualHelp|"
            "rendaraSettingsManualHelp\n"
            "Automatic selection|rd_update_checked.png|rendaraSettingsAutomatic|rendaraSettingsAutomaticHelp|"
            "rendaraSettingsAutomaticHelp\n"
            "Rendara Settings|rd_settings.png|rendaraSettings|rendaraSettingsHelp|Rendara settings\n"
            "Rendara Render|rd_render.png|rendaraRender|rendaraRenderHelp|Rendara render\n"
            "Rendara Export|rd_export.png|rendaraExport|rendaraExportHelp|Rendara export\n"
            "Rendara Update|rd_update.png|rendaraUpdate|rendaraUpdateHelp|Rendara update\n");
  EXPECT_EQ(plugin().exportCommandId, session.findCommand("Rendara Export")->id);
}

TEST_F(CommandTable, EveryKeyHasATextAndEveryIconAnImage) {
  session.messageFolder = RENDARA_SOURCE_DIR "/resources/text";
  registerCommands(RendaraPlugin::instance());
  session.runCommand("Manual selection");
  session.runCommand("Automatic selection");
  for (const standin::Command& command : session.commands()) {
    for (const std::string& icon : command.icons) {
      EXPECT_TRUE(std::filesystem::exists(std::filesystem::path(RENDARA_SOURCE_DIR "/resources/resource") / icon))
          << icon;
    }
    for (const std::string& key : {command.labelKey, command.helpKey, command.descriptionKey}) {
      EXPECT_FALSE(session.message(command.messageFile, key).value_or(L"").empty()) << key;
    }
  }
}

TEST_F(CommandTable, IconsShowTheModeOfTheSettingsFile) {
  saveMode(kManualSelection);
  registerCommands(RendaraPlugin::instance());
  EXPECT_EQ(icons("Manual selection"), Icons{"rd_update_checked.png"});
  EXPECT_EQ(icons("Automatic selection"), Icons{"rd_update_unchecked.png"});
}

TEST_F(CommandTable, AnotherModeSetsNoIcons) {
  RendaraPlugin::instance()->settings.selectionMode = 2;
  registerCommands(RendaraPlugin::instance());
  EXPECT_TRUE(icons("Manual selection").empty());
  EXPECT_EQ(icons("Rendara Update").size(), 1U);
}

TEST_F(CommandTable, TogglesSetBothIconPairsAndSaveEachTime) {
  registerCommands(RendaraPlugin::instance());
  for (int time = 0; time < 2; ++time) {
    std::filesystem::remove(folder.path() / kSettingsFile);
    session.findCommand("Manual selection")->icons.clear();
    session.findCommand("Automatic selection")->icons.clear();
    EXPECT_EQ(session.runCommand("Manual selection"), 0);
    EXPECT_EQ(icons("Manual selection"), (Icons{"rd_update_checked.png", "checked.png"}));
    EXPECT_EQ(icons("Automatic selection"), (Icons{"rd_update_unchecked.png", "unchecked.png"}));
    EXPECT_EQ(plugin().settings.selectionMode, kManualSelection);
    PluginSettings saved;
    loadSettings(saved);
    EXPECT_EQ(saved.selectionMode, kManualSelection);
  }
  EXPECT_EQ(session.runCommand("Automatic selection"), 0);
  EXPECT_EQ(icons("Manual selection").back(), "unchecked.png");
  EXPECT_EQ(icons("Automatic selection").back(), "checked.png");
  EXPECT_EQ(plugin().settings.selectionMode, kAutomaticSelection);
}

TEST_F(CommandTable, ModeSetThroughTheSetterKeepsTheUpdateIcons) {
  registerCommands(RendaraPlugin::instance());
  plugin().setSelectionMode(true);
  EXPECT_EQ(icons("Manual selection").back(), "rd_update_checked.png");
  EXPECT_EQ(icons("Automatic selection").back(), "rd_update_unchecked.png");
}

TEST_F(CommandTable, WithoutAnObjectTheCommandsStandWithoutIcons) {
  registerCommands(nullptr);
  ASSERT_EQ(session.commands().size(), 6U);
  for (const standin::Command& command : session.commands()) {
    EXPECT_TRUE(command.icons.empty()) << command.name;
  }
}

TEST_F(CommandTable, ACommandAfterTheEndMakesAFreshObject) {
  registerCommands(RendaraPlugin::instance());
  plugin().exportToFile = true;
  RendaraPlugin::destroyInstance();
  EXPECT_EQ(session.runCommand("Rendara Settings"), 0);
  EXPECT_FALSE(plugin().exportToFile);
}

TEST_F(CommandTable, WithoutAModelTheCommandsDoNothing) {
  registerCommands(RendaraPlugin::instance());
  session.fileAnswers.emplace_back(folder.path() / "out.rpk");
  for (const char* command : {"Rendara Export", "Rendara Render", "Rendara Update"}) {
    EXPECT_EQ(session.runCommand(command), 0);
  }
  EXPECT_FALSE(std::filesystem::exists(folder.path() / "out.rpk"));
}

TEST_F(CommandTable, PluginStartsWithItsDefaultsUnderTheSettingsFile) {
  PluginSettings saved;
  saved.tessellationQuality = 0.75;
  saved.upAxis = 2;
  saveSettings(saved);
  const RendaraPlugin fresh;
  EXPECT_EQ(fresh.settings.tessellationQuality, 0.75);
  EXPECT_EQ(fresh.settings.previousTessellationQuality, 0.75);
  EXPECT_EQ(fresh.settings.upAxis, 2);
  EXPECT_TRUE(fresh.settings.includeNURBS && fresh.settings.separateMaterials);
  EXPECT_FALSE(fresh.settings.savePackage || fresh.exportToFile || fresh.updateInProgress);
  EXPECT_EQ(fresh.lastLiveLinkPort, -1);
  EXPECT_EQ(fresh.meterScale, 1.0F);
  EXPECT_EQ(fresh.animation.animationFrameRate, 25);
  EXPECT_EQ(fresh.renderCommandId, 0);
}

}  // namespace
}  // namespace rendara
