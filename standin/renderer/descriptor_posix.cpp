#include <unistd.h>

#include <cerrno>

#include "standin/renderer/descriptor.h"

namespace standin {

void Descriptor::reset() {
  if (number_ >= 0) close(release());
}

bool Descriptor::writeAll(std::string_view bytes) const {
  while (!bytes.empty()) {
    const ssize_t written = write(number_, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace standin
