#include "standin/renderer/channel.h"

#include <array>

namespace standin {

std::optional<Channel> Channel::open(int port, const Hello& hello, Duration patience, std::string& error) {
  if (port < 1 || port > 65535) {
    error = "no port number";
    return std::nullopt;
  }
  Socket socket = Socket::connectTo(port, patience, error);
  if (!socket) return std::nullopt;
  Channel channel(std::move(socket), hello.purpose == Purpose::kStatus ? kMaxStatus : kMaxPayload);
  std::optional<Message> answer;
  if (channel.send(MessageKind::kHello, helloPayload(hello), patience)) answer = channel.receive(patience);
  if (answer && answer->kind == MessageKind::kWelcome) return channel;
  error = answer && answer->kind == MessageKind::kFailed ? std::string(answer->payload)
                                                         : "what listens there is no renderer";
  return std::nullopt;
}

bool Channel::sendAll(std::string_view bytes, Duration patience) {
  while (!bytes.empty()) {
    const auto sent = socket_.send(bytes);
    if (!sent || (*sent == 0 && !socket_.waitToSend(patience))) return false;
    bytes.remove_prefix(*sent);
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
    if (reader_.faulty() || !socket_.waitToReceive(patience)) return std::nullopt;
    const auto received = socket_.receive(bytes.data(), bytes.size());
    if (!received) return std::nullopt;
    reader_.append({bytes.data(), *received});
  }
}

}  // namespace standin
