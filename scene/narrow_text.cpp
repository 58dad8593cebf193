#include "scene/narrow_text.h"

#include <algorithm>
#include <limits>

#include "platform/windows_api.h"

namespace rendara {
namespace {

// The bytes of the character that a byte of the system code page begins.
std::size_t characterLength(unsigned char first, bool utf8) {
  if (!utf8) {
    return IsDBCSLeadByte(first) != 0 ? 2 : 1;
  }
  if (first < 0xC0) {
    return 1;
  }
  return first < 0xE0 ? 2 : (first < 0xF0 ? 3 : 4);
}

// The length up to which a text in the system code page holds whole characters only.
std::size_t wholeCharacters(const std::string& text, std::size_t limit) {
  const bool utf8 = GetACP() == CP_UTF8;
  std::size_t at = 0;
  while (at < text.size()) {
    const std::size_t step = characterLength(static_cast<unsigned char>(text[at]), utf8);
    if (at + step > limit) {
      break;
    }
    at += step;
  }
  return std::min(at, text.size());
}

}  // namespace

NarrowText narrowText(const std::wstring& wide) {
  NarrowText result;
  if (wide.empty()) {
    return result;
  }
  if (wide.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()) / 8) {
    result.exact = false;
    return result;
  }
  const int wideLength = static_cast<int>(wide.size());
  BOOL replaced = 0;
  // No character takes more than four bytes in a system code page.
  result.text.resize(wide.size() * 4);
  const int size = static_cast<int>(result.text.size());
  int length = WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, wide.data(), wideLength, result.text.data(), size, "?",
                                   &replaced);
  if (length == 0) {
    // UTF-8 as the system code page takes neither flags nor a replacement.
    length = WideCharToMultiByte(CP_ACP, 0, wide.data(), wideLength, result.text.data(), size, nullptr, nullptr);
  }
  result.text.resize(static_cast<std::size_t>(std::max(length, 0)));
  result.exact = length > 0 && replaced == 0;
  return result;
}

NarrowText narrowText(const wchar_t* wide, std::size_t capacity) {
  NarrowText result = narrowText(wide != nullptr ? std::wstring(wide) : std::wstring());
  if (truncateWhole(result.text, capacity > 0 ? capacity - 1 : 0)) {
    result.exact = false;
  }
  return result;
}

bool truncateWhole(std::string& text, std::size_t limit) {
  if (text.size() <= limit) {
    return false;
  }
  text.resize(wholeCharacters(text, limit));
  return true;
}

void lowerCaseInPlace(std::string& text) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (IsDBCSLeadByte(byte) != 0) {
      ++at;
    } else if (byte >= 'A' && byte <= 'Z') {
      text[at] = static_cast<char>(byte - 'A' + 'a');
    }
  }
}

}  // namespace rendara
