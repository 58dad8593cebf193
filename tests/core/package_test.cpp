// The Export command and the packages that it writes.
#include <filesystem>
#include <string>

#include "settings/settings_file.h"
#include "tests/core/plugin_fixture.h"

namespace rendara {
namespace {

using standin::Model;
using standin::test::addBoxPart;
using standin::test::openModel;
using testing::readFile;

class Package : public testing::PluginTest {
 protected:
  Package() { openModel(session, part); }

  std::string exported() {
    session.fileAnswers.emplace_back(path);
    run("Rendara Export");
    return readFile(path);
  }
  std::string headerFor(const std::wstring& unit) {
    part.lengthUnit = unit;
    const std::string text = exported();
    const auto start = text.find("meter_scale");
    return text.substr(start, text.find('\n', start) - start);
  }

  std::filesystem::path path = folder.path() / "box.rpk";
  Model& part = addBoxPart(session, L"box");
};

TEST_F(Package, BeginsWithItsHeaderAndOptions) {
  plugin().settings.upAxis = 2;
  const std::string text = exported();
  const std::string expected =
      "//---vantor:dal:5---\n"
      "//---import:dal:1---\n"
      "//---id:1---\n"
      "// This is a Rendara scene file\n\n"
      "load \"vntgeometry_nurbs.so\" {\n"
      "}\n"
      "load \"vntrtopt.so\" {\n"
      "  \"import_mode\" on,\n"
      "  \"import_merge_groups\" off,\n"
      "  \"import_merge_objects\" off,\n"
      "  \"import_keep_original\" on,\n"
      "  \"import_adjust_environment\" on,\n"
      "  \"import_adjust_camera\" on,\n"
      "  \"import_up_vector\" 2,\n"
      "  \"meter_scale\" 1000,\n"
      "  \"ext\" off,\n"
      "}\n"
      "\n"
      "group \"box\" {\n"
      "  \n"
      "  camera \"Current Creo camera\" {\n";
  EXPECT_EQ(text.substr(0, expected.size()), expected);
  EXPECT_TRUE(text.ends_with("  }\n}\n"));
  plugin().settings.includeNURBS = true;
  EXPECT_TRUE(exported().starts_with("//---vantor:dal:7---\n"));
}

TEST_F(Package, MeterScaleComesFromTheExactNameOfTheUnit) {
  EXPECT_EQ(headerFor(L"cm"), "meter_scale\" 100,");
  EXPECT_EQ(headerFor(L"ft"), "meter_scale\" 3.28084,");
  EXPECT_EQ(headerFor(L"in"), "meter_scale\" 39.3701,");
  EXPECT_EQ(headerFor(L"mil"), "meter_scale\" 39370.1,");
  EXPECT_EQ(headerFor(L"micron"), "meter_scale\" 1e+06,");
  EXPECT_EQ(headerFor(L"m"), "meter_scale\" 1,");
  EXPECT_EQ(headerFor(L"MM"), "meter_scale\" 1,");
  EXPECT_EQ(headerFor(L"km"), "meter_scale\" 1,");
}

TEST_F(Package, RemembersItsPathAndProposesItAgain) {
  exported();
  EXPECT_EQ(session.fileRequests[0].directory, L"");
  EXPECT_EQ(session.dialogsShown, std::vector<std::string>{"ExportFinished"});
  PluginSettings saved;
  loadSettings(saved);
  EXPECT_EQ(saved.exportPath, path.wstring());
  exported();
  EXPECT_EQ(session.fileRequests[1].directory, path.wstring().substr(0, 259)) << "no backslash: the whole path";
}

TEST_F(Package, ACancelledFileDialogLeavesEverythingAsItWas) {
  plugin().settings.exportPath = L"kept.rpk";
  session.fileAnswers.emplace_back(std::nullopt);
  run("Rendara Export");
  EXPECT_EQ(plugin().settings.exportPath, L"kept.rpk");
  EXPECT_TRUE(session.dialogsShown.empty());
  EXPECT_FALSE(std::filesystem::exists(folder.path() / kSettingsFile));
}

TEST_F(Package, AFileThatCannotBeOpenedStillEndsWithTheDialog) {
  path = folder.path() / "no such folder" / "box.rpk";
  EXPECT_EQ(exported(), "");
  EXPECT_EQ(session.dialogsShown.size(), 1U);
  EXPECT_EQ(plugin().sceneOutput.file, nullptr);
}

TEST_F(Package, AFileDialogThatFailsNeverOverwritesTheLastPackage) {
  const std::string before = exported();
  session.touch(part);
  part.surfaces.front().inactive = true;
  session.fileAnswers.emplace_back(std::filesystem::path(std::string(400, 'x')));
  run("Rendara Export");
  EXPECT_EQ(readFile(path), before);
  EXPECT_EQ(plugin().settings.exportPath, L"");
  EXPECT_EQ(session.dialogsShown.size(), 2U);
}

TEST_F(Package, NamesOfAnyKindComeThrough) {
  session.renameModel(part, L"a \"b\"\r\n\u00e9");
  EXPECT_NE(exported().find("group xX61202262220d0ae9 {\n"), std::string::npos);
}

}  // namespace
}  // namespace rendara
