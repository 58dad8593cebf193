// One code page: conversion of single characters, and of whole texts for UTF-8.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace standin {

inline constexpr unsigned kUtf8CodePage = 65001;
inline constexpr char32_t kReplacementCharacter = 0xFFFD;

// Appends a character as UTF-8; a surrogate or a value past the last character becomes U+FFFD. True when it was
// written as it stands.
bool appendUtf8(std::string& text, char32_t character);

// Takes one character off the front of UTF-8 text. False: what was taken is malformed.
bool takeUtf8(std::string_view& text, char32_t& character);

// The bytes of a character in a single- or double-byte code page; no bytes when the page lacks it.
struct CodedCharacter {
  std::array<char, 2> bytes{};
  std::uint8_t length = 0;
  bool exact = false;  // the bytes mean this very character and no look-alike
};

class CodePageTable {
 public:
  // The table of a code page, made at its first use; null when the page is not known. Stays for the life of the
  // thread: tables are not shared between threads.
  static CodePageTable* find(unsigned codePage);

  explicit CodePageTable(unsigned codePage);
  ~CodePageTable();
  CodePageTable(const CodePageTable&) = delete;
  CodePageTable& operator=(const CodePageTable&) = delete;

  bool isLeadByte(unsigned char byte) const { return leadBytes_[byte]; }
  const CodedCharacter& encode(char32_t character);
  // The character of one byte, or of a lead byte and its trail byte; none when they mean nothing.
  std::optional<char32_t> decode(std::string_view bytes);
  // What malformed bytes are read as.
  char32_t defaultCharacter() const { return codePage_ == 932 ? 0x30FB : U'?'; }

 private:
  // The bytes of the character as they come, however many; their number, 0 when the page lacks it.
  std::size_t rawBytes(char32_t character, std::array<char, 8>& bytes);
  CodedCharacter convertCharacter(char32_t character);
  // The character of the bytes, or no character (0xFFFFFFFF).
  char32_t convertBytes(std::string_view bytes);

  unsigned codePage_;
  void* toPage_;  // iconv descriptors
  void* fromPage_;
  bool usable_ = false;
  std::array<bool, 256> leadBytes_{};
  std::array<char32_t, 256> singles_{};
  std::unordered_map<char32_t, CodedCharacter> encoded_;
  std::unordered_map<unsigned, char32_t> pairs_;
};

}  // namespace standin
