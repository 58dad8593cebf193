#include "scene/narrow_text.h"

#include <gtest/gtest.h>

#include <string>

#include "standin/windows/code_page.h"

namespace rendara {
namespace {

class NarrowTextTest : public ::testing::Test {
 protected:
  ~NarrowTextTest() override { standin::setSystemCodePage(1252); }

  // The text and whether it is exact.
  static std::string of(const wchar_t* wide, std::size_t capacity) {
    const NarrowText narrow = narrowText(wide, capacity);
    return narrow.text + (narrow.exact ? "|exact" : "|lossy");
  }
};

TEST_F(NarrowTextTest, LossIsToldAndBestFitIsOff) {
  EXPECT_EQ(of(L"Pump \u00e9\u20ac", 260), "Pump \xe9\x80|exact");
  EXPECT_EQ(of(L"\u65e5\uff21", 260), "??|lossy");
  EXPECT_EQ(of(L"?", 260), "?|exact");
  EXPECT_EQ(of(L"", 260), "|exact");
  EXPECT_EQ(of(nullptr, 260), "|exact");
}

TEST_F(NarrowTextTest, WhatIsTooLongIsCutAtAWholeCharacter) {
  EXPECT_EQ(of(L"abcd", 5), "abcd|exact");
  EXPECT_EQ(of(L"abcd", 4), "abc|lossy");
  EXPECT_EQ(of(L"abcd", 0), "|lossy");
}

TEST_F(NarrowTextTest, DoubleByteCharactersStayWholeInCodePage932) {
  ASSERT_TRUE(standin::setSystemCodePage(932));
  EXPECT_EQ(of(L"\u00e9\uff21", 260), "?\x82\x60|lossy");
  EXPECT_EQ(of(L"a\u65e5\u672c", 6), "a\x93\xfa\x96\x7b|exact");
  EXPECT_EQ(of(L"a\u65e5\u672c", 5), "a\x93\xfa|lossy");
  std::string text = "A\x83\x41Z";  // the second byte is an A
  lowerCaseInPlace(text);
  EXPECT_EQ(text, "a\x83\x41z");
  text = "\x83";  // half a character at the end
  lowerCaseInPlace(text);
  EXPECT_EQ(text, "\x83");
}

TEST_F(NarrowTextTest, CharactersStayWholeInCodePage65001) {
  ASSERT_TRUE(standin::setSystemCodePage(65001));
  EXPECT_EQ(of(L"\u00e9\u65e5\U0001F600", 10), "\xc3\xa9\xe6\x97\xa5\xf0\x9f\x98\x80|exact");
  EXPECT_EQ(of(L"\u00e9\u65e5\U0001F600", 9), "\xc3\xa9\xe6\x97\xa5|lossy");
  EXPECT_EQ(of(L"\u00e9\u65e5", 4), "\xc3\xa9|lossy");
}

TEST_F(NarrowTextTest, OnlyAsciiLettersAreLowerCased) {
  std::string text = "AZ@[\xc0";
  lowerCaseInPlace(text);
  EXPECT_EQ(text, "az@[\xc0");
}

}  // namespace
}  // namespace rendara
