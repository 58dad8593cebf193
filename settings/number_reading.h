// Numbers at the beginning of a text, whatever the locale: what `atof`, `strtof` and `atoi` give in the C locale.
#pragma once

#include <string_view>

namespace rendara {

// Leading white space and a sign are taken; what follows the longest number is ignored; 0 when there is none. Too
// large a value is infinite, too small a one is zero.
double readDouble(std::string_view text);

// The same to the nearest single-precision value.
float readFloat(std::string_view text);

// The same for a decimal integer; a value out of range is brought to the nearest one.
int readInt(std::string_view text);

}  // namespace rendara
