// What Render and Update do with a registry or an installation that is not as it should be.
#include <filesystem>
#include <functional>
#include <ostream>
#include <string>

#include "tests/windows/live/live_fixture.h"

namespace rendara::testing {
namespace {

namespace fs = std::filesystem;
using Machine = WindowsMachine;

struct DamagedMachine {
  const char* name;
  std::function<void(const Machine&)> damage;
};
std::ostream& operator<<(std::ostream& stream, const DamagedMachine& test) { return stream << test.name; }

// A new folder with such a file in the place of the library.
void setLibrary(const Machine& machine, const std::function<void(const fs::path& file)>& make) {
  const fs::path folder = machine.path() / "library";
  fs::create_directory(folder);
  make(folder / Machine::builtLibrary().filename());
  Machine::setText(HKEY_CURRENT_USER, kVendorKey, L"RendaraActivePath", folder.wstring());
}

void setProgram(const fs::path& program) {
  Machine::setText(HKEY_LOCAL_MACHINE, kVersionKey, L"BinName", program.wstring());
}

// Text without a terminator and with half a character at its end.
std::vector<BYTE> oddBytes(const fs::path& path) {
  std::vector<BYTE> bytes = textBytes(path.wstring());
  bytes.push_back('x');
  return bytes;
}

const std::wstring kTooLong = L"C:\\" + std::wstring(300, L'x');

// ----- Nothing is to be had

const DamagedMachine kHopeless[] = {
    {"NoKeys",
     [](const Machine&) {
       Machine::removeKey(HKEY_LOCAL_MACHINE, kVendorKey);
       Machine::removeKey(HKEY_CURRENT_USER, kVendorKey);
     }},
    {"NoVersion", [](const Machine&) { Machine::remove(HKEY_LOCAL_MACHINE, kVendorKey, L"RendaraVersion"); }},
    {"VersionTooLong",
     [](const Machine&) {
       Machine::setText(HKEY_LOCAL_MACHINE, kVendorKey, L"RendaraVersion", L"Rendara 5" + std::wstring(40, L'x'));
     }},
    {"VersionWithoutKey",
     [](const Machine&) { Machine::setText(HKEY_LOCAL_MACHINE, kVendorKey, L"RendaraVersion", L"Rendara 7"); }},
    {"NoProgram", [](const Machine&) { Machine::remove(HKEY_LOCAL_MACHINE, kVersionKey, L"BinName"); }},
    {"ProgramIsNumber",
     [](const Machine&) { Machine::setNumber(HKEY_LOCAL_MACHINE, kVersionKey, L"BinName", 0x3A0043); }},
    {"ProgramIsExpandedText",
     [](const Machine&) {
       Machine::set(HKEY_LOCAL_MACHINE, kVersionKey, L"BinName", REG_EXPAND_SZ,
                    textBytes(Machine::builtProgram().wstring() + L'\0'));
     }},
    {"ProgramTooLong", [](const Machine&) { setProgram(kTooLong); }},
    {"ProgramMissing", [](const Machine& machine) { setProgram(machine.path() / "absent.exe"); }},
    {"ProgramIsFolder", [](const Machine& machine) { setProgram(machine.path()); }},
    {"ProgramIsText",
     [](const Machine& machine) {
       writeFile(machine.path() / "text.exe", "text");
       setProgram(machine.path() / "text.exe");
     }},
    {"OldVersionWithoutNewKey",
     [](const Machine&) {
       Machine::setText(HKEY_LOCAL_MACHINE, kVendorKey, L"RendaraVersion", L"Rendara 4");
       Machine::setText(HKEY_LOCAL_MACHINE, kVendorKey + L"\\Rendara 4", L"CurrentVersion", L"4");
       Machine::setText(HKEY_LOCAL_MACHINE, kVendorKey + L"\\Rendara 4", L"BinName", Machine::builtProgram().wstring());
       Machine::removeKey(HKEY_LOCAL_MACHINE, kVersionKey);
     }},
    {"NoLibrary", [](const Machine& machine) { setLibrary(machine, [](const fs::path&) {}); }},
    {"LibraryIsText",
     [](const Machine& machine) { setLibrary(machine, [](const fs::path& file) { writeFile(file, "text"); }); }},
    {"LibraryIsCut",
     [](const Machine& machine) {
       setLibrary(machine, [](const fs::path& file) {
         fs::copy_file(Machine::builtLibrary(), file);
         fs::resize_file(file, 3000);
       });
     }},
    {"LibraryWithoutEntry",
     [](const Machine& machine) {
       setLibrary(machine, [](const fs::path& file) { fs::copy_file(Machine::builtPlugin(), file); });
     }},
};

class HopelessMachineTest : public WindowsLinkTest, public ::testing::WithParamInterface<DamagedMachine> {};

TEST_P(HopelessMachineTest, RenderSaysFailedAndUpdateNothingUntilItIsRepaired) {
  GetParam().damage(*machine_);
  EXPECT_EQ(run(kRender), "Failed");
  EXPECT_EQ(run(kUpdate), "");
  EXPECT_TRUE(machine_->renderers().empty());
  EXPECT_EQ(session_.counts.surfacesTessellated, 0U) << "the model is not looked at";

  Machine::install();
  EXPECT_EQ(run(kRender), "");
  EXPECT_NE(onlyRenderer(), 0);
}

INSTANTIATE_TEST_SUITE_P(Machines, HopelessMachineTest, ::testing::ValuesIn(kHopeless),
                         [](const auto& test) { return std::string(test.param.name); });

// ----- What is needed is found all the same

const DamagedMachine kUsable[] = {
    {"OddTextWithoutTerminator",
     [](const Machine&) {
       Machine::set(HKEY_LOCAL_MACHINE, kVendorKey, L"RendaraVersion", REG_SZ, oddBytes("Rendara 5"));
       Machine::set(HKEY_LOCAL_MACHINE, kVersionKey, L"BinName", REG_SZ, oddBytes(Machine::builtProgram()));
       Machine::set(HKEY_CURRENT_USER, kVendorKey, L"RendaraActivePath", REG_SZ,
                    oddBytes(Machine::builtLibrary().parent_path()));
     }},
    {"VersionFillsItsRoom",
     [](const Machine&) {
       const std::wstring version = L"Rendara 5" + std::wstring(23, L'x');
       Machine::set(HKEY_LOCAL_MACHINE, kVendorKey, L"RendaraVersion", REG_SZ, textBytes(version));
       Machine::setText(HKEY_LOCAL_MACHINE, kVendorKey + L"\\" + version, L"BinName",
                        Machine::builtProgram().wstring());
       Machine::removeKey(HKEY_LOCAL_MACHINE, kVersionKey);
     }},
    {"ActiveFolderTooLong",
     [](const Machine&) { Machine::setText(HKEY_CURRENT_USER, kVendorKey, L"RendaraActivePath", kTooLong); }},
    {"ActiveFolderIsNumber",
     [](const Machine&) { Machine::setNumber(HKEY_CURRENT_USER, kVendorKey, L"RendaraActivePath", 1); }},
    {"ActiveFolderIsEmpty",
     [](const Machine&) { Machine::setText(HKEY_CURRENT_USER, kVendorKey, L"RendaraActivePath", L""); }},
    {"OldVersion",
     [](const Machine&) {
       Machine::setText(HKEY_LOCAL_MACHINE, kVendorKey, L"RendaraVersion", L"Rendara 4");
       Machine::setText(HKEY_LOCAL_MACHINE, kVendorKey + L"\\Rendara 4", L"CurrentVersion", L"4");
       Machine::setText(HKEY_LOCAL_MACHINE, kVendorKey + L"\\Rendara 4", L"BinName", L"C:\\absent.exe");
     }},
};

class UsableMachineTest : public WindowsLinkTest, public ::testing::WithParamInterface<DamagedMachine> {};

TEST_P(UsableMachineTest, RenderReachesTheRenderer) {
  GetParam().damage(*machine_);
  EXPECT_EQ(run(kRender), "");
  const int port = onlyRenderer();
  ASSERT_NE(port, 0);
  expectWhole(port, 1);
}

INSTANTIATE_TEST_SUITE_P(Machines, UsableMachineTest, ::testing::ValuesIn(kUsable),
                         [](const auto& test) { return std::string(test.param.name); });

// ----- A program that is no renderer

class SilentProgramTest : public WindowsLinkTest {};

// It ends at once; the plug-in waits its twenty seconds, and then turns to the port of the registry.
TEST_F(SilentProgramTest, LeavesTheRegistryPort) {
  const int port = machine_->startRenderer(machine_->path() / "elsewhere");
  WindowsMachine::setNumber(HKEY_CURRENT_USER, kPortKey, L"LiveLinkPort", static_cast<DWORD>(port));
  setProgram(L"C:\\windows\\system32\\rundll32.exe");
  EXPECT_EQ(run(kRender), "");
  expectWhole(port, 1);
}

}  // namespace
}  // namespace rendara::testing
