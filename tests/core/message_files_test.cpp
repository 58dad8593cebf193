// The texts that the code looks up against those that the message files hold, in every language.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <string_view>

#include "standin/cad/message_file.h"
#include "standin/windows/code_page.h"
#include "tests/support/temporary_folder.h"

namespace rendara {
namespace {

namespace fs = std::filesystem;

const fs::path kTexts = RENDARA_SOURCE_DIR "/resources/text";
constexpr std::size_t kMostCharacters = 80;  // of a line of the host, without the terminator

bool isKey(const std::string& text) {
  const auto all = [&text](std::size_t from, int (*kind)(int)) {
    return text.size() > from && std::all_of(text.begin() + static_cast<std::ptrdiff_t>(from), text.end(),
                                             [kind](unsigned char letter) { return kind(letter) != 0; });
  };
  constexpr std::string_view kCompact = "rendara";
  constexpr std::string_view kWords = "Rendara ";
  if (text.starts_with(kWords)) return all(kWords.size(), std::islower);
  return text.starts_with(kCompact) && all(kCompact.size(), std::isalnum) &&
         std::isupper(static_cast<unsigned char>(text[kCompact.size()])) != 0;
}

// Every text in the sources that is made like a key: "rendaraBrowse", "Rendara settings".
std::set<std::string> keysOfTheCode() {
  std::set<std::string> keys;
  for (const char* room : {"core", "settings"}) {
    for (const auto& file : fs::directory_iterator(fs::path(RENDARA_SOURCE_DIR) / room)) {
      const std::string text = testing::readFile(file.path());
      for (std::size_t begin = text.find('"'); begin != std::string::npos; begin = text.find('"', begin + 1)) {
        const std::string quoted = text.substr(begin + 1, text.find('"', begin + 1) - begin - 1);
        if (isKey(quoted)) keys.insert(quoted);
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
