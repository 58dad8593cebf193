// Hashes of several values in one.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace rpk {

inline std::uint64_t hashMix(std::uint64_t seed, std::uint64_t value) {
  seed ^= value + 0x9e3779b97f4a7c15ULL + (seed << 6) + (seed >> 2);
  return seed * 0xff51afd7ed558ccdULL;
}

inline std::uint64_t hashMix(std::uint64_t seed, std::string_view text) {
  return hashMix(seed, std::uint64_t{std::hash<std::string_view>()(text)});
}

}  // namespace rpk
