// The text form of a registry: what its reader and its writer share.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace standin {

inline constexpr std::string_view kRegistryHeading = "Windows Registry Editor Version 5.00";

// A zero byte pair is not added.
std::vector<unsigned char> utf16Bytes(const std::string& utf8);

// UTF-16LE to wide text; a surrogate without its partner stays as it is, an odd last byte is left out.
std::wstring wideFromUtf16Bytes(const unsigned char* bytes, std::size_t size);

// The steps of a key with one backslash between them and none at the ends.
std::string normalizedKey(std::string_view key);

// Upper case, which names are compared in; the locale plays no part.
std::string foldedCase(std::string_view utf8);

}  // namespace standin
