#include <gtest/gtest.h>

#include <cwchar>
#include <optional>
#include <string>

#include "platform/windows_api.h"
#include "standin/windows/code_page.h"

namespace standin {
namespace {

struct Narrow {
  std::string text;
  bool usedDefault = false;
};

// nullopt: the operation failed.
std::optional<Narrow> narrow(const std::wstring& wide, DWORD flags = WC_NO_BEST_FIT_CHARS,
                             const char* defaultCharacter = nullptr, UINT page = CP_ACP) {
  Narrow result;
  BOOL used = 7;
  result.text.resize(wide.size() * 4 + 1);
  const int length =
      WideCharToMultiByte(page, flags, wide.data(), static_cast<int>(wide.size()), result.text.data(),
                          static_cast<int>(result.text.size()), defaultCharacter, page == 65001 ? nullptr : &used);
  if (length == 0) {
    return std::nullopt;
  }
  result.text.resize(static_cast<std::size_t>(length));
  result.usedDefault = used == 1;
  return result;
}

std::wstring wide(const std::string& text, DWORD flags = 0) {
  std::wstring result(text.size() + 1, L'\0');
  const int length = MultiByteToWideChar(CP_ACP, flags, text.data(), static_cast<int>(text.size()), result.data(),
                                         static_cast<int>(result.size()));
  result.resize(static_cast<std::size_t>(length));
  return result;
}

class CodePage : public ::testing::Test {
 protected:
  void TearDown() override { setSystemCodePage(1252); }
};

TEST_F(CodePage, WesternTextKeepsItsLettersAndReplacesOthers) {
  EXPECT_EQ(narrow(L"Gr\u00F6\u00DFe \u20AC")->text,
            "Gr\xF6\xDF"
            "e \x80");
  EXPECT_FALSE(narrow(L"Gr\u00F6\u00DFe \u20AC")->usedDefault);
  EXPECT_EQ(narrow(L"\u0416a\u4E2D")->text, "?a?");
  EXPECT_TRUE(narrow(L"\u0416a\u4E2D")->usedDefault);
  EXPECT_EQ(narrow(L"\u0416", WC_NO_BEST_FIT_CHARS, "_")->text, "_");
  // Two units of UTF-16, each of them without a code.
  EXPECT_EQ(narrow(L"\U0001F600")->text, "??");
  EXPECT_EQ(wide("Gr\xF6\xDF"
                 "e \x80"),
            L"Gr\u00F6\u00DFe \u20AC");
}

TEST_F(CodePage, BytesWithoutACharacterSurviveTheRoundTrip) {
  EXPECT_EQ(wide("\x81\x8D\x9D"), L"\u0081\u008D\u009D");
  EXPECT_EQ(narrow(L"\u0081\u008D\u009D")->text, "\x81\x8D\x9D");
  // A control character whose byte means something else has no code.
  EXPECT_EQ(narrow(L"\u0080")->text, "?");
}

TEST_F(CodePage, BestFitOnlyWhereItIsAllowed) {
  EXPECT_EQ(narrow(L"\uFF21\u0142\u0101", 0)->text, "Ala");
  EXPECT_FALSE(narrow(L"\uFF21\u0142\u0101", 0)->usedDefault);
  EXPECT_EQ(narrow(L"\uFF21\u0142\u0101")->text, "???");
  EXPECT_EQ(narrow(L"\u1EA5", 0)->text, "\xE2") << "a letter with two marks loses one of them";
  EXPECT_EQ(narrow(L"\u0416", 0)->text, "?");
}

TEST_F(CodePage, CompositesAreJoinedWhenAsked) {
  EXPECT_EQ(narrow(L"Cafe\u0301", WC_COMPOSITECHECK)->text, "Caf\xE9");
  EXPECT_EQ(narrow(L"Cafe\u0301")->text, "Cafe?");
  EXPECT_EQ(narrow(L"x\u0301", WC_COMPOSITECHECK)->text, "x?");
}

TEST_F(CodePage, DoubleByteText) {
  ASSERT_TRUE(setSystemCodePage(932));
  EXPECT_EQ(narrow(L"\u8868a\uFF8A")->text,
            "\x95\x5C"
            "a\xCA");
  EXPECT_EQ(wide("\x95\x5C"
                 "a\xCA"),
            L"\u8868a\uFF8A");
  EXPECT_EQ(narrow(L"\u00E9")->text, "?");
  EXPECT_EQ(narrow(L"\u00A5")->text, "?") << "the yen sign is a look-alike of the byte 5C";
  EXPECT_TRUE(IsDBCSLeadByte(0x95));
  EXPECT_TRUE(IsDBCSLeadByte(0xE0));
  EXPECT_FALSE(IsDBCSLeadByte(0xCA));
  EXPECT_FALSE(IsDBCSLeadByte('a'));
  // A lead byte at the end is malformed.
  EXPECT_EQ(wide("a\x95"), L"a\u30FB");
  EXPECT_EQ(wide("a\x95", 8), L"");
  EXPECT_EQ(narrow(L"\u0416\u00E9", WC_NO_BEST_FIT_CHARS, "\x81\x48")->text, "\x84\x47\x81\x48");
  setSystemCodePage(1252);
  EXPECT_FALSE(IsDBCSLeadByte(0x95));
}

TEST_F(CodePage, SizesAndTerminatorsAreThoseOfWindows) {
  char buffer[8];
  std::fill_n(buffer, sizeof(buffer), '#');
  // -1 takes the terminator along, a length does not.
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"ab", -1, buffer, 8, nullptr, nullptr), 3);
  EXPECT_EQ(std::string(buffer, 4), std::string("ab\0#", 4));
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"xy", 2, buffer, 2, nullptr, nullptr), 2);
  EXPECT_EQ(std::string(buffer, 3), std::string("xy\0", 3));
  // 0 asks, for ASCII and other text alike.
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"abc", -1, nullptr, 0, nullptr, nullptr), 4);
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"\u00E4bc", -1, nullptr, 0, nullptr, nullptr), 4);
  // Too small fails, and never writes past the size.
  for (const wchar_t* text : {L"abc", L"\u00E4bc"}) {
    std::fill_n(buffer, sizeof(buffer), '#');
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, text, -1, buffer, 3, nullptr, nullptr), 0);
    EXPECT_EQ(buffer[3], '#');
  }
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"abc", 0, buffer, 8, nullptr, nullptr), 0);
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0x10000, L"abc", 3, buffer, 8, nullptr, nullptr), 0);
  EXPECT_EQ(WideCharToMultiByte(12345, 0, L"abc", 3, buffer, 8, nullptr, nullptr), 0);

  wchar_t wideBuffer[4] = {L'#', L'#', L'#', L'#'};
  EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "ab", -1, nullptr, 0), 3);
  EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc", -1, wideBuffer, 3), 0);
  EXPECT_EQ(wideBuffer[3], L'#');
  EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "ab", -1, wideBuffer, 4), 3);
  EXPECT_EQ(std::wstring(wideBuffer), L"ab");
}

