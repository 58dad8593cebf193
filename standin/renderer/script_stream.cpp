#include "standin/renderer/script_stream.h"

#include <sys/types.h>

#include <algorithm>

namespace standin {
namespace {

constexpr std::size_t kBlock = 65536;
// So that the renderer sees a slow script grow.
constexpr std::chrono::seconds kLongestWait{5};

}  // namespace

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

void ScriptStream::write(std::string_view bytes) {
  while (!bytes.empty() && !failed_) {
    const std::size_t count = std::min(bytes.size(), kBlock - block_.size());
    block_.append(bytes.substr(0, count));
    bytes.remove_prefix(count);
    if (block_.size() == kBlock) sendBlock();
  }
  if (!block_.empty() && std::chrono::steady_clock::now() - lastSent_ > kLongestWait) sendBlock();
}

void ScriptStream::sendBlock() {
  failed_ = failed_ || !send_(block_);
  block_.clear();
  lastSent_ = std::chrono::steady_clock::now();
}

bool ScriptStream::finish() {
  if (!block_.empty()) sendBlock();
  return !failed_;
}

}  // namespace standin
