#include <gtest/gtest.h>

#include <bit>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "platform/windows_api.h"
#include "standin/windows/code_page.h"
#include "tests/standin/machine_fixture.h"

namespace standin {
namespace {

constexpr REGSAM kRead = 0x20019;
constexpr REGSAM kRead32 = 0x20219;

const HKEY kUnknown = std::bit_cast<HKEY>(std::uintptr_t{0x77});

using RegistryOperations = OnMachine;

// What a query of a value gives with enough room, and its status.
struct Answer {
  LSTATUS status = -1;
  DWORD type = 0;
  std::vector<BYTE> data;
};

Answer query(HKEY key, const wchar_t* name) {
  Answer answer;
  answer.data.resize(1000);
  auto size = static_cast<DWORD>(answer.data.size());
  answer.status = RegQueryValueExW(key, name, nullptr, &answer.type, answer.data.data(), &size);
  answer.data.resize(answer.status == ERROR_SUCCESS ? size : 0);
  return answer;
}

std::vector<BYTE> bytesOf(const std::wstring& text) {
  std::vector<BYTE> bytes(text.size() * sizeof(wchar_t));
  std::memcpy(bytes.data(), text.data(), bytes.size());
  return bytes;
}

std::vector<BYTE> followedBy(std::vector<BYTE> bytes, BYTE last) {
  bytes.push_back(last);
  return bytes;
}

HKEY opened(HKEY key, const wchar_t* path, REGSAM access = kRead) {
  HKEY result = nullptr;
  EXPECT_EQ(RegOpenKeyExW(key, path, 0, access, &result), ERROR_SUCCESS);
  return result;
}

TEST_F(RegistryOperations, OpenKeys) {
  writeRegistry("[HKEY_CURRENT_USER\\SOFTWARE\\Vantor\\Rendara 5]\n[HKEY_LOCAL_MACHINE\\Other]\n");
  const HKEY software = opened(HKEY_CURRENT_USER, L"SOFTWARE");
  struct Case {
    HKEY key;
    const wchar_t* path;
    DWORD options;
    REGSAM access;
    LSTATUS status;
  };
  const Case cases[] = {
      {HKEY_CURRENT_USER, L"SOFTWARE\\Vantor", 0, kRead, 0},
      {HKEY_CURRENT_USER, L"software\\VANTOR\\rendara 5", 0, kRead32, 0},
      {HKEY_CURRENT_USER, L"SOFTWARE\\Vantor\\", 0, kRead, 0},
      {software, L"Vantor\\\\Rendara 5", 0, kRead, 0},
      {software, L"", 0, kRead, 0},
      {software, nullptr, 0, kRead, 0},
      {HKEY_LOCAL_MACHINE, L"SOFTWARE\\Vantor", 0, kRead, 2},
      {software, L"Rendara 5", 0, kRead, 2},
      {HKEY_CURRENT_USER, L"SOFTWARE\\Vantor\\Rendara", 0, kRead, 2},
      {HKEY_CURRENT_USER, L"SOFTWARE/Vantor", 0, kRead, 2},
      {HKEY_CURRENT_USER, L"\\SOFTWARE", 0, kRead, 161},
      {HKEY_CURRENT_USER, L"SOFTWARE", 0, 0x20006, 5},  // to write
      {HKEY_CURRENT_USER, L"SOFTWARE", 0, 0xF003F, 5},  // everything
      {HKEY_CURRENT_USER, L"SOFTWARE", 0, kRead | 0x300, 87},
      {HKEY_CURRENT_USER, L"SOFTWARE", 1, kRead, 87},
      {nullptr, L"SOFTWARE", 0, kRead, 6},
      {kUnknown, L"SOFTWARE", 0, kRead, 6},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.path != nullptr ? utf8FromWide(each.path) : "null");
    HKEY key = kUnknown;
    EXPECT_EQ(RegOpenKeyExW(each.key, each.path, each.options, each.access, &key), each.status);
    EXPECT_EQ(key != nullptr, each.status == ERROR_SUCCESS);
    if (key != nullptr) {
      EXPECT_EQ(openHandles().size(), 2u);
      EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
    }
  }
  EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, L"SOFTWARE", 0, kRead, nullptr), 87);
  EXPECT_EQ(opened(HKEY_LOCAL_MACHINE, L""), HKEY_LOCAL_MACHINE);
  EXPECT_EQ(RegCloseKey(HKEY_LOCAL_MACHINE), ERROR_SUCCESS);
  EXPECT_EQ(RegCloseKey(software), ERROR_SUCCESS);
  EXPECT_EQ(windowsMisuse(), (std::vector<std::string>{"RegOpenKeyExW: the handle of a key is null",
                                                       "RegOpenKeyExW: the handle of a key is unknown"}));
}

