// Bits of a group's "flags" line that tell what the group stands for.
#pragma once

#include <cstdint>

namespace rpk {

inline constexpr std::uint32_t kAssemblyGroupFlag = 0x8000;
// The group of one material inside a part's group, written when exact surfaces stand beside the mesh.
inline constexpr std::uint32_t kMaterialGroupFlag = 0x10000;

// The number of a flags line; what is no 32-bit word counts as no flags.
inline std::uint32_t toGroupFlags(double value) {
  return value >= 0 && value <= 4294967295.0 ? static_cast<std::uint32_t>(value) : 0;
}

}  // namespace rpk
