#include "tools/rpk/utf8_text.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace rpk {
namespace {

constexpr char32_t kReplacement = 0xfffd;

// Windows-1252 from 0x80 to 0x9f; the rest is as in Unicode.
constexpr std::array<char16_t, 32> kWindows1252 = {0x20ac, 0,      0x201a, 0x0192, 0x201e, 0x2026, 0x2020, 0x2021,
                                                   0x02c6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017d, 0,
                                                   0,      0x2018, 0x2019, 0x201c, 0x201d, 0x2022, 0x2013, 0x2014,
                                                   0x02dc, 0x2122, 0x0161, 0x203a, 0x0153, 0,      0x017e, 0x0178};

struct Character {
  char32_t code = 0;
  std::size_t length = 0;  // in bytes; 0 when the bytes are no UTF-8
};

// The shortest form only, no surrogates, nothing above U+10FFFF.
Character utf8At(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
  const std::uint8_t first = byte(0);
  if (first < 0x80) return {first, 1};
  const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
  if (first < 0xc2 || first > 0xf4 || text.size() < length) return {};
  char32_t code = first & (0x7fU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xc0) != 0x80) return {};
    code = code << 6 | (byte(i) & 0x3fU);
  }
  constexpr std::array<char32_t, 5> kLeast = {0, 0, 0x80, 0x800, 0x10000};
  if (code < kLeast[length] || code > 0x10ffff || (code >= 0xd800 && code < 0xe000)) return {};
  return {code, length};
}

char32_t windows1252(std::uint8_t byte) {
  if (byte < 0x80 || byte > 0x9f) return byte;
  const char16_t code = kWindows1252[byte - 0x80U];
  return code == 0 ? kReplacement : code;
}

void appendUtf8(std::string& text, char32_t code) {
  const auto add = [&](char32_t byte) { text += static_cast<char>(byte); };
  if (code < 0x80) {
    add(code);
    return;
  }
  if (code < 0x800) {
    add(0xc0 | code >> 6);
  } else {
    if (code < 0x10000) {
      add(0xe0 | code >> 12);
    } else {
      add(0xf0 | code >> 18);
      add(0x80 | (code >> 12 & 0x3f));
    }
    add(0x80 | (code >> 6 & 0x3f));
  }
  add(0x80 | (code & 0x3f));
}

bool isControl(char32_t code) { return code < 0x20 || (code >= 0x7f && code < 0xa0); }

}  // namespace

std::string toUtf8(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    Character character = utf8At(text);
    if (character.length == 0) character = {windows1252(static_cast<std::uint8_t>(text[0])), 1};
    appendUtf8(result, isControl(character.code) ? kReplacement : character.code);
    text.remove_prefix(character.length);
  }
  return result;
}

}  // namespace rpk
