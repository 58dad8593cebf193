// How many columns of a terminal a text takes.
#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>

namespace standin {

// Characters of East Asian scripts and full-width forms take two, all others one.
inline std::size_t displayWidth(const std::wstring& text) {
  struct Range {
    wchar_t first, last;
  };
  constexpr Range kWide[] = {{0x1100, 0x115F}, {0x2E80, 0x303E}, {0x3040, 0xA4CF}, {0xAC00, 0xD7A3},
                             {0xF900, 0xFAFF}, {0xFE30, 0xFE6F}, {0xFF00, 0xFF60}, {0xFFE0, 0xFFE6}};
  std::size_t width = text.size();
  for (const wchar_t letter : text) {
    const auto holds = [letter](const Range& range) { return letter >= range.first && letter <= range.last; };
    width += std::any_of(std::begin(kWide), std::end(kWide), holds) ? 1 : 0;
  }
  return width;
}

// The text with blanks behind it up to the width.
inline std::wstring paddedTo(std::wstring text, std::size_t width, wchar_t blank = L' ') {
  const std::size_t taken = displayWidth(text);
  if (taken < width) text.append(width - taken, blank);
  return text;
}

}  // namespace standin