TEST_F(RegistryOperations, DeliverValuesInWideCharactersOfThisProcess) {
  writeRegistry(
      "[HKEY_CURRENT_USER\\k]\n"
      "@=\"default\"\n"
      "\"Text\"=\"\xC3\xB6\xF0\x9F\x98\x80\"\n"
      "\"Empty\"=\"\"\n"
      "\"Nothing\"=hex(1):\n"
      "\"Bare\"=hex(1):41,00,42,00\n"
      "\"Odd\"=hex(1):41,00,42\n"
      "\"Half\"=hex(1):3d,d8\n"
      "\"One\"=hex(1):7f\n"
      "\"Several\"=hex(7):41,00,00,00,00,00\n"
      "\"Bytes\"=hex:41,00\n"
      "\"Port\"=dword:000010e1\n");
  const HKEY key = opened(HKEY_CURRENT_USER, L"k");
  struct Case {
    const wchar_t* name;
    DWORD type;
    std::vector<BYTE> data;
  };
  const Case cases[] = {
      {nullptr, REG_SZ, bytesOf(std::wstring(L"default\0", 8))},
      {L"", REG_SZ, bytesOf(std::wstring(L"default\0", 8))},
      {L"TEXT", REG_SZ, bytesOf(std::wstring(L"\u00F6\U0001F600\0", 3))},
      {L"Empty", REG_SZ, bytesOf(std::wstring(1, L'\0'))},
      {L"Nothing", REG_SZ, {}},
      {L"Bare", REG_SZ, bytesOf(L"AB")},
      {L"Odd", REG_SZ, followedBy(bytesOf(L"A"), 0x42)},
      {L"Half", REG_SZ, bytesOf(std::wstring(1, wchar_t{0xD83D}))},
      {L"One", REG_SZ, {0x7F}},
      {L"Several", 7, bytesOf(std::wstring(L"A\0\0", 3))},
      {L"Bytes", 3, {0x41, 0}},
      {L"Port", REG_DWORD, {0xE1, 0x10, 0, 0}},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.name != nullptr ? utf8FromWide(each.name) : "null");
    const Answer answer = query(key, each.name);
    EXPECT_EQ(answer.status, ERROR_SUCCESS);
    EXPECT_EQ(answer.type, each.type);
    EXPECT_EQ(answer.data, each.data);
  }
  EXPECT_EQ(query(key, L"Missing").status, 2);
  EXPECT_EQ(query(HKEY_CURRENT_USER, nullptr).status, 2) << "the default value of a hive is not set";
  EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
}

TEST_F(RegistryOperations, TellTheSizeOfWhatDoesNotFit) {
  writeRegistry("[HKEY_CURRENT_USER\\k]\n\"Port\"=dword:04030201\n");
  const HKEY key = opened(HKEY_CURRENT_USER, L"k");
  struct Case {
    bool hasData;
    DWORD room;
    LSTATUS status;
    std::vector<BYTE> content;
  };
  const Case cases[] = {{false, 0, 0, {9, 9, 9, 9, 9}},
                        {true, 0, 234, {9, 9, 9, 9, 9}},
                        {true, 3, 234, {9, 9, 9, 9, 9}},
                        {true, 4, 0, {1, 2, 3, 4, 9}},
                        {true, 5, 0, {1, 2, 3, 4, 9}}};
  for (const Case& each : cases) {
    SCOPED_TRACE(each.room);
    std::vector<BYTE> room(5, 9);
    DWORD size = each.room;
    DWORD type = 0;
    EXPECT_EQ(RegQueryValueExW(key, L"Port", nullptr, &type, each.hasData ? room.data() : nullptr, &size), each.status);
    EXPECT_EQ(size, 4u);
    EXPECT_EQ(type, REG_DWORD);
    EXPECT_EQ(room, each.content);
  }
  BYTE byte = 0;
  DWORD size = 1;
  EXPECT_EQ(RegQueryValueExW(key, L"Port", nullptr, nullptr, nullptr, nullptr), ERROR_SUCCESS);
  EXPECT_EQ(RegQueryValueExW(key, L"Port", nullptr, nullptr, &byte, nullptr), 87);
  EXPECT_EQ(RegQueryValueExW(key, L"Port", &size, nullptr, &byte, &size), 87);
  EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);

  const HKEY blind = opened(HKEY_CURRENT_USER, L"k", 0x20008);  // may list, may not query
  EXPECT_EQ(query(blind, L"Port").status, 5);
  EXPECT_EQ(RegCloseKey(blind), ERROR_SUCCESS);
}

