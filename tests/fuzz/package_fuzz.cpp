// Random bytes, led by what they reach, through all that reads packages.
#include <cstdint>
#include <cstdlib>

#include "tests/rpk/read_everything.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  if (!rpk_test::readEverything(bytes).promisesKept) std::abort();
  return 0;
}
