// "Did you mean ...?"
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace terminal {

// The number of single-character insertions, deletions, replacements and swaps of neighbours that turn one text into
// the other. Letter case of ASCII does not count.
std::size_t editDistance(std::string_view first, std::string_view second);

// "; did you mean X?" with the nearest of the names, to be put at the end of a message; empty when none is near
// enough to have been meant.
std::string didYouMean(std::string_view word, const std::vector<std::string>& names);

}  // namespace terminal
