// The stream that the script of a live scene is written to. It gathers what is written into blocks and sends those, a
// part of one only when nothing was sent for some seconds; flushing the stream sends nothing.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

namespace standin {

class ScriptStream {
 public:
  // Sends a block; false when it cannot, after which nothing more is sent.
  using Send = std::function<bool(std::string_view block)>;

  explicit ScriptStream(Send send) : send_(std::move(send)) {}
  ScriptStream(const ScriptStream&) = delete;
  ScriptStream& operator=(const ScriptStream&) = delete;

  // The stream, to be closed by the caller while this exists; closing sends nothing. Null when it cannot be had.
  std::FILE* open();
  // Takes what has been written since; to be called after each operation that writes.
  void relay();
  // Sends what is left. False when this or any block before could not be sent.
  bool finish();
  bool failed() const { return failed_; }

 private:
  void write(std::string_view bytes);
  void relayAll();
  void sendBlock();

  static constexpr std::size_t kBlock = 65536;
  // So that the renderer sees a slow script grow.
  static constexpr std::chrono::seconds kLongestWait{5};

  Send send_;
  std::FILE* file_ = nullptr;  // what the stream writes to, where that cannot be this object
  std::string block_;
  std::chrono::steady_clock::time_point lastSent_ = std::chrono::steady_clock::now();
  bool failed_ = false;
};

}  // namespace standin
