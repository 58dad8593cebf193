// Wide text as the 8-bit text in the system code page that the scene interface takes.
#pragma once

#include <cstddef>
#include <string>

namespace rendara {

struct NarrowText {
  std::string text;
  bool exact = true;  // false: characters were replaced by "?" or cut off
};

// At most `capacity` - 1 bytes, cut at a whole character. No best-fit replacement: what the code page lacks is "?".
NarrowText narrowText(const wchar_t* wide, std::size_t capacity);

// The same without a bound.
NarrowText narrowText(const std::wstring& wide);

// Cuts a text in the system code page to at most `limit` bytes, at a whole character. True when something was cut.
bool truncateWhole(std::string& text, std::size_t limit);

// Lower-cases ASCII letters in place; the second byte of a double-byte character is left as it is.
void lowerCaseInPlace(std::string& text);

}  // namespace rendara
