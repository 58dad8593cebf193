// Values of packed arrays: little-endian, at any address.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace rpk {

template <typename Value>
Value loadLittleEndian(const char* bytes) {
  if constexpr (std::endian::native == std::endian::little) {
    Value value;
    std::memcpy(&value, bytes, sizeof(Value));
    return value;
  } else {
    std::array<char, sizeof(Value)> copy;
    std::reverse_copy(bytes, bytes + sizeof(Value), copy.begin());
    return std::bit_cast<Value>(copy);
  }
}

}  // namespace rpk
