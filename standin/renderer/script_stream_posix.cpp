#include <sys/types.h>

#include "standin/renderer/script_stream.h"

namespace standin {

std::FILE* ScriptStream::open() {
  block_.reserve(kBlock);
  cookie_io_functions_t operations{};
  operations.write = [](void* cookie, const char* bytes, std::size_t size) -> ssize_t {
    auto& stream = *static_cast<ScriptStream*>(cookie);
    stream.write({bytes, size});
    return stream.failed_ ? 0 : static_cast<ssize_t>(size);
  };
  return fopencookie(this, "wb", operations);
}

// The stream writes to this object.
void ScriptStream::relay() {}
void ScriptStream::relayAll() {}

}  // namespace standin
