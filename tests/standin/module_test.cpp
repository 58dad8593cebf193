#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <bit>

#include "platform/windows_api.h"
#include "standin/windows/code_page.h"
#include "tests/standin/machine_fixture.h"

namespace standin {
namespace {

namespace fs = std::filesystem;
using Modules = OnMachine;

const fs::path& besideProgram() {
  static const fs::path path = fs::path(RENDARA_BIN_DIR) / "windows_test_module.so";
  return path;
}

HMODULE load(std::string path) {
  std::replace(path.begin(), path.end(), '/', '\\');
  return LoadLibraryW(wideFromUtf8(path).c_str());
}

TEST_F(Modules, AreFoundBesideTheProgramOrByTheirPathAndNowhereElse) {
  const rendara::testing::WorkingFolder working;
  fs::create_directory("sub");
  fs::copy_file(besideProgram(), "only_here.so");
  fs::copy_file(besideProgram(), "sub/only_here.so");
  fs::copy_file(besideProgram(), folder() /
                                     "gr\xC3\xB6\xC3\x9F"
                                     "e.so");
  rendara::testing::writeFile(folder() / "broken.so", "no library");
  const std::pair<std::string, bool> cases[] = {
      {besideProgram().string(), true},
      {"windows_test_module.so", true},
      {"./windows_test_module.so", true},
      {(folder() / "gr\xC3\xB6\xC3\x9F"
                   "e.so")
           .string(),
       true},
      {"libstandin_windows.so", true},  // where the system's loader looks
      {(working.path() / "only_here.so").string(), true},
      {"only_here.so", false},
      {"./only_here.so", false},
      {"sub/only_here.so", false},
      {(folder() / "broken.so").string(), false},
      {(folder() / "missing.so").string(), false},
      {folder().string(), false},
      {"vntrendaralive.so", false},
      {"", false},
  };
  for (const auto& [path, isFound] : cases) {
    const HMODULE module = load(path);
    EXPECT_EQ(module != nullptr, isFound) << path;
    if (module != nullptr) {
      EXPECT_EQ(openHandles(), std::vector<std::string>{"the module " + path});
      EXPECT_EQ(FreeLibrary(module), 1);
    }
  }
  EXPECT_EQ(LoadLibraryW(nullptr), nullptr);
  EXPECT_EQ(windowsMisuse(), std::vector<std::string>{"LoadLibraryW: the name of the module is null"});
}

TEST_F(Modules, AreCounted) {
  const HMODULE module = load(besideProgram());
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(load("windows_test_module.so"), module);
  EXPECT_EQ(openHandles().size(), 2u);
  EXPECT_EQ(FreeLibrary(module), 1);
  const auto entry = std::bit_cast<int (*)()>(GetProcAddress(module, "windowsTestEntry"));
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(entry(), getpid());
  EXPECT_EQ(CloseHandle(module), 0);
  EXPECT_EQ(FreeLibrary(module), 1);
  EXPECT_EQ(FreeLibrary(module), 0);
  EXPECT_EQ(FreeLibrary(nullptr), 0);
  EXPECT_EQ(GetProcAddress(module, "windowsTestEntry"), nullptr);
  EXPECT_EQ(windowsMisuse(), (std::vector<std::string>{"CloseHandle: the handle of an object is unknown",
                                                       "FreeLibrary: the module is not loaded",
                                                       "GetProcAddress: the module is not loaded"}));
}

TEST_F(Modules, HaveTheirOwnEntriesOnly) {
  const HMODULE module = load(besideProgram());
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(GetProcAddress(module, "windowsTestEntryOfAnother"), nullptr);
  EXPECT_EQ(GetProcAddress(module, "windowstestentry"), nullptr);
  EXPECT_EQ(GetProcAddress(module, "malloc"), nullptr) << "of a library that the module needs";
  EXPECT_TRUE(windowsMisuse().empty());
  EXPECT_EQ(GetProcAddress(module, nullptr), nullptr);
  EXPECT_EQ(windowsMisuse().size(), 1u);
  EXPECT_EQ(FreeLibrary(module), 1);
}

}  // namespace
}  // namespace standin
