// The groups of a package as rows of a tree, with repeated siblings told once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "tools/rpk/info.h"

namespace rpk {

// Siblings that are the same but for their placement and for whether they hold their geometry or refer to it.
struct TreeRow {
  std::size_t level = 0;             // 0 for the groups at the top
  std::vector<const Group*> groups;  // at least one
  std::uint64_t below = 0;           // groups below the first one that are not shown, for the depth
};

// Rows in the order of the file, each followed by those of the sub-groups of its first group. Groups of one material
// are part of the group around them. `each` keeps every group apart; rows go `depth` levels deep.
std::vector<TreeRow> treeRows(const PackageInfo& info, std::size_t depth, bool each);

}  // namespace rpk
