// Watches what a test program allocates.
#pragma once

#include <cstddef>

namespace standin::test {

// The largest block that was asked for since it was set to 0.
extern std::size_t largestBlock;

}  // namespace standin::test
