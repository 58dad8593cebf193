// Wakes a thread that waits for sockets, from any other.
#pragma once

#include <array>

#include "standin/renderer/socket.h"

namespace standin {

class WakeUp {
 public:
  // Throws std::runtime_error.
  WakeUp() : ends_(Socket::connectedPair()) {}

  // Can be received from when somebody woke.
  SocketNumber number() const { return ends_.first.number(); }
  // When there is no room, wake-ups enough wait already.
  void wake() const { ends_.second.send("w"); }
  // All wake-ups so far are done with.
  void clear() const {
    std::array<char, 64> ignored;
    while (ends_.first.receive(ignored.data(), ignored.size()).value_or(0) > 0) {
    }
  }

 private:
  std::pair<Socket, Socket> ends_;
};

}  // namespace standin
