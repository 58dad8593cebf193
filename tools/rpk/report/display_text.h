// Names of a package, which can hold any byte, as text that is safe to show.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace rpk {

// For a terminal, always on one line: UTF-8, other bytes taken as Windows-1252; control characters and those that turn
// the direction of writing are shown as \n, \t, \x1b, \u202e.
std::string displayText(std::string_view name);

// For JSON: the same, but the control characters of ASCII stay as they are.
std::string jsonText(std::string_view name);

// Columns that UTF-8 text takes on a terminal.
std::size_t displayWidth(std::string_view text);

// UTF-8 text cut to so many columns, with "..." at its end when something is missing.
std::string shortened(std::string_view text, std::size_t columns);

// 1234567 as 1,234,567.
std::string grouped(std::uint64_t number);

// "1 mesh", "2,000 meshes".
std::string counted(std::uint64_t number, std::string_view one, std::string_view more);

}  // namespace rpk
