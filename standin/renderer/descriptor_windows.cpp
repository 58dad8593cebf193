#include <io.h>

#include <algorithm>
#include <climits>

#include "standin/renderer/descriptor.h"

namespace standin {

void Descriptor::reset() {
  if (number_ >= 0) _close(release());
}

bool Descriptor::writeAll(std::string_view bytes) const {
  while (!bytes.empty()) {
    const auto count = static_cast<unsigned>(std::min<std::size_t>(bytes.size(), INT_MAX));
    const int written = _write(number_, bytes.data(), count);
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace standin
