// Streams of the C run-time write to files only. So the script goes by way of a file, which is gone through again from
// its beginning whenever what stands there has been sent.
#include <algorithm>
#include <array>
#include <cstdio>

#include "standin/renderer/nameless_file.h"
#include "standin/renderer/script_stream.h"

namespace standin {

std::FILE* ScriptStream::open() {
  block_.reserve(kBlock);
  Descriptor file = makeNamelessFile();
  file_ = file ? _fdopen(file.get(), "w+b") : nullptr;
  if (file_) file.release();
  failed_ = file_ == nullptr;
  return file_;
}

void ScriptStream::relay() {
  if (failed_) return;
  const bool due = std::chrono::steady_clock::now() - lastSent_ > kLongestWait;
  if (due || _ftelli64(file_) >= static_cast<long long>(kBlock)) relayAll();
}

void ScriptStream::relayAll() {
  if (failed_) return;
  std::array<char, 16384> bytes;
  long long left = _ftelli64(file_);
  failed_ = std::ferror(file_) != 0 || left < 0;
  std::rewind(file_);
  while (left > 0 && !failed_) {
    const auto wanted = static_cast<std::size_t>(std::min<long long>(left, bytes.size()));
    const std::size_t count = std::fread(bytes.data(), 1, wanted, file_);
    write({bytes.data(), count});
    left -= static_cast<long long>(count);
    failed_ = failed_ || count != wanted;
  }
  std::rewind(file_);
}

}  // namespace standin
