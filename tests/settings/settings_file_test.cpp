#include "settings/settings_file.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>

#include "standin/windows/code_page.h"
#include "tests/support/temporary_folder.h"

namespace rendara {
namespace {

using testing::readFile;
using testing::WorkingFolder;
using testing::writeFile;

class SettingsFile : public ::testing::Test {
 protected:
  ~SettingsFile() override { standin::setSystemCodePage(1252); }

  PluginSettings loaded() const {
    PluginSettings settings = start;
    loadSettings(settings);
    return settings;
  }
  void write(const std::string& children, const std::string& root = "rendara_plugin_settings") const {
    writeFile(folder.path() / kSettingsFile,
              "<?xml version=\"1.0\" ?>\n<" + root + ">" + children + "</" + root + ">\n");
  }

  WorkingFolder folder;
  PluginSettings start;
};

TEST_F(SettingsFile, WritesElementsInTheirOrder) {
  PluginSettings settings;
  settings.exportPath = L"C:\\out & more\\a  b.rpk";
  saveSettings(settings);
  std::string written = readFile(folder.path() / kSettingsFile);
  std::erase(written, '\r');  // lines end as the system's texts do
  EXPECT_EQ(written,
            "<?xml version=\"1.0\" ?>\n"
            "<rendara_plugin_settings>\n"
            "    <tessellationQuality>0.200000</tessellationQuality>\n"
            "    <upAxis>1</upAxis>\n"
            "    <selectionMode>automatic</selectionMode>\n"
            "    <includeNURBS>true</includeNURBS>\n"
            "    <separateMaterials>true</separateMaterials>\n"
            "    <promptForMechanism>false</promptForMechanism>\n"
            "    <exportPath>C:\\out &amp; more\\a  b.rpk</exportPath>\n"
            "    <fraPath></fraPath>\n"
            "</rendara_plugin_settings>\n");
}

TEST_F(SettingsFile, ComesBackWholeWithSixDecimalsWhateverTheLocale) {
  PluginSettings settings;
  settings.tessellationQuality = 0.123456789;
  settings.upAxis = 7;
  settings.selectionMode = kManualSelection;
  settings.promptForMechanism = true;
  settings.includeNURBS = false;
  settings.separateMaterials = false;
  settings.exportPath = L"D:\\T\u00fcr  \u20ac\\x.rpk";
  settings.fraPath = L"run.fra";
  if (std::setlocale(LC_NUMERIC, "de_DE.UTF-8") == nullptr) {
    GTEST_SKIP() << "no locale with commas here";
  }
  saveSettings(settings);
  const PluginSettings back = loaded();
  std::setlocale(LC_NUMERIC, "C");
  EXPECT_EQ(back.tessellationQuality, 0.123457);
  EXPECT_EQ(back.upAxis, 7);
  EXPECT_EQ(back.selectionMode, kManualSelection);
  EXPECT_TRUE(back.promptForMechanism);
  EXPECT_FALSE(back.includeNURBS);
  EXPECT_FALSE(back.separateMaterials);
  EXPECT_EQ(back.exportPath, settings.exportPath);
  EXPECT_EQ(back.fraPath, settings.fraPath);
  EXPECT_EQ(back.previousTessellationQuality, start.previousTessellationQuality);
}

TEST_F(SettingsFile, PathsMayEndInAnyCharacterOfTheCodePage) {
  PluginSettings settings;
  settings.upAxis = 4;
  for (const wchar_t* path : {L"C:\\caf\u00e9", L"stra\u00df", L"C:\\caf\u00e9&co\\a.rpk", L"\u00e9<\u00f0>\"'"}) {
    settings.exportPath = path;
    saveSettings(settings);
    EXPECT_EQ(loaded().exportPath, path);
    EXPECT_EQ(loaded().upAxis, 4);
  }
  writeFile(folder.path() / kSettingsFile, "<?xml version=\"1.0\" ?><a><exportPath>caf\xe9");
  EXPECT_EQ(loaded().exportPath, start.exportPath) << "a file that was cut off after the first of several bytes";
}

TEST_F(SettingsFile, PathsInCodePage932) {
  ASSERT_TRUE(standin::setSystemCodePage(932));
  PluginSettings settings;
  settings.exportPath = L"C:\\\u65e5\u672c\u8868";
  settings.fraPath = L"\u8868\\\u00e9.fra";  // the second byte of its first character is a backslash
  saveSettings(settings);
  EXPECT_EQ(loaded().exportPath, settings.exportPath);
  EXPECT_EQ(loaded().fraPath, L"\u8868\\e.fra") << "the best fit";
  settings.exportPath = std::wstring(1022, L'x') + L"\u65e5";
  saveSettings(settings);
  EXPECT_EQ(loaded().exportPath, std::wstring(1022, L'x')) << "never cut inside a double-byte character";
}

TEST_F(SettingsFile, FilesThatCannotBeReadChangeNothing) {
  start.tessellationQuality = 0.7;
  start.exportPath = L"kept";
  std::string deep = "<a><tessellationQuality>0.1</tessellationQuality></a>";
  for (int i = 0; i < 100'000; ++i) deep += "<a>";
  std::string large = "<a><tessellationQuality>0.1</tessellationQuality></a>";
  large.append(2'000'000, ' ');
  const std::string damaged[] = {"",
                                 deep,
                                 large,
                                 "<",
                                 "<?xml version=\"1.0\" ?>",
                                 "no xml at all",
                                 "<a><tessellationQuality>0.1</tessellationQuality>",
                                 std::string("<a>\0</a>", 8),
                                 "<a><b></a></b>"};
  EXPECT_EQ(loaded().tessellationQuality, 0.7) << "no file";
  for (const std::string& content : damaged) {
    writeFile(folder.path() / kSettingsFile, content);
    EXPECT_EQ(loaded().tessellationQuality, 0.7) << content.substr(0, 100);
    EXPECT_EQ(loaded().exportPath, L"kept") << content.substr(0, 100);
  }
}

TEST_F(SettingsFile, EachElementStandsForItself) {
  start.selectionMode = kManualSelection;
  start.upAxis = 3;
  write(
      "<selectionMode>Automatic</selectionMode><includeNURBS>1</includeNURBS><separateMaterials>True</"
      "separateMaterials>"
      "<promptForMechanism>true</promptForMechanism><upAxis></upAxis><tessellationQuality> 0.5x</tessellationQuality>"
      "<exportPath><b/></exportPath>",
      "any_root");
  const PluginSettings back = loaded();
  EXPECT_EQ(back.selectionMode, kManualSelection) << "letter case matters, and the mode stays";
  EXPECT_FALSE(back.includeNURBS);
  EXPECT_FALSE(back.separateMaterials);
  EXPECT_TRUE(back.promptForMechanism);
  EXPECT_EQ(back.upAxis, 3) << "no text";
  EXPECT_EQ(back.tessellationQuality, 0.5);
  EXPECT_TRUE(back.exportPath.empty());
  write("<upAxis>-4</upAxis><upAxis>5</upAxis>");
  EXPECT_EQ(loaded().upAxis, -4) << "the first of two";
}

TEST_F(SettingsFile, PathsTakeTheCodePageAndItsBestFit) {
  PluginSettings settings;
  settings.exportPath = L"\uff21\u65e5.rpk";  // a full-width A, which has a best fit, and a character without one
  saveSettings(settings);
  EXPECT_EQ(loaded().exportPath, L"A?.rpk");
  settings.exportPath = std::wstring(1030, L'x');
  saveSettings(settings);
  EXPECT_EQ(loaded().exportPath, std::wstring(1023, L'x')) << "cut to 1,023 bytes";
}

TEST(PluginSettingsRecord, QualityFromADialogHasSinglePrecisionAndKeepsTheOneBefore) {
  PluginSettings settings;
  settings.setTessellationQuality(0.3F);
  settings.setTessellationQuality(0.2F);
  EXPECT_EQ(settings.tessellationQuality, 0.20000000298023224);
  EXPECT_EQ(settings.previousTessellationQuality, static_cast<double>(0.3F));
}

}  // namespace
}  // namespace rendara
