// Stream sockets of this machine, 127.0.0.1 only. Nothing here waits but what says so; signals are not raised.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace standin {

#ifdef _WIN32
using SocketNumber = std::uintptr_t;
#else
using SocketNumber = int;
#endif

// One socket, or none, with one owner.
class Socket {
 public:
  using Duration = std::chrono::milliseconds;

  Socket() = default;
  Socket(Socket&& other) noexcept : number_(std::exchange(other.number_, kNone)) {}
  Socket& operator=(Socket&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;
  ~Socket();

  // 0 stands for a port that is free. Throws std::system_error.
  static Socket listenAt(int port);
  // Waits for so long. None, with the reason in `error`, when nobody listens there.
  static Socket connectTo(int port, Duration patience, std::string& error);
  // Two that are connected to each other. Throws std::system_error.
  static std::pair<Socket, Socket> connectedPair();

  explicit operator bool() const { return number_ != kNone; }
  SocketNumber number() const { return number_; }
  // Its own. Throws std::system_error.
  int port() const;

  // The next peer of a socket that listens; none when nobody waits.
  Socket accept() const;
  // So many bytes were sent, or have come into the buffer: 0 when it cannot be now, nothing when the peer is gone.
  std::optional<std::size_t> send(std::string_view bytes) const;
  std::optional<std::size_t> receive(char* buffer, std::size_t size) const;
  // Nothing is sent any more; the peer learns it.
  void endSending() const;

  // False when that cannot be for so long. When the peer is gone, it can.
  bool waitToSend(Duration patience) const;
  bool waitToReceive(Duration patience) const;

 private:
  static constexpr auto kNone = static_cast<SocketNumber>(-1);

  explicit Socket(SocketNumber number) : number_(number) {}
  // A new one, in no connection; none when the system has no more.
  static Socket make();

  SocketNumber number_ = kNone;
};

struct WatchedSocket {
  SocketNumber number = 0;
  bool forSending = false;
  // What a wait finds. A peer that is gone can be received from.
  bool canSend = false;
  bool canReceive = false;
};

// Waits until one of them can be received from, or sent to where that is asked for. False when none can for so long.
bool waitForAny(std::vector<WatchedSocket>& sockets, Socket::Duration patience);

}  // namespace standin
