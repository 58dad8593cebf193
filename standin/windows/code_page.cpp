#include "standin/windows/code_page.h"

#include <iconv.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>

#include "standin/windows/code_page_table.h"

namespace standin {
namespace {

constexpr char32_t kNoCharacter = 0xFFFFFFFF;

std::atomic<unsigned> systemPage = 1252;

struct ByteRange {
  unsigned codePage;
  unsigned char first, last;
};

// The lead bytes of the double-byte code pages that Windows has as system code pages.
constexpr ByteRange kLeadBytes[] = {{932, 0x81, 0x9F}, {932, 0xE0, 0xFC},  {936, 0x81, 0xFE},  {949, 0x81, 0xFE},
                                    {950, 0x81, 0xFE}, {1361, 0x84, 0xD3}, {1361, 0xD8, 0xDE}, {1361, 0xE0, 0xF9}};

bool isDescriptor(void* descriptor) { return reinterpret_cast<std::intptr_t>(descriptor) != -1; }

// Converts the whole input, which is a single character; the number of bytes written, 0 when it cannot.
std::size_t convert(void* descriptor, const char* input, std::size_t inputSize, char* output, std::size_t outputSize) {
  char* from = const_cast<char*>(input);  // iconv does not change its input
  char* to = output;
  std::size_t left = outputSize;
  iconv(descriptor, nullptr, nullptr, nullptr, nullptr);
  if (iconv(descriptor, &from, &inputSize, &to, &left) == static_cast<std::size_t>(-1) || inputSize != 0) {
    return 0;
  }
  iconv(descriptor, nullptr, nullptr, &to, &left);  // some pages hold a letter back for a mark that may follow
  return outputSize - left;
}

}  // namespace

bool appendUtf8(std::string& text, char32_t character) {
  const bool valid = character <= 0x10FFFF && (character < 0xD800 || character > 0xDFFF);
  const char32_t code = valid ? character : kReplacementCharacter;
  const auto put = [&](char32_t byte) { text.push_back(static_cast<char>(static_cast<unsigned char>(byte))); };
  if (code < 0x80) {
    put(code);
  } else if (code < 0x800) {
    put(0xC0 | (code >> 6));
    put(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    put(0xE0 | (code >> 12));
    put(0x80 | ((code >> 6) & 0x3F));
    put(0x80 | (code & 0x3F));
  } else {
    put(0xF0 | (code >> 18));
    put(0x80 | ((code >> 12) & 0x3F));
    put(0x80 | ((code >> 6) & 0x3F));
    put(0x80 | (code & 0x3F));
  }
  return valid;
}

bool takeUtf8(std::string_view& text, char32_t& character) {
  const auto lead = static_cast<unsigned char>(text.front());
  text.remove_prefix(1);
  character = lead;
  if (lead < 0x80) {
    return true;
  }
  const std::size_t trailing = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
  char32_t code = lead & (0x3FU >> trailing);
  std::size_t taken = 0;
  while (taken < trailing && taken < text.size() && (static_cast<unsigned char>(text[taken]) & 0xC0) == 0x80) {
    code = (code << 6) | (static_cast<unsigned char>(text[taken]) & 0x3FU);
    ++taken;
  }
  constexpr char32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
  const bool valid = lead >= 0xC2 && lead <= 0xF4 && taken == trailing && code >= kSmallest[trailing] &&
                     code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
  if (valid) {
    text.remove_prefix(taken);
  }
  character = valid ? code : kReplacementCharacter;
  return valid;
}

CodePageTable* CodePageTable::find(unsigned codePage) {
  thread_local std::map<unsigned, std::unique_ptr<CodePageTable>> tables;
  thread_local CodePageTable* last = nullptr;
  if (last != nullptr && last->codePage_ == codePage) {
    return last;
  }
  std::unique_ptr<CodePageTable>& table = tables[codePage];
  if (!table) {
    table = std::make_unique<CodePageTable>(codePage);
  }
  if (!table->usable_) {
    return nullptr;
  }
  last = table.get();
  return last;
}

CodePageTable::CodePageTable(unsigned codePage)
    : codePage_(codePage),
      toPage_(iconv_open(("CP" + std::to_string(codePage)).c_str(), "UTF-32LE")),
      fromPage_(iconv_open("UTF-32LE", ("CP" + std::to_string(codePage)).c_str())) {
  if (!isDescriptor(toPage_) || !isDescriptor(fromPage_)) {
    return;
  }
  for (const ByteRange& range : kLeadBytes) {
    for (unsigned byte = range.first; range.codePage == codePage && byte <= range.last; ++byte) {
      leadBytes_[byte] = true;
    }
  }
  bool keepsAscii = true;
  for (unsigned byte = 0; byte < singles_.size(); ++byte) {
    const char single = static_cast<char>(static_cast<unsigned char>(byte));
    char32_t character = isLeadByte(static_cast<unsigned char>(byte)) ? kNoCharacter : convertBytes({&single, 1});
    keepsAscii = keepsAscii && (byte >= 0x80 || character == byte);
    // Windows gives the control characters of the upper half to the bytes that a page leaves open.
    if (character == kNoCharacter && byte < 0xA0 && !isLeadByte(static_cast<unsigned char>(byte))) {
      character = byte;
    }
    singles_[byte] = character;
  }
  // Every page that Windows has as a system code page extends ASCII (which leaves out EBCDIC and UTF-16) and takes at
  // most two bytes a character.
  usable_ = keepsAscii;
  for (char32_t probe : {U'\u4E00', U'\u0639', U'\u00E9'}) {
    std::array<char, 8> bytes{};
    usable_ = usable_ && rawBytes(probe, bytes) <= 2;
  }
}

CodePageTable::~CodePageTable() {
  for (void* descriptor : {toPage_, fromPage_}) {
    if (isDescriptor(descriptor)) {
      iconv_close(descriptor);
    }
  }
}

const CodedCharacter& CodePageTable::encode(char32_t character) {
  const auto found = encoded_.find(character);
  if (found != encoded_.end()) {
    return found->second;
  }
  return encoded_.emplace(character, convertCharacter(character)).first->second;
}

std::size_t CodePageTable::rawBytes(char32_t character, std::array<char, 8>& bytes) {
  return convert(toPage_, reinterpret_cast<const char*>(&character), sizeof(character), bytes.data(), bytes.size());
}

CodedCharacter CodePageTable::convertCharacter(char32_t character) {
  CodedCharacter result;
  if (character >= 0x80 && character < 0xA0 && singles_[character] == character) {
    result.bytes[0] = static_cast<char>(static_cast<unsigned char>(character));
    result.length = 1;
    result.exact = true;
    return result;
  }
  std::array<char, 8> bytes{};
  const std::size_t length = rawBytes(character, bytes);
  const bool isPair = length == 2 && isLeadByte(static_cast<unsigned char>(bytes[0]));
  if (length != 1 && !isPair) {
    return result;  // two bytes without a lead byte are a letter and its mark, taken apart
  }
  result.bytes = {bytes[0], bytes[1]};
  result.length = static_cast<std::uint8_t>(length);
  result.exact = convertBytes({result.bytes.data(), length}) == character;
  return result;
}

std::optional<char32_t> CodePageTable::decode(std::string_view bytes) {
  char32_t character = kNoCharacter;
  if (bytes.size() == 1) {
    character = singles_[static_cast<unsigned char>(bytes[0])];
  } else {
    const unsigned key = static_cast<unsigned char>(bytes[0]) * 256U + static_cast<unsigned char>(bytes[1]);
    const auto found = pairs_.find(key);
    character = found != pairs_.end() ? found->second : pairs_.emplace(key, convertBytes(bytes)).first->second;
  }
  return character != kNoCharacter ? std::optional(character) : std::nullopt;
}

char32_t CodePageTable::convertBytes(std::string_view bytes) {
  std::array<char32_t, 4> characters{};
  const std::size_t size =
      convert(fromPage_, bytes.data(), bytes.size(), reinterpret_cast<char*>(characters.data()), sizeof(characters));
  return size == sizeof(char32_t) ? characters[0] : kNoCharacter;
}

bool setSystemCodePage(unsigned codePage) {
  if (codePage != kUtf8CodePage && CodePageTable::find(codePage) == nullptr) {
    return false;
  }
  systemPage = codePage;
  return true;
}

unsigned systemCodePage() { return systemPage; }

std::wstring wideFromUtf8(const std::string& text) {
  std::wstring wide;
  wide.reserve(text.size());
  for (std::string_view rest = text; !rest.empty();) {
    char32_t character = 0;
    takeUtf8(rest, character);
    wide.push_back(static_cast<wchar_t>(character));
  }
  return wide;
}

std::string utf8FromWide(const std::wstring& text) {
  std::string narrow;
  narrow.reserve(text.size());
  for (const wchar_t character : text) {
    appendUtf8(narrow, static_cast<char32_t>(character));
  }
  return narrow;
}

}  // namespace standin
