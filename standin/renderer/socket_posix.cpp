#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

#include "standin/renderer/socket.h"

namespace standin {
namespace {

[[noreturn]] void failWith(const std::string& what) { throw std::system_error(errno, std::generic_category(), what); }

sockaddr_in localAddress(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

void turnOn(int socket, int level, int option) {
  const int on = 1;
  setsockopt(socket, level, option, &on, sizeof on);
}

std::optional<std::size_t> transferred(ssize_t count) {
  if (count > 0) return static_cast<std::size_t>(count);
  if (count < 0 && (errno == EAGAIN || errno == EINTR)) return 0;
  return std::nullopt;
}

bool pollAll(std::vector<pollfd>& entries, Socket::Duration patience) {
  using Clock = std::chrono::steady_clock;
  const auto until = Clock::now() + patience;
  for (;;) {
    const auto left = std::chrono::duration_cast<Socket::Duration>(until - Clock::now());
    const int ready =
        poll(entries.data(), entries.size(), static_cast<int>(std::max<Socket::Duration::rep>(left.count(), 0)));
    if (ready >= 0 || errno != EINTR) return ready > 0;
  }
}

bool pollOne(int socket, short events, Socket::Duration patience) {
  std::vector<pollfd> entries = {{socket, events, 0}};
  return pollAll(entries, patience);
}

}  // namespace

Socket::~Socket() {
  if (number_ != kNone) close(number_);
}

Socket Socket::make() { return Socket(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)); }

Socket Socket::listenAt(int port) {
  Socket listener = make();
  if (!listener) failWith("socket");
  turnOn(listener.number_, SOL_SOCKET, SO_REUSEADDR);
  const sockaddr_in address = localAddress(port);
  if (bind(listener.number_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      listen(listener.number_, SOMAXCONN) != 0) {
    failWith("port " + std::to_string(port));
  }
  return listener;
}

Socket Socket::connectTo(int port, Duration patience, std::string& error) {
  Socket made = make();
  const sockaddr_in address = localAddress(port);
  int failed = errno;
  if (made) {
    failed = connect(made.number_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 ? 0 : errno;
    if (failed == EINPROGRESS) {
      failed = ETIMEDOUT;
      socklen_t size = sizeof failed;
      if (pollOne(made.number_, POLLOUT, patience) &&
          getsockopt(made.number_, SOL_SOCKET, SO_ERROR, &failed, &size) != 0) {
        failed = errno;
      }
    }
  }
  if (failed != 0) {
    error = std::generic_category().message(failed);
    return {};
  }
  turnOn(made.number_, IPPROTO_TCP, TCP_NODELAY);
  return made;
}

std::pair<Socket, Socket> Socket::connectedPair() {
  std::array<int, 2> numbers{};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, numbers.data()) != 0) failWith("socketpair");
  return {Socket(numbers[0]), Socket(numbers[1])};
}

int Socket::port() const {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  if (getsockname(number_, reinterpret_cast<sockaddr*>(&address), &size) != 0) failWith("port");
  return ntohs(address.sin_port);
}

Socket Socket::accept() const {
  Socket peer(accept4(number_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
  if (peer) turnOn(peer.number_, IPPROTO_TCP, TCP_NODELAY);
  return peer;
}

std::optional<std::size_t> Socket::send(std::string_view bytes) const {
  return bytes.empty() ? 0 : transferred(::send(number_, bytes.data(), bytes.size(), MSG_NOSIGNAL));
}

std::optional<std::size_t> Socket::receive(char* buffer, std::size_t size) const {
  return transferred(recv(number_, buffer, size, 0));
}

void Socket::endSending() const { shutdown(number_, SHUT_WR); }

bool Socket::waitToSend(Duration patience) const { return pollOne(number_, POLLOUT, patience); }

bool Socket::waitToReceive(Duration patience) const { return pollOne(number_, POLLIN, patience); }

bool waitForAny(std::vector<WatchedSocket>& sockets, Socket::Duration patience) {
  std::vector<pollfd> entries;
  entries.reserve(sockets.size());
  for (const WatchedSocket& socket : sockets) {
    entries.push_back({socket.number, static_cast<short>(socket.forSending ? POLLIN | POLLOUT : POLLIN), 0});
  }
  if (!pollAll(entries, patience)) return false;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    sockets[i].canSend = (entries[i].revents & POLLOUT) != 0;
    sockets[i].canReceive = (entries[i].revents & ~POLLOUT) != 0;
  }
  return true;
}

}  // namespace standin
