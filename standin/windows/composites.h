// Letters with marks: their composition and what stands for them in a code page that lacks them.
#pragma once

#include <cstdint>
#include <optional>

namespace standin {

// The one character that a base and a combining mark make together.
std::optional<char32_t> composed(char32_t base, char32_t mark);

// A plainer character for one that a code page lacks: a letter without its mark (which may need another step), the
// ASCII character of a full-width form. A small part of what Windows replaces.
std::optional<char32_t> bestFit(char32_t character);

}  // namespace standin