TEST_F(RegistryOperations, PreferTheNodeOf32BitPrograms) {
  writeRegistry(
      "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantor]\n\"Bits\"=dword:40\n"
      "[HKEY_LOCAL_MACHINE\\SOFTWARE\\WOW6432Node\\Vantor]\n\"Bits\"=dword:20\n"
      "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Only64]\n\"Bits\"=dword:40\n"
      "[HKEY_LOCAL_MACHINE\\SOFTWARE\\WOW6432NodeX]\n\"Bits\"=dword:20\n"
      "[HKEY_LOCAL_MACHINE\\SOFTWAREX]\n\"Bits\"=dword:40\n"
      "[HKEY_CURRENT_USER\\SOFTWARE\\Vantor]\n\"Bits\"=dword:40\n"
      "[HKEY_CURRENT_USER\\SOFTWARE\\WOW6432Node\\Vantor]\n\"Bits\"=dword:20\n");
  struct Case {
    HKEY hive;
    const wchar_t* path;
    REGSAM access;
    BYTE bits;
  };
  const Case cases[] = {{HKEY_LOCAL_MACHINE, L"SOFTWARE\\Vantor", kRead, 0x40},
                        {HKEY_LOCAL_MACHINE, L"SOFTWARE\\Vantor", kRead | 0x100, 0x40},
                        {HKEY_LOCAL_MACHINE, L"software\\vantor", kRead32, 0x20},
                        {HKEY_LOCAL_MACHINE, L"SOFTWARE\\wow6432node\\Vantor", kRead32, 0x20},
                        {HKEY_LOCAL_MACHINE, L"SOFTWARE\\Only64", kRead32, 0x40},
                        {HKEY_LOCAL_MACHINE, L"SOFTWAREX", kRead32, 0x40},
                        {HKEY_CURRENT_USER, L"SOFTWARE\\Vantor", kRead32, 0x40}};
  for (const Case& each : cases) {
    const HKEY key = opened(each.hive, each.path, each.access);
    EXPECT_EQ(query(key, L"Bits").data, (std::vector<BYTE>{each.bits, 0, 0, 0})) << utf8FromWide(each.path);
    EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
  }
}

TEST_F(RegistryOperations, SeeWhatOthersWrote) {
  HKEY key = nullptr;
  EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, L"k", 0, kRead, &key), 2) << "there is no file";
  for (unsigned port = 1; port <= 50; ++port) {
    changeRegistry(registryFile(), [port](Registry& all) { all.setNumber(Hive::kCurrentUser, "k", "Port", port); });
    key = opened(HKEY_CURRENT_USER, L"k");
    EXPECT_EQ(query(key, L"Port").data, (std::vector<BYTE>{static_cast<BYTE>(port), 0, 0, 0}));
    EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
  }
  key = opened(HKEY_CURRENT_USER, L"k");
  writeRegistry("damaged\n[HKEY_CURRENT_USER\\k]\n\"Port\"=dword:77\n\"Port\"=nothing\n");
  EXPECT_EQ(query(key, L"Port").data, (std::vector<BYTE>{0x77, 0, 0, 0})) << "what can be read of a damaged file";
  writeRegistry("");
  EXPECT_EQ(query(key, L"Port").status, 1018) << "the key was removed";
  std::filesystem::remove(registryFile());
  std::filesystem::create_directory(registryFile());
  EXPECT_EQ(query(key, L"Port").status, 1018) << "no registry that can be read";
  EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
}

