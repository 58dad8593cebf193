// Component paths: as keys (owner, identifiers and count, compared as a whole), and where they lead to.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>

#include "platform/creo_toolkit.h"
#include "scene/matrix.h"

namespace rendara {

// Whether two paths name the same component, whatever their owners.
inline bool sameIdentifiers(const ProAsmcomppath& a, const ProAsmcomppath& b) {
  return a.table_num == b.table_num &&
         std::equal(a.comp_id_tab, a.comp_id_tab + std::clamp(a.table_num, 0, PRO_MAX_ASSEM_LEVEL), b.comp_id_tab);
}

struct IdentifiersEqual {
  bool operator()(const ProAsmcomppath& a, const ProAsmcomppath& b) const { return sameIdentifiers(a, b); }
};

struct PathEqual {
  bool operator()(const ProAsmcomppath& a, const ProAsmcomppath& b) const {
    return a.owner == b.owner && sameIdentifiers(a, b);
  }
};

struct PathHash {
  std::size_t operator()(const ProAsmcomppath& path) const {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (int level = 0; level < path.table_num && level < PRO_MAX_ASSEM_LEVEL; ++level) {
      hash = (hash ^ static_cast<std::uint32_t>(path.comp_id_tab[level])) * 0x100000001B3U;
    }
    return std::hash<std::uint64_t>()(hash);
  }
};

// From the component's coordinates to those of the path's owner; the identity when it cannot be had.
Matrix componentTransform(ProAsmcomppath path);

}  // namespace rendara
