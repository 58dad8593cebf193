// What a package holds, for programs. The keys are described in tools/rpk/README.md and stay as they are.
#pragma once

#include <cstddef>
#include <limits>
#include <nlohmann/json_fwd.hpp>
#include <string_view>

#include "tools/rpk/info.h"

namespace rpk {

// Groups are listed `depth` levels deep.
nlohmann::ordered_json infoJson(const PackageInfo& info, std::string_view file,
                                std::size_t depth = std::numeric_limits<std::size_t>::max());

}  // namespace rpk