// Two files of one stamp are told apart as long as they are new; an old file is kept until its time or size changes.
TEST_F(RegistryOperations, ReadAFileAgainWhenItChanges) {
  const auto now = std::filesystem::file_time_type::clock::now();
  const auto written = [now](const char* port, int hoursAgo) {
    writeRegistry(std::string("[HKEY_CURRENT_USER\\k]\n\"Port\"=dword:") + port + "\n");
    std::filesystem::last_write_time(registryFile(), now - std::chrono::hours(hoursAgo));
  };
  const auto port = [] {
    const HKEY key = opened(HKEY_CURRENT_USER, L"k");
    const Answer answer = query(key, L"Port");
    EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
    return answer.data.empty() ? 0 : answer.data[0];
  };
  written("1", 5);
  EXPECT_EQ(port(), 1);
  EXPECT_EQ(port(), 1);
  written("2", 4);
  EXPECT_EQ(port(), 2);
  written("3", 6);
  EXPECT_EQ(port(), 3);
  written("4", -1);
  EXPECT_EQ(port(), 4);
  written("5", -1);
  EXPECT_EQ(port(), 5);
}

TEST_F(RegistryOperations, TakeNarrowPathsInTheSystemCodePage) {
  writeRegistry(
      "[HKEY_CURRENT_USER\\Gr\xC3\xB6\xC3\x9F"
      "e]\n");
  const unsigned before = systemCodePage();
  struct Case {
    unsigned codePage;
    const char* path;
    LSTATUS status;
  };
  for (const Case& each : {Case{1252,
                                "gr\xF6\xDF"
                                "e",
                                0},
                           Case{1252,
                                "gr\xC3\xB6\xC3\x9F"
                                "e",
                                2},
                           Case{65001,
                                "gr\xC3\xB6\xC3\x9F"
                                "e",
                                0},
                           Case{1252, "g", 2}}) {
    ASSERT_TRUE(setSystemCodePage(each.codePage));
    HKEY key = nullptr;
    EXPECT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, each.path, 0, kRead, &key), each.status) << each.path;
    if (key != nullptr) {
      EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
    }
  }
  HKEY key = nullptr;
  EXPECT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, nullptr, 0, kRead, &key), ERROR_SUCCESS);
  EXPECT_EQ(key, HKEY_CURRENT_USER);
  setSystemCodePage(before);
}

TEST_F(RegistryOperations, NoteKeysThatAreNotOpen) {
  writeRegistry("[HKEY_CURRENT_USER\\Vantor]\n\"a\"=\"x\"\n");
  const HKEY key = opened(HKEY_CURRENT_USER, L"Vantor");
  const HKEY other = opened(HKEY_CURRENT_USER, L"Vantor");
  EXPECT_NE(key, other);
  EXPECT_EQ(openHandles(), (std::vector<std::string>(2, "the key HKEY_CURRENT_USER\\Vantor")));
  EXPECT_EQ(CloseHandle(key), 0);
  EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
  HKEY below = nullptr;
  EXPECT_EQ(RegCloseKey(key), 6);
  EXPECT_EQ(query(key, L"a").status, 6);
  EXPECT_EQ(RegOpenKeyExA(key, "x", 0, kRead, &below), 6);
  EXPECT_EQ(query(key, L"a").status, 6) << "noted once";
  EXPECT_EQ(RegCloseKey(kUnknown), 6);
  EXPECT_EQ(RegCloseKey(nullptr), 6);
  EXPECT_EQ(query(other, L"a").status, ERROR_SUCCESS);
  EXPECT_EQ(RegCloseKey(other), ERROR_SUCCESS);
  EXPECT_EQ(windowsMisuse(), (std::vector<std::string>{"CloseHandle: the handle of an object is that of something else",
                                                       "RegCloseKey: the handle of a key is closed already",
                                                       "RegQueryValueExW: the handle of a key is closed already",
                                                       "RegOpenKeyExA: the handle of a key is closed already",
                                                       "RegCloseKey: the handle of a key is unknown",
                                                       "RegCloseKey: the handle of a key is null"}));
  forgetWindowsMisuse();
  EXPECT_EQ(RegCloseKey(key), 6);
  EXPECT_EQ(windowsMisuse().size(), 1u) << "noted again after it was forgotten";
}

}  // namespace
}  // namespace standin
