#include <winsock2.h>

#include <algorithm>
#include <climits>
#include <system_error>

#include "standin/renderer/socket.h"

namespace standin {
namespace {

[[noreturn]] void failWith(const std::string& what) {
  throw std::system_error(WSAGetLastError(), std::system_category(), what);
}

sockaddr_in localAddress(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

void turnOn(SOCKET socket, int level, int option) {
  const BOOL on = TRUE;
  setsockopt(socket, level, option, reinterpret_cast<const char*>(&on), sizeof on);
}

void stopWaiting(SOCKET socket) {
  u_long on = 1;
  ioctlsocket(socket, static_cast<long>(FIONBIO), &on);
}

std::optional<std::size_t> transferred(int count) {
  if (count > 0) return static_cast<std::size_t>(count);
  if (count < 0 && WSAGetLastError() == WSAEWOULDBLOCK) return 0;
  return std::nullopt;
}

int partOf(std::size_t size) { return static_cast<int>(std::min<std::size_t>(size, INT_MAX)); }

int pollAll(std::vector<WSAPOLLFD>& entries, Socket::Duration patience) {
  const auto wait = std::clamp<Socket::Duration::rep>(patience.count(), 0, INT_MAX);
  return WSAPoll(entries.data(), static_cast<ULONG>(entries.size()), static_cast<int>(wait));
}

bool pollOne(SOCKET socket, short events, Socket::Duration patience) {
  std::vector<WSAPOLLFD> entries = {{socket, events, 0}};
  return pollAll(entries, patience) > 0;
}

// What became of a connection that is being made: 0, or what went wrong. Polling would not tell of refusals before
// Windows 10.
int connected(SOCKET socket, Socket::Duration patience) {
  fd_set made = {1, {socket}};
  fd_set failed = {1, {socket}};
  const auto whole = std::chrono::duration_cast<std::chrono::seconds>(patience);
  timeval wait = {static_cast<long>(whole.count()), static_cast<long>((patience - whole).count() * 1000)};
  const int ready = select(0, nullptr, &made, &failed, &wait);
  if (ready < 0) return WSAGetLastError();
  if (ready == 0) return WSAETIMEDOUT;
  if (failed.fd_count == 0) return 0;
  int error = 0;
  int size = sizeof error;
  getsockopt(socket, SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error), &size);
  return error != 0 ? error : WSAECONNREFUSED;
}

}  // namespace

// Each socket holds a start of the system's sockets of its own, so that a library that is unloaded leaves none behind.
Socket Socket::make() {
  WSADATA data;
  const int failed = WSAStartup(MAKEWORD(2, 2), &data);
  if (failed != 0) {
    WSASetLastError(failed);
    return {};
  }
  Socket made(WSASocketW(AF_INET, SOCK_STREAM, IPPROTO_TCP, nullptr, 0, WSA_FLAG_OVERLAPPED));
  if (made) {
    SetHandleInformation(reinterpret_cast<HANDLE>(made.number_), HANDLE_FLAG_INHERIT, 0);  // NOLINT(*-int-to-ptr)
    stopWaiting(made.number_);
  } else {
    const int error = WSAGetLastError();
    WSACleanup();
    WSASetLastError(error);
  }
  return made;
}

Socket::~Socket() {
  if (number_ == kNone) return;
  closesocket(number_);
  WSACleanup();
}

Socket Socket::listenAt(int port) {
  Socket listener = make();
  if (!listener) failWith("socket");
  turnOn(listener.number_, SOL_SOCKET, SO_EXCLUSIVEADDRUSE);
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
  int failed = 0;
  if (!made || connect(made.number_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    failed = WSAGetLastError();
    if (failed == WSAEWOULDBLOCK) failed = connected(made.number_, patience);
  }
  if (failed != 0) {
    error = std::system_category().message(failed);
    return {};
  }
  turnOn(made.number_, IPPROTO_TCP, TCP_NODELAY);
  return made;
}

// There is nothing like this but two ends of a connection of one's own. Somebody else's would be as good a peer as
// none: the two only wake each other.
std::pair<Socket, Socket> Socket::connectedPair() {
  constexpr Duration kPatience{5000};
  const Socket listener = listenAt(0);
  std::string error;
  Socket one = connectTo(listener.port(), kPatience, error);
  Socket other = one && listener.waitToReceive(kPatience) ? listener.accept() : Socket();
  if (!other) throw std::runtime_error("no pair of sockets: " + error);
  return {std::move(one), std::move(other)};
}

int Socket::port() const {
  sockaddr_in address{};
  int size = sizeof address;
  if (getsockname(number_, reinterpret_cast<sockaddr*>(&address), &size) != 0) failWith("port");
  return ntohs(address.sin_port);
}

Socket Socket::accept() const {
  WSADATA data;
  if (WSAStartup(MAKEWORD(2, 2), &data) != 0) return {};
  Socket peer(::accept(number_, nullptr, nullptr));
  if (!peer) {
    WSACleanup();
    return {};
  }
  stopWaiting(peer.number_);
  turnOn(peer.number_, IPPROTO_TCP, TCP_NODELAY);
  return peer;
}

std::optional<std::size_t> Socket::send(std::string_view bytes) const {
  return bytes.empty() ? 0 : transferred(::send(number_, bytes.data(), partOf(bytes.size()), 0));
}

std::optional<std::size_t> Socket::receive(char* buffer, std::size_t size) const {
  return transferred(recv(number_, buffer, partOf(size), 0));
}

void Socket::endSending() const { shutdown(number_, SD_SEND); }

bool Socket::waitToSend(Duration patience) const { return pollOne(number_, POLLOUT, patience); }

bool Socket::waitToReceive(Duration patience) const { return pollOne(number_, POLLIN, patience); }

bool waitForAny(std::vector<WatchedSocket>& sockets, Socket::Duration patience) {
  std::vector<WSAPOLLFD> entries;
  entries.reserve(sockets.size());
  for (const WatchedSocket& socket : sockets) {
    entries.push_back({socket.number, static_cast<short>(socket.forSending ? POLLIN | POLLOUT : POLLIN), 0});
  }
  if (pollAll(entries, patience) <= 0) return false;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    sockets[i].canSend = (entries[i].revents & POLLOUT) != 0;
    sockets[i].canReceive = (entries[i].revents & ~POLLOUT) != 0;
  }
  return true;
}

}  // namespace standin