TEST_F(CodePage, Utf8RefusesWhatDealsWithMissingCharactersUnlessItIsTheSystemCodePage) {
  EXPECT_EQ(narrow(L"\u00E4", 0, nullptr, 65001)->text, "\xC3\xA4");
  EXPECT_FALSE(narrow(L"\u00E4", WC_NO_BEST_FIT_CHARS, nullptr, 65001));
  EXPECT_FALSE(narrow(L"\u00E4", 0, "?", 65001));
  ASSERT_TRUE(setSystemCodePage(65001));
  EXPECT_EQ(narrow(L"\u00E4\U0001F600", WC_NO_BEST_FIT_CHARS, "?")->text, "\xC3\xA4\xF0\x9F\x98\x80");
  EXPECT_FALSE(narrow(L"\u00E4", WC_NO_BEST_FIT_CHARS, "?")->usedDefault);
  EXPECT_EQ(wide("\xF0\x9F\x98\x80"), L"\U0001F600");
}

TEST_F(CodePage, UnknownPagesAreRefusedAndChangeNothing) {
  for (const unsigned page : {1200U, 37U, 54321U}) {
    EXPECT_FALSE(setSystemCodePage(page)) << page;
  }
  EXPECT_EQ(systemCodePage(), 1252U);
  for (const unsigned page : {874U, 936U, 949U, 950U, 1250U, 1251U, 1253U, 1258U}) {
    EXPECT_TRUE(setSystemCodePage(page)) << page;
    EXPECT_EQ(narrow(L"plain")->text, "plain");
  }
}

TEST_F(CodePage, Utf8PathsAndBack) {
  const std::string text = "a\xC3\xA4\xE4\xB8\xAD\xF0\x9F\x98\x80";
  EXPECT_EQ(wideFromUtf8(text), L"a\u00E4\u4E2D\U0001F600");
  EXPECT_EQ(utf8FromWide(wideFromUtf8(text)), text);
  // Malformed: a lone trail byte, an overlong form, a surrogate, a cut sequence.
  EXPECT_EQ(wideFromUtf8("\x80x"), L"\uFFFDx");
  EXPECT_EQ(wideFromUtf8("\xC0\xAF"), L"\uFFFD\uFFFD");
  EXPECT_EQ(wideFromUtf8("\xED\xA0\x80")[0], L'\uFFFD');
  EXPECT_EQ(wideFromUtf8("\xE4\xB8"), L"\uFFFD\uFFFD");
  EXPECT_EQ(utf8FromWide(std::wstring(1, static_cast<wchar_t>(0xD800))), "\xEF\xBF\xBD");
}

}  // namespace
}  // namespace standin
