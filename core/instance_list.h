// The list of running renderers, as the live-link library gives it.
#pragma once

#include <set>
#include <string_view>

namespace rendara {

// Ports of the renderers of at least that major version. The text is searched for four tags and is no XML to the
// parser: in each "<rendara_instance>" the numbers in "<version_major>" and "<livelink_port>", which may stand anywhere
// behind it. A missing inner tag ends the list. Ports outside 1 to 65535 are not taken. Linear in the text's length.
std::set<int> parseInstanceList(std::string_view text, int minimumVersion);

}  // namespace rendara
