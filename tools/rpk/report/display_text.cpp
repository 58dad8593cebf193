#include "tools/rpk/report/display_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "tools/rpk/utf8_text.h"

namespace rpk {
namespace {

struct Range {
  char32_t first;
  char32_t last;
};

bool within(char32_t code, const auto& ranges) {
  return std::any_of(ranges.begin(), ranges.end(),
                     [&](const Range& range) { return code >= range.first && code <= range.last; });
}

// Characters that take two columns: East Asian letters and pictographs.
constexpr auto kWide = std::to_array<Range>({{0x1100, 0x115f},
                                             {0x2e80, 0xa4cf},
                                             {0xac00, 0xd7a3},
                                             {0xf900, 0xfaff},
                                             {0xfe30, 0xfe6f},
                                             {0xff00, 0xff60},
                                             {0xffe0, 0xffe6},
                                             {0x1f300, 0x1faff},
                                             {0x20000, 0x3fffd}});
// Marks that stand on the character before.
constexpr auto kCombining =
    std::to_array<Range>({{0x300, 0x36f}, {0x1ab0, 0x1aff}, {0x20d0, 0x20ff}, {0xfe00, 0xfe0f}, {0xfe20, 0xfe2f}});
// Line and paragraph ends, and what changes the direction of all text after it or is not seen at all.
constexpr auto kDeceiving =
    std::to_array<Range>({{0x61c, 0x61c}, {0x200b, 0x200f}, {0x2028, 0x202e}, {0x2060, 0x2069}, {0xfeff, 0xfeff}});

// Takes the first character off valid UTF-8.
char32_t takeCharacter(std::string_view& text, std::string_view* bytes = nullptr) {
  const auto first = static_cast<unsigned char>(text[0]);
  const std::size_t length = first < 0x80 ? 1 : first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
  const std::size_t there = std::min(length, text.size());
  char32_t code = length == 1 ? first : first & (0x7fU >> length);
  for (std::size_t i = 1; i < there; ++i) code = code << 6 | (static_cast<unsigned char>(text[i]) & 0x3fU);
  if (bytes) *bytes = text.substr(0, there);
  text.remove_prefix(there);
  return code;
}

bool isControl(char character) { return static_cast<unsigned char>(character) < 0x20 || character == 0x7f; }

std::string escapedControl(char character) {
  if (character == '\n') return "\\n";
  if (character == '\r') return "\\r";
  if (character == '\t') return "\\t";
  return fmt::format("\\x{:02x}", static_cast<unsigned char>(character));
}

std::string escapeDeceiving(std::string_view text) {
  std::string result;
  std::string_view bytes;
  while (!text.empty()) {
    const char32_t code = takeCharacter(text, &bytes);
    if (within(code, kDeceiving)) {
      result += fmt::format("\\u{:04x}", static_cast<std::uint32_t>(code));
    } else {
      result += bytes;
    }
  }
  return result;
}

std::string cleaned(std::string_view name, bool escapeControls) {
  std::string result;
  while (!name.empty()) {
    const auto end = std::find_if(name.begin(), name.end(), isControl);
    const auto plain = static_cast<std::size_t>(end - name.begin());
    result += escapeDeceiving(toUtf8(name.substr(0, plain)));
    name.remove_prefix(plain);
    if (name.empty()) break;
    if (escapeControls) {
      result += escapedControl(name[0]);
    } else {
      result += name[0];
    }
    name.remove_prefix(1);
  }
  return result;
}

std::size_t columnsOf(char32_t code) {
  if (within(code, kCombining)) return 0;
  return within(code, kWide) ? 2 : 1;
}

}  // namespace

std::string displayText(std::string_view name) { return cleaned(name, true); }

std::string jsonText(std::string_view name) { return cleaned(name, false); }

std::size_t displayWidth(std::string_view text) {
  std::size_t columns = 0;
  while (!text.empty()) columns += columnsOf(takeCharacter(text));
  return columns;
}

std::string shortened(std::string_view text, std::size_t columns) {
  if (displayWidth(text) <= columns) return std::string(text);
  constexpr std::string_view kCut = "...";
  if (columns <= kCut.size()) return std::string(kCut.substr(0, columns));
  std::string result;
  std::size_t left = columns - kCut.size();
  std::string_view bytes;
  while (!text.empty()) {
    const std::size_t wide = columnsOf(takeCharacter(text, &bytes));
    if (wide > left) break;
    left -= wide;
    result += bytes;
  }
  return result.append(kCut);
}

std::string grouped(std::uint64_t number) {
  std::string text = std::to_string(number);
  for (std::size_t at = text.size(); at > 3;) {
    at -= 3;
    text.insert(at, 1, ',');
  }
  return text;
}

std::string counted(std::uint64_t number, std::string_view one, std::string_view more) {
  return fmt::format("{} {}", grouped(number), number == 1 ? one : more);
}

}  // namespace rpk
