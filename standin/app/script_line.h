// One line of a script, split into words.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace standin {

// Blanks part words. A word may be quoted, wholly or in part, by " or '; within "..." a backslash before " or \ takes
// it as it is. A # at the beginning of a word starts a comment. Throws Failure when a quote is not closed.
std::vector<std::string> splitScriptLine(std::string_view line);

}  // namespace standin
