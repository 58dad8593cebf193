#include "standin/windows/registry.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>
#include <system_error>

#include "standin/windows/machine_folder.h"
#include "tests/standin/machine_fixture.h"

namespace standin {
namespace {

using rendara::testing::readFile;
using rendara::testing::TemporaryFolder;
using rendara::testing::writeFile;
using Bytes = std::vector<unsigned char>;

constexpr char kHeading[] = "Windows Registry Editor Version 5.00\n";

// ASCII and Latin-1 only.
std::string utf16(const std::string& latin1) {
  std::string bytes = "\xFF\xFE";
  for (const char unit : latin1) {
    bytes += unit;
    bytes += '\0';
  }
  return bytes;
}

std::string withCarriageReturns(const std::string& text) {
  std::string result;
  for (const char unit : text) {
    result += unit == '\n' ? std::string("\r\n") : std::string(1, unit);
  }
  return result;
}

const RegistryValue& valueOf(const Registry& registry, Hive hive, const std::string& key, const std::string& name) {
  const RegistryValue* value = registry.find(hive, key, name);
  if (value == nullptr) {
    throw std::runtime_error("there is no " + key + " : " + name);
  }
  return *value;
}

TEST(RegistryFile, ReadsEveryFormOfValueInEveryEncoding) {
  const std::string body = std::string(kHeading) +
                           "\n; a comment\n"
                           "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantor]\n"
                           "@=\"the default\"\n"
                           "\"Text\"=\"C:\\\\a \\\"b\\\" ; c]\" ; and a comment\n"
                           "\"a \\\"name\\\" = x\"=dword:0000Abcd\n"
                           "  \"Blanks\"  =  dword:7 ; seven\n"
                           "\"Bytes\"=hex:01,02,\\\n"
                           "  fF,\\\n"
                           "  3 ; the last\n"
                           "\"None\"=hex:\n"
                           "\"Raw\"=hex(1):41,00,42\n"
                           "\"Expanded\"=hex(2):25,00,00,00\n"
                           "\"Several\"=hex(7):41,00,00,00,00,00\n"
                           "\"Long\"=HEX(b):01,00,00,00,00,00,00,00\n"
                           "\"Short\"=hex(4):01,00\n"
                           "[hkey_current_user\\Odd]name]\n"
                           "\"Gone\"=\"x\"\n"
                           "\"GONE\"=-\n"
                           "[HKEY_CURRENT_USER\\Gone\\Below]\n"
                           "[-HKEY_CURRENT_USER\\gone]\n"
                           "[HKEY_USERS\\Empty]";
  const TemporaryFolder folder;
  const std::filesystem::path file = folder.path() / "r.reg";
  for (const std::string& content :
       {body, "\xEF\xBB\xBF" + withCarriageReturns(body), utf16(body), utf16(withCarriageReturns(body)) + "\n"}) {
    writeFile(file, content);
    const Registry registry = Registry::load(file);
    const auto value = [&registry](const char* name) -> const RegistryValue& {
      return valueOf(registry, Hive::kLocalMachine, "software\\VANTOR", name);
    };
    EXPECT_EQ(value("").text(), "the default");
    EXPECT_EQ(value("TEXT").text(), "C:\\a \"b\" ; c]");
    EXPECT_EQ(value("a \"name\" = x").number(), 0xABCDu);
    EXPECT_EQ(value("blanks").number(), 7u);
    EXPECT_EQ(value("Bytes").data, (Bytes{1, 2, 255, 3}));
    EXPECT_EQ(value("Bytes").type, kRegistryBytes);
    EXPECT_EQ(value("None").data, Bytes{});
    EXPECT_EQ(value("Raw").type, kRegistryText);
    EXPECT_EQ(value("Raw").data, (Bytes{0x41, 0, 0x42}));
    EXPECT_EQ(value("Raw").text(), "A");
    EXPECT_EQ(value("Expanded").text(), "%");
    EXPECT_EQ(value("Several").type, kRegistryTexts);
    EXPECT_EQ(value("Several").text(), std::nullopt);
    EXPECT_EQ(value("Long").type, 11u);
    EXPECT_EQ(value("Short").number(), std::nullopt) << "too short for a number";
    EXPECT_TRUE(registry.hasKey(Hive::kCurrentUser, "odd]NAME"));
    EXPECT_EQ(registry.find(Hive::kCurrentUser, "Odd]name", "Gone"), nullptr);
    EXPECT_FALSE(registry.hasKey(Hive::kCurrentUser, "Gone"));
    EXPECT_FALSE(registry.hasKey(Hive::kCurrentUser, "Gone\\Below"));
    EXPECT_TRUE(registry.hasKey(Hive::kUsers, "Empty"));
    EXPECT_TRUE(registry.hasKey(Hive::kLocalMachine, "SOFTWARE")) << "keys above are there too";
  }
}

TEST(RegistryFile, NamesDamagedLinesAndKeepsTheOthers) {
  struct Case {
    const char* lines;
    std::size_t fault;  // counted from the first of the lines
    const char* text;
  };
  const Case cases[] = {
      {"\"a\"=\"no end", 1, "no closing quote"},
      {"\"a=\"x\"", 1, "no = after"},
      {"\"a\"", 1, "no = after"},
      {"\"a\"=", 1, "nothing after ="},
      {"\"a\"=\"C:\\temp\"", 1, "written \\\\"},
      {"\"a\"=\"x\\", 1, "written \\\\"},
      {"\"a\"=\"x\" y", 1, "\"y\" is one too many"},
      {"\"a\"=- x", 1, "one too many"},
      {"\"a\"=dword:", 1, "is no number"},
      {"\"a\"=dword:123456789", 1, "is no number"},
      {"\"a\"=dword:12g", 1, "is no number"},
      {"\"a\"=dword:-1", 1, "is no number"},
      {"\"a\"=hex:1,2,", 1, "missing after the last comma"},
      {"\"a\"=hex:1,,2", 1, "is no byte"},
      {"\"a\"=hex:1,100", 1, "is no byte"},
      {"; first\n\"a\"=hex:1,\\\n  zz,\\\n  2", 2, "is no byte"},
      {"\"a\"=hex", 1, "no colon"},
      {"\"a\"=hex(:1", 1, "is no type"},
      {"\"a\"=hex():1", 1, "is no type"},
      {"\"a\"=hex(x):1", 1, "is no type"},
      {"\"a\"=hexx1:1", 1, "is no type"},
      {"\"a\"=qword:1", 1, "is no value"},
      {"a=\"x\"", 1, "neither a key, a value nor a comment"},
      {"[HKEY_NONE\\x]\n\"a\"=\"x\"\n[HKEY_USERS\\Before]", 1, "\"HKEY_NONE\" is no hive"},
      {"[HKEY_NONE\\x]\n\"a\"=hex:1,\\\n  2\n[HKEY_USERS\\Before]", 1, "is no hive"},
      {"[HKEY_USERS\\x\n\"a\"=\"x\"\n[HKEY_USERS\\Before]", 1, "no closing bracket"},
      {"[HKEY_USERS\\x] y\n[HKEY_USERS\\Before]", 1, "one too many"},
      {"[-HKEY_USERS\\x]\n\"a\"=\"x\"\n[HKEY_USERS\\Before]", 2, "below no key"},
      {"\"a\x01\"=\"x\"", 1, "control character"},
      {"[HKEY_USERS\\x\x01]\n[HKEY_USERS\\Before]", 1, "control character"},
  };
  const TemporaryFolder folder;
  const std::filesystem::path file = folder.path() / "r.reg";
  for (const Case& each : cases) {
    SCOPED_TRACE(each.lines);
    writeFile(file,
              std::string(kHeading) + "[HKEY_USERS\\Before]\n\"One\"=dword:1\n" + each.lines + "\n\"Two\"=dword:2\n");
    std::vector<RegistryFault> faults;
    const Registry registry = Registry::load(file, faults);
    ASSERT_EQ(faults.size(), 1u);
    EXPECT_EQ(faults[0].line, 3 + each.fault);
    EXPECT_NE(faults[0].text.find(each.text), std::string::npos) << faults[0].text;
    EXPECT_EQ(registry.find(Hive::kUsers, "Before", "a"), nullptr);
    EXPECT_EQ(valueOf(registry, Hive::kUsers, "Before", "One").number(), 1u);
    EXPECT_EQ(valueOf(registry, Hive::kUsers, "Before", "Two").number(), 2u);
    try {
      Registry::load(file);
      ADD_FAILURE() << "was taken";
    } catch (const std::runtime_error& error) {
      EXPECT_EQ(error.what(), file.string() + ":" + std::to_string(3 + each.fault) + ": " + faults[0].text);
    }
  }
}

TEST(RegistryFile, NeedsTheHeadingButIsMissedByNobody) {
  const TemporaryFolder folder;
  const std::filesystem::path file = folder.path() / "r.reg";
  std::vector<RegistryFault> faults;
  EXPECT_FALSE(Registry::load(file).hasKey(Hive::kUsers, "Key"));
  for (const char* content : {"[HKEY_USERS\\Key]\n", "REGEDIT4\n[HKEY_USERS\\Key]\n"}) {
    writeFile(file, content);
    faults.clear();
    EXPECT_TRUE(Registry::load(file, faults).hasKey(Hive::kUsers, "Key"));
    ASSERT_EQ(faults.size(), 1u);
    EXPECT_EQ(faults[0].line, 1u);
  }
  EXPECT_THROW(Registry::load(folder.path(), faults), std::runtime_error) << "a folder";
}

TEST(RegistryFile, WritesWhatWindowsImports) {
  Registry registry;
  registry.setText(Hive::kLocalMachine, "SOFTWARE\\\\Vantor\\", "", "say \"\xC3\xB6\" \\");
  registry.setNumber(Hive::kLocalMachine, "software\\vantor", "Port", 0x10E1);
  registry.setBytes(Hive::kLocalMachine, "SOFTWARE\\Vantor", "Raw", kRegistryText, {0x41, 0, 0x42});
  registry.setBytes(Hive::kLocalMachine, "SOFTWARE\\Vantor", "Z", kRegistryBytes, Bytes(30, 0xAB));
  registry.setText(Hive::kUsers, "", "Of the hive", "");
  const TemporaryFolder folder;
  const std::filesystem::path file = folder.path() / "new" / "r.reg";
  registry.save(file);
  std::string bytes;
  for (int count = 0; count < 30; ++count) {
    bytes += count == 0 ? "ab" : count == 23 ? ",\\\r\n  ab" : ",ab";
  }
  EXPECT_EQ(readFile(file), utf16("Windows Registry Editor Version 5.00\r\n\r\n"
                                  "[HKEY_LOCAL_MACHINE\\SOFTWARE]\r\n\r\n"
                                  "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantor]\r\n"
                                  "@=\"say \\\"\xF6\\\" \\\\\"\r\n"
                                  "\"Port\"=dword:000010e1\r\n"
                                  "\"Raw\"=hex(1):41,00,42\r\n"
                                  "\"Z\"=hex:" +
                                  bytes +
                                  "\r\n\r\n"
                                  "[HKEY_USERS]\r\n"
                                  "\"Of the hive\"=\"\"\r\n\r\n"));
  for (const auto& entry : std::filesystem::directory_iterator(file.parent_path())) {
    EXPECT_EQ(entry.path(), file) << "left behind";
  }
}

TEST(RegistryFile, KeepsEveryValueThroughAFile) {
  const std::pair<std::uint32_t, Bytes> values[] = {
      {kRegistryText, {}},
      {kRegistryText, {0}},
      {kRegistryText, {0, 0}},
      {kRegistryText, {0x41, 0}},                    // not terminated
      {kRegistryText, {0x41, 0, 0, 0, 0x42}},        // odd
      {kRegistryText, {0x41, 0, 0, 0, 0, 0}},        // terminated twice
      {kRegistryText, {0x0D, 0, 0x0A, 0, 0, 0}},     // two lines
      {kRegistryText, {0x3D, 0xD8, 0, 0xDE, 0, 0}},  // two units that are one character
      {kRegistryText, {0x3D, 0xD8, 0, 0}},           // half a character
      {kRegistryText, {0xFD, 0xFF, 0, 0}},
      {kRegistryExpandedText, {0x25, 0, 0, 0}},
      {kRegistryNumber, {1, 2, 3, 4}},
      {kRegistryNumber, {1, 2, 3}},
      {kRegistryBytes, Bytes(1000, 0x5A)},
      {0, {1}},
      {0xFFFFFFFF, {2}},
  };
  Registry registry;
  unsigned count = 0;
  for (const auto& [type, data] : values) {
    registry.setBytes(Hive::kCurrentConfig, "K", "\"\\]=;" + std::to_string(count++), type, data);
  }
  const TemporaryFolder folder;
  registry.save(folder.path() / "r.reg");
  const Registry again = Registry::load(folder.path() / "r.reg");
  count = 0;
  for (const auto& [type, data] : values) {
    SCOPED_TRACE(count);
    const RegistryValue& value = valueOf(again, Hive::kCurrentConfig, "k", "\"\\]=;" + std::to_string(count++));
    EXPECT_EQ(value.type, type);
    EXPECT_EQ(value.data, data);
  }
}

TEST(RegistryFile, FindsWithoutRegardToCaseAndRemovesWholeKeys) {
  Registry registry;
  registry.setNumber(Hive::kCurrentUser,
                     "Software\\Gr\xC3\xB6\xC3\x9F"
                     "e",
                     "\xC3\x84", 1);
  registry.setNumber(Hive::kCurrentUser,
                     "SOFTWARE\\GR\xC3\x96\xC3\x9F"
                     "E",
                     "\xC3\xA4", 2);
  EXPECT_EQ(valueOf(registry, Hive::kCurrentUser,
                    "software\\gr\xC3\xB6\xC3\x9F"
                    "e",
                    "\xC3\xA4")
                .number(),
            2u);
  EXPECT_EQ(valueOf(registry, Hive::kCurrentUser,
                    "software\\gr\xC3\xB6\xC3\x9F"
                    "e",
                    "\xC3\xA4")
                .name,
            "\xC3\x84");
  EXPECT_FALSE(registry.hasKey(Hive::kLocalMachine, "Software"));
  EXPECT_TRUE(registry.hasKey(Hive::kLocalMachine, ""));

  for (const char* key : {"a", "a\\b", "a\\b\\c", "a b", "a-", "ab"}) {
    registry.setNumber(Hive::kUsers, key, "x", 1);
  }
  EXPECT_TRUE(registry.remove(Hive::kUsers, "A\\B", "X"));
  EXPECT_FALSE(registry.remove(Hive::kUsers, "A\\B", "X"));
  EXPECT_TRUE(registry.removeKey(Hive::kUsers, "A"));
  EXPECT_FALSE(registry.removeKey(Hive::kUsers, "A"));
  for (const char* key : {"a", "a\\b", "a\\b\\c"}) {
    EXPECT_FALSE(registry.hasKey(Hive::kUsers, key)) << key;
  }
  for (const char* key : {"a b", "a-", "ab"}) {
    EXPECT_TRUE(registry.hasKey(Hive::kUsers, key)) << key;
  }
  EXPECT_THROW(registry.setNumber(Hive::kUsers, "a\nb", "x", 1), std::invalid_argument);
  EXPECT_THROW(registry.setNumber(Hive::kUsers, "a", "x\n", 1), std::invalid_argument);
}

// Ends the process when it fails.
void changeOften(const std::filesystem::path& file, const std::string& prefix, unsigned changes) noexcept {
  for (unsigned change = 0; change < changes; ++change) {
    changeRegistry(file, [&](Registry& registry) {
      registry.setNumber(Hive::kUsers, "k", prefix + std::to_string(change), change);
    });
  }
}

TEST(RegistryFile, LosesNoChangeOfSeveralProcesses) {
  constexpr unsigned kProcesses = 4;
  constexpr unsigned kChanges = 25;
  const TemporaryFolder folder;
  const std::filesystem::path file = folder.path() / "machine" / "r.reg";
  for (unsigned process = 0; process < kProcesses; ++process) {
    if (fork() == 0) {
      changeOften(file, std::to_string(process) + ".", kChanges);
      _exit(0);
    }
  }
  for (unsigned process = 0; process < kProcesses; ++process) {
    int status = -1;
    wait(&status);
    EXPECT_EQ(status, 0);
  }
  const Registry registry = Registry::load(file);
  for (unsigned at = 0; at < kProcesses * kChanges; ++at) {
    const std::string name = std::to_string(at / kChanges) + "." + std::to_string(at % kChanges);
    EXPECT_EQ(valueOf(registry, Hive::kUsers, "k", name).number(), at % kChanges);
  }
  const std::string before = readFile(file);
  EXPECT_THROW(changeRegistry(file,
                              [](Registry& all) {
                                all.removeKey(Hive::kUsers, "k");
                                throw std::runtime_error("changed its mind");
                              }),
               std::runtime_error);
  EXPECT_EQ(readFile(file), before);
}

TEST(RegistryFile, KeepsTheOldOneWhenTheNewCannotBeWritten) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.path() / "r.reg");
  EXPECT_THROW(Registry().save(folder.path() / "r.reg"), std::system_error) << "a folder has the name";
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

TEST(MachineFolder, IsWhereTheEnvironmentSays) {
  struct Case {
    std::optional<std::string> machine, state, home;
    std::string expected;  // empty: refused
  };
  const Case cases[] = {
      {"/m", "/s", "/h", "/m"},
      {std::nullopt, "/s", "/h", "/s/rendara-standin"},
      {"", "", "/h", "/h/.local/state/rendara-standin"},
      {std::nullopt, "relative", "/h", "/h/.local/state/rendara-standin"},
      {"relative", "/s", "/h", ""},
  };
  for (const Case& each : cases) {
    const VariableReplaced machine("RENDARA_MACHINE", each.machine);
    const VariableReplaced state("XDG_STATE_HOME", each.state);
    const VariableReplaced home("HOME", each.home);
    if (each.expected.empty()) {
      EXPECT_THROW(machineFolder(), std::runtime_error);
    } else {
      EXPECT_EQ(machineFolder(), each.expected);
    }
  }
}

}  // namespace
}  // namespace standin
