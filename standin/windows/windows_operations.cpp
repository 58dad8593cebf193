// Code-page conversion with the sizes, flags and failures of Windows. Wide text is UTF-32 here: a character that
// Windows keeps as two units is one, but what no code page can hold of it still becomes two default characters.
#include <algorithm>
#include <cstring>
#include <cwchar>
#include <optional>
#include <string>
#include <string_view>

#include "platform/windows_api.h"
#include "standin/windows/code_page.h"
#include "standin/windows/code_page_table.h"
#include "standin/windows/composites.h"

namespace {

using standin::CodedCharacter;
using standin::CodePageTable;
using standin::kUtf8CodePage;

constexpr UINT kThreadCodePage = 3;
constexpr DWORD kErrorInvalidChars = 0x80;  // of WideCharToMultiByte
constexpr DWORD kKnownWideFlags = 0x6F0;    // all flags of WideCharToMultiByte
constexpr DWORD kFailOnInvalidBytes = 0x8;  // MB_ERR_INVALID_CHARS
constexpr DWORD kKnownNarrowFlags = 0xF;

UINT resolvePage(UINT codePage) {
  return codePage == CP_ACP || codePage == kThreadCodePage ? standin::systemCodePage() : codePage;
}

// Copies what was converted, or answers its size when none is given; 0 when it does not fit.
template <typename Unit>
int deliver(const Unit* converted, std::size_t length, Unit* output, int outputSize) {
  if (outputSize == 0) {
    return static_cast<int>(length);
  }
  if (length > static_cast<std::size_t>(outputSize)) {
    std::copy_n(converted, outputSize, output);
    return 0;
  }
  std::copy_n(converted, length, output);
  return static_cast<int>(length);
}

// The first `length` units when all are ASCII, which every code page keeps; false otherwise.
bool isAscii(const wchar_t* wide, std::size_t length) {
  return std::all_of(wide, wide + length, [](wchar_t unit) { return static_cast<unsigned>(unit) < 0x80; });
}

class NarrowConversion {
 public:
  NarrowConversion(CodePageTable& table, DWORD flags, const char* defaultCharacter)
      : table_(table), allowBestFit_((flags & WC_NO_BEST_FIT_CHARS) == 0) {
    if (defaultCharacter != nullptr) {
      default_.assign(defaultCharacter, 1);
      if (table.isLeadByte(static_cast<unsigned char>(default_[0])) && defaultCharacter[1] != '\0') {
        default_.push_back(defaultCharacter[1]);
      }
    }
  }

  void append(char32_t character) {
    if (character < 0x80) {
      text_.push_back(static_cast<char>(character));
      return;
    }
    const CodedCharacter& coded = table_.encode(character);
    if (coded.length != 0 && (coded.exact || allowBestFit_)) {
      text_.append(coded.bytes.data(), coded.length);
      return;
    }
    if (allowBestFit_ && appendBestFit(character)) {
      return;
    }
    usedDefault_ = true;
    text_ += default_;
    if (character > 0xFFFF) {
      text_ += default_;
    }
  }

  const std::string& text() const { return text_; }
  bool usedDefault() const { return usedDefault_; }

 private:
  bool appendBestFit(char32_t character) {
    for (std::optional<char32_t> plain = standin::bestFit(character); plain; plain = standin::bestFit(*plain)) {
      const CodedCharacter& coded = table_.encode(*plain);
      if (coded.length != 0) {
        text_.append(coded.bytes.data(), coded.length);
        return true;
      }
    }
    return false;
  }

  CodePageTable& table_;
  bool allowBestFit_;
  std::string default_ = "?";
  std::string text_;
  bool usedDefault_ = false;
};

int utf8FromWide(UINT requestedPage, DWORD flags, std::wstring_view wide, char* narrow, int narrowSize,
                 const char* defaultCharacter, const BOOL* usedDefaultCharacter) {
  // UTF-8 has every character, so Windows refuses what deals with missing ones. A caller of CP_ACP cannot know the
  // page; it is not refused here.
  const bool byName = requestedPage == kUtf8CodePage;
  if (byName &&
      ((flags & ~kErrorInvalidChars) != 0 || defaultCharacter != nullptr || usedDefaultCharacter != nullptr)) {
    return 0;
  }
  std::string text;
  text.reserve(wide.size());
  for (const wchar_t unit : wide) {
    if (!standin::appendUtf8(text, static_cast<char32_t>(unit)) && (flags & kErrorInvalidChars) != 0) {
      return 0;
    }
  }
  return deliver(text.data(), text.size(), narrow, narrowSize);
}

// One more character of narrow text; false when it is malformed.
bool takeCharacter(CodePageTable* table, std::string_view& rest, char32_t& character) {
  if (table == nullptr) {
    return standin::takeUtf8(rest, character);
  }
  const bool isPair = table->isLeadByte(static_cast<unsigned char>(rest[0]));
  if (isPair && (rest.size() < 2 || rest[1] == '\0')) {
    rest.remove_prefix(1);
    character = table->defaultCharacter();
    return false;
  }
  const std::size_t length = isPair ? 2 : 1;
  const std::optional<char32_t> decoded = table->decode(rest.substr(0, length));
  character = decoded.value_or(table->defaultCharacter());
  rest.remove_prefix(length);
  return decoded.has_value();
}

}  // namespace

