// printf for texts of the scene script, free of the process's locale and C runtime.
#pragma once

#include <cstdarg>
#include <cstddef>

namespace rendara {

// Formats into `buffer`, cut to `size` - 1 characters and always terminated when `size` is above zero. Returns the
// number of characters stored. The caller's argument list stays where it is.
//
// Flags "-+ #0", width and precision (also "*"), the lengths hh h l ll j z t L, and the conversions
// c s d i u x X o p e E f F g G a A and "%%". A long double is narrowed to a double. A null text reads "(null)".
// From the first conversion that is none of these (wide text and "%n" among them) the format is copied as it stands.
std::size_t formatText(char* buffer, std::size_t size, const char* format, std::va_list arguments);

}  // namespace rendara
