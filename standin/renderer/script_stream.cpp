#include "standin/renderer/script_stream.h"

#include <algorithm>

namespace standin {

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
  relayAll();
  if (!block_.empty()) sendBlock();
  return !failed_;
}

}  // namespace standin