extern "C" {

UINT GetACP() { return standin::systemCodePage(); }

int WideCharToMultiByte(UINT codePage, DWORD flags, const wchar_t* wide, int wideLength, char* narrow, int narrowSize,
                        const char* defaultCharacter, BOOL* usedDefaultCharacter) {
  if (wide == nullptr || wideLength == 0 || narrowSize < 0 || (narrow == nullptr && narrowSize > 0) ||
      (flags & ~kKnownWideFlags) != 0) {
    return 0;
  }
  const std::size_t length = wideLength < 0 ? std::wcslen(wide) + 1 : static_cast<std::size_t>(wideLength);
  const UINT page = resolvePage(codePage);
  if (usedDefaultCharacter != nullptr && codePage != kUtf8CodePage) {
    *usedDefaultCharacter = 0;
  }
  if (page == kUtf8CodePage) {
    return utf8FromWide(codePage, flags, {wide, length}, narrow, narrowSize, defaultCharacter, usedDefaultCharacter);
  }
  CodePageTable* table = CodePageTable::find(page);
  if (table == nullptr) {
    return 0;
  }
  if (isAscii(wide, length)) {
    const std::size_t count = narrowSize == 0 ? 0 : std::min(length, static_cast<std::size_t>(narrowSize));
    std::transform(wide, wide + count, narrow, [](wchar_t unit) { return static_cast<char>(unit); });
    return narrowSize == 0 || count == length ? static_cast<int>(length) : 0;
  }
  NarrowConversion conversion(*table, flags, defaultCharacter);
  for (std::size_t at = 0; at < length; ++at) {
    auto character = static_cast<char32_t>(wide[at]);
    while ((flags & WC_COMPOSITECHECK) != 0 && at + 1 < length) {
      const std::optional<char32_t> joined = standin::composed(character, static_cast<char32_t>(wide[at + 1]));
      if (!joined) {
        break;
      }
      character = *joined;
      ++at;
    }
    conversion.append(character);
  }
  if (usedDefaultCharacter != nullptr) {
    *usedDefaultCharacter = conversion.usedDefault() ? 1 : 0;
  }
  return deliver(conversion.text().data(), conversion.text().size(), narrow, narrowSize);
}

int MultiByteToWideChar(UINT codePage, DWORD flags, const char* narrow, int narrowLength, wchar_t* wide, int wideSize) {
  if (narrow == nullptr || narrowLength == 0 || wideSize < 0 || (wide == nullptr && wideSize > 0) ||
      (flags & ~kKnownNarrowFlags) != 0) {
    return 0;
  }
  const UINT page = resolvePage(codePage);
  CodePageTable* table = page != kUtf8CodePage ? CodePageTable::find(page) : nullptr;
  if (page != kUtf8CodePage && table == nullptr) {
    return 0;
  }
  const std::size_t length = narrowLength < 0 ? std::strlen(narrow) + 1 : static_cast<std::size_t>(narrowLength);
  std::wstring text;
  text.reserve(length);
  for (std::string_view rest(narrow, length); !rest.empty();) {
    char32_t character = 0;
    if (!takeCharacter(table, rest, character) && (flags & kFailOnInvalidBytes) != 0) {
      return 0;
    }
    text.push_back(static_cast<wchar_t>(character));
  }
  return deliver(text.data(), text.size(), wide, wideSize);
}

BOOL IsDBCSLeadByte(unsigned char byte) {
  const unsigned page = standin::systemCodePage();
  CodePageTable* table = page != kUtf8CodePage ? CodePageTable::find(page) : nullptr;
  return table != nullptr && table->isLeadByte(byte) ? 1 : 0;
}
}
