// What two packages differ in, for people and for programs.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "tools/rpk/diff.h"

namespace rpk {

// The two files, and what one wants to know of them beside the differences.
struct DiffedFiles {
  std::string_view first;
  std::string_view second;
  bool sameBytes = false;
};

// One line for each difference, then one with their number.
std::string diffText(const std::vector<Difference>& differences, const DiffedFiles& files);

// The keys are described in tools/rpk/README.md and stay as they are.
nlohmann::ordered_json diffJson(const std::vector<Difference>& differences, const DiffedFiles& files);

}  // namespace rpk
