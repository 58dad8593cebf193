// The files that the program handles itself: settings, packages, its scratch folder.
#include <gtest/gtest.h>

#include "standin/app/failure.h"
#include "standin/app/package_file.h"
#include "standin/app/scratch_directory.h"
#include "standin/app/settings_file.h"
#include "tests/support/temporary_folder.h"

namespace standin {
namespace {

namespace fs = std::filesystem;
using rendara::testing::readFile;
using rendara::testing::TemporaryFolder;
using rendara::testing::writeFile;

template <typename Function>
std::string failureOf(Function function) {
  try {
    function();
  } catch (const Failure& failure) {
    return failure.what();
  }
  return "";
}

TEST(SettingsFileTest, WritesWhatThePluginReads) {
  const TemporaryFolder folder;
  SettingsFile settings(folder.path() / SettingsFile::kName);
  settings.set("quality", "1");
  settings.set("up", "-z");
  settings.set("shared-materials", "on");
  settings.save();
  EXPECT_EQ(readFile(folder.path() / SettingsFile::kName), R"(<?xml version="1.0" ?>
<rendara_plugin_settings>
    <tessellationQuality>1.000000</tessellationQuality>
    <upAxis>5</upAxis>
    <selectionMode>automatic</selectionMode>
    <includeNURBS>true</includeNURBS>
    <separateMaterials>false</separateMaterials>
    <promptForMechanism>false</promptForMechanism>
    <exportPath></exportPath>
    <fraPath></fraPath>
</rendara_plugin_settings>
)");
}

TEST(SettingsFileTest, KeepsWhatThePluginWrote) {
  const TemporaryFolder folder;
  const fs::path file = folder.path() / "settings.xml";
  writeFile(
      file,
      "<?xml version=\"1.0\" ?>\n<other><exportPath>/tmp/a  b \xe9&amp;.rpk</exportPath><upAxis>7</upAxis></other>");
  SettingsFile settings(file);
  settings.set("nurbs", "off");
  settings.save();
  const SettingsFile again(file);
  EXPECT_EQ(again.text("export-path"), "/tmp/a  b \xe9&.rpk");
  EXPECT_EQ(again.text("up"), "7");
  EXPECT_EQ(again.text("nurbs"), "false");
  EXPECT_EQ(again.text("quality"), "0.200000");
}

TEST(SettingsFileTest, RefusesValuesOutOfRange) {
  SettingsFile settings("absent.xml");
  for (const char* quality : {"", "abc", "-0.1", "1.01", "0,5", "0.5x", "nan", "inf", " 0.5"}) {
    EXPECT_THROW(settings.set("quality", quality), Failure) << quality;
  }
  EXPECT_THROW(settings.set("up", "+x"), Failure);
  EXPECT_THROW(settings.set("nurbs", "true"), Failure);
  EXPECT_THROW(settings.set("selection", "Manual"), Failure);
  EXPECT_EQ(failureOf([&] { settings.set("quality", "2"); }), "quality cannot be \"2\": a number from 0 to 1");
  EXPECT_EQ(settings.text("quality"), "0.200000");
}

TEST(SettingsFileTest, NarrowsPathsToTheCodePage) {
  SettingsFile settings("absent.xml");
  settings.set("frame-path", "/tmp/\xc3\xa9\xe3\x83\x97.fra");
  EXPECT_EQ(settings.text("frame-path"), "/tmp/\xe9?.fra");
}

TEST(PackageFileTest, TellsBeforehandWhereNothingCanBeWritten) {
  const TemporaryFolder folder;
  const auto message = [](const fs::path& path) { return failureOf([&] { PackageFile(path).checkPlace(); }); };
  writeFile(folder.path() / "file", "x");
  EXPECT_EQ(message(folder.path()), folder.path().string() + ": Is a directory");
  EXPECT_EQ(message(folder.path() / "absent/a.rpk"),
            (folder.path() / "absent/a.rpk").string() + ": No such file or directory");
  EXPECT_EQ(message(folder.path() / "file/a.rpk"), (folder.path() / "file/a.rpk").string() + ": Not a directory");
  EXPECT_EQ(message(folder.path() / "absent/"), (folder.path() / "absent/").string() + ": No such file or directory");
  EXPECT_EQ(message(folder.path() / "a.rpk"), "");
  EXPECT_EQ(message(folder.path() / "file"), "");
  EXPECT_EQ(message("/dev/full"), "");
}

TEST(PackageFileTest, HoldsPathsToTheHostsLength) {
  // Characters count, not bytes: each of these has two.
  const auto path = [](std::size_t length) {
    std::string name = "/tmp/";
    for (std::size_t i = name.size(); i < length; ++i) name += "\xc3\xa9";
    return fs::path(name.substr(0, 5 + 2 * 100) + "/" + name.substr(5 + 2 * 101));
  };
  const auto message = [&](std::size_t length) { return failureOf([&] { PackageFile(path(length)).checkPlace(); }); };
  EXPECT_EQ(message(259).find("characters"), std::string::npos);
  EXPECT_NE(message(260).find("the path has 260 characters, the host takes 259 at most"), std::string::npos);
}

TEST(PackageFileTest, TakesOnlyWhatWasWrittenSinceAndIsComplete) {
  const TemporaryFolder folder;
  const fs::path path = folder.path() / "a.rpk";
  const std::string package = "\ngroup \"a\" {\n}\n";
  writeFile(path, package);
  const PackageFile old(path);
  EXPECT_EQ(failureOf([&] { old.check(true); }), path.string() + ": no package was written");
  EXPECT_EQ(failureOf([&] { old.check(false); }), path.string() + ": no package was written: no model is open");
  writeFile(path, package + "\ngroup \"b\" {\n}\n");
  EXPECT_EQ(old.check(true)->groups, 2U);
  writeFile(path, "\ngroup \"a\" {\n");
  EXPECT_NE(failureOf([&] { old.check(true); }).find(": not a complete package: line "), std::string::npos);
  writeFile(path, "");
  EXPECT_EQ(failureOf([&] { old.check(true); }), path.string() + ": not a complete package: it holds no scene");
  EXPECT_EQ(PackageFile("/dev/null").check(true), std::nullopt);
}

TEST(ScratchDirectoryTest, IsTheWorkingDirectoryAndLeavesNothing) {
  const fs::path origin = fs::current_path();
  fs::path path;
  {
    const ScratchDirectory scratch;
    path = scratch.path();
    EXPECT_EQ(scratch.origin(), origin);
    EXPECT_TRUE(fs::equivalent(fs::current_path(), path));
    writeFile("settings.xml", "x");
    fs::create_directory("folder");
  }
  EXPECT_EQ(fs::current_path(), origin);
  EXPECT_FALSE(fs::exists(path));
}

}  // namespace
}  // namespace standin
