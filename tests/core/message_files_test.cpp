// The texts that the code looks up against those that the message files hold, in every language.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <string>

#include "standin/cad/message_file.h"
#include "standin/windows/code_page.h"
#include "tests/support/temporary_folder.h"

namespace rendara {
namespace {

namespace fs = std::filesystem;

const fs::path kTexts = RENDARA_SOURCE_DIR "/resources/text";
constexpr std::size_t kMostCharacters = 80;  // of a line of the host, without the terminator

// Every text in the sources that is made like a key: "rendaraBrowse", "Rendara settings".
std::set<std::string> keysOfTheCode() {
  static const std::regex kKey("\"(rendara[A-Z][A-Za-z0-9]*|Rendara [a-z]+)\"");
  std::set<std::string> keys;
  for (const char* room : {"core", "settings"}) {
    for (const auto& file : fs::directory_iterator(fs::path(RENDARA_SOURCE_DIR) / room)) {
      const std::string text = testing::readFile(file.path());
      for (std::sregex_iterator found(text.begin(), text.end(), kKey), end; found != end; ++found) {
        keys.insert((*found)[1]);
      }
    }
  }
  return keys;
}

struct Entry {
  std::string english;
  std::string translation;
};

std::map<std::string, Entry> entriesOf(const fs::path& file) {
  std::ifstream lines(file);
  std::map<std::string, Entry> entries;
  for (std::string key, english, translation, rest; std::getline(lines, key);) {
    std::getline(lines, english);
    std::getline(lines, translation);
    std::getline(lines, rest);
    EXPECT_EQ(rest, "#") << file << ": " << key;
    EXPECT_TRUE(entries.emplace(key, Entry{english, translation}).second) << file << " has twice " << key;
  }
  return entries;
}

TEST(MessageFiles, HoldTheKeysOfTheCodeAndNoOthers) {
  std::set<std::string> held;
  for (const auto& [key, entry] : entriesOf(kTexts / "rendara_msg.txt")) {
    held.insert(key);
    EXPECT_FALSE(entry.english.empty()) << key;
    EXPECT_LE(standin::wideFromUtf8(entry.english).size(), kMostCharacters) << key;
  }
  EXPECT_EQ(held, keysOfTheCode());
  EXPECT_GT(held.size(), 40U);
}

TEST(MessageFiles, TranslationsAreWhole) {
  const auto english = entriesOf(kTexts / "rendara_msg.txt");
  for (const char* language : {"german", "french", "japanese"}) {
    const auto translated = entriesOf(kTexts / language / "rendara_msg.txt");
    EXPECT_EQ(translated.size(), english.size()) << language;
    for (const auto& [key, entry] : english) {
      ASSERT_TRUE(translated.contains(key)) << language << ": " << key;
      const Entry& own = translated.at(key);
      EXPECT_EQ(own.english, entry.english) << language << ": " << key;
      EXPECT_LE(standin::wideFromUtf8(own.translation).size(), kMostCharacters) << language << ": " << key;
      EXPECT_EQ(own.translation == entry.english, key == "rendaraOK" || key == "rendaraOk") << language << ": " << key;
      EXPECT_NE(own.translation, "#") << language << ": " << key;
    }
  }
}

}  // namespace
}  // namespace rendara
