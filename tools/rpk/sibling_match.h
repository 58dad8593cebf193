// Which groups of one name in one scene stand for which in the other.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "tools/rpk/scene_summary.h"

namespace rpk {

// One of the two is null for a group that the other scene does not have.
struct GroupPair {
  const Group* first = nullptr;
  const Group* second = nullptr;
};

// A number that is the same for groups of the same content; asked for only where several groups could be meant.
using ContentOf = std::function<std::uint64_t(const Group&)>;

// Every group of both lists exactly once: those of the first list in their order, then those only in the second.
std::vector<GroupPair> matchSiblings(const std::vector<const Group*>& first, const std::vector<const Group*>& second,
                                     const ContentOf& contentOf);

}  // namespace rpk
