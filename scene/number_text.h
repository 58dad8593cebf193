// The one home of number text: what "%g", "%f", "%16.16f", "%d" and "%u" mean in the C standard and the C locale, on
// every platform. Neither the process's locale nor the taste of its C runtime (three-digit exponents, "1.#INF")
// plays a part. Infinities read "inf" and "-inf", everything that is not a number reads "nan".
//
// Each function writes into the range [first, last), allocates nothing, terminates nothing, and returns the end of
// the text. When the range is too short it returns `first`, and the content of the range is not defined.
#pragma once

#include <cstddef>

namespace rendara {

// Room that is enough for any value.
constexpr std::size_t kGeneralCapacity = 16;   // "-1.23457e-308"
constexpr std::size_t kFixedCapacity = 320;    // the lowest double with six decimals: 317
constexpr std::size_t kFixed16Capacity = 328;  // the lowest double with sixteen decimals: 327
constexpr std::size_t kIntegerCapacity = 12;   // "-2147483648"

// "%g": six significant digits, without trailing zeros. A float is widened, as in C.
char* writeGeneral(char* first, char* last, double value);

// "%f": six decimals.
char* writeFixed(char* first, char* last, double value);

// "%16.16f": sixteen decimals; infinities and "nan" are padded on the left to sixteen characters.
char* writeFixed16(char* first, char* last, double value);

// "%d" and "%u".
char* writeInteger(char* first, char* last, int value);
char* writeUnsigned(char* first, char* last, unsigned value);

}  // namespace rendara
