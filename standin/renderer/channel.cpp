#include "standin/renderer/channel.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace standin {
namespace {

bool waitFor(int socket, short events, Channel::Duration patience) {
  using Clock = std::chrono::steady_clock;
  const auto until = Clock::now() + patience;
  for (;;) {
    const auto left = std::chrono::duration_cast<Channel::Duration>(until - Clock::now());
    pollfd entry{socket, events, 0};
    const int ready = poll(&entry, 1, static_cast<int>(std::max<Channel::Duration::rep>(left.count(), 0)));
    if (ready >= 0 || errno != EINTR) return ready > 0;
  }
}

// 0, or what went wrong.
int connectSocket(int socket, int port, Channel::Duration patience) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) return 0;
  if (errno != EINPROGRESS) return errno;
  if (!waitFor(socket, POLLOUT, patience)) return ETIMEDOUT;
  int error = 0;
  socklen_t size = sizeof error;
  return getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &size) == 0 ? error : errno;
}

}  // namespace

std::optional<Channel> Channel::open(int port, const Hello& hello, Duration patience, std::string& error) {
  if (port < 1 || port > 65535) {
    error = "no port number";
    return std::nullopt;
  }
  Descriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  const int failed = socket ? connectSocket(socket.get(), port, patience) : errno;
  if (failed != 0) {
    error = std::generic_category().message(failed);
    return std::nullopt;
  }
  const int on = 1;
  setsockopt(socket.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  Channel channel(std::move(socket), hello.purpose == Purpose::kStatus ? kMaxStatus : kMaxPayload);
  std::optional<Message> answer;
  if (channel.send(MessageKind::kHello, helloPayload(hello), patience)) answer = channel.receive(patience);
  if (answer && answer->kind == MessageKind::kWelcome) return channel;
  error = answer && answer->kind == MessageKind::kFailed ? std::string(answer->payload)
                                                         : "what listens there is no renderer";
  return std::nullopt;
}

bool Channel::wait(short events, Duration patience) const { return waitFor(socket_.get(), events, patience); }

bool Channel::sendAll(std::string_view bytes, Duration patience) {
  while (!bytes.empty()) {
    const ssize_t sent = ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent > 0) {
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    } else if (errno == EAGAIN) {
      if (!wait(POLLOUT, patience)) return false;
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

bool Channel::send(MessageKind kind, std::string_view payload, Duration patience) {
  return sendAll(messageHead(kind, payload.size()), patience) && sendAll(payload, patience);
}

std::optional<Message> Channel::receive(Duration patience) {
  std::array<char, 65536> bytes;
  for (;;) {
    while (const auto message = reader_.next()) {
      if (message->kind != MessageKind::kBusy) return message;
    }
    if (reader_.faulty() || !wait(POLLIN, patience)) return std::nullopt;
    const ssize_t received = recv(socket_.get(), bytes.data(), bytes.size(), 0);
    if (received > 0) {
      reader_.append({bytes.data(), static_cast<std::size_t>(received)});
    } else if (received == 0 || (errno != EAGAIN && errno != EINTR)) {
      return std::nullopt;
    }
  }
}

}  // namespace standin
