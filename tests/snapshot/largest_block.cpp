#include "tests/snapshot/largest_block.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace standin::test {

std::size_t largestBlock = 0;

}  // namespace standin::test

void* operator new(std::size_t size) {
  standin::test::largestBlock = std::max(standin::test::largestBlock, size);
  if (void* block = std::malloc(std::max<std::size_t>(size, 1))) return block;
  throw std::bad_alloc();
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t /*size*/) noexcept { std::free(block); }
