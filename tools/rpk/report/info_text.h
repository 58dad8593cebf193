// What a package holds, for people: aligned lines of at most 120 columns.
#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>

#include "tools/rpk/info.h"

namespace rpk {

struct TreeOptions {
  // Levels of groups that are shown; none with 0.
  std::size_t depth = std::numeric_limits<std::size_t>::max();
  // Every group on a line of its own. Otherwise siblings that are the same but for their placement share a line.
  bool each = false;
};

std::string infoText(const PackageInfo& info, std::string_view file, const TreeOptions& options = {});

}  // namespace rpk
