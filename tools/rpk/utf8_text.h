// Text of a package in the form that JSON wants.
#pragma once

#include <string>
#include <string_view>

namespace rpk {

// Always valid UTF-8. Bytes of the text that are no UTF-8 are taken as Windows-1252, the five that it leaves open and
// all control characters become U+FFFD.
std::string toUtf8(std::string_view text);

}  // namespace rpk
