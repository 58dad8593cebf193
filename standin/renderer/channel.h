// The client's end of a connection to a renderer of this machine.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "standin/renderer/socket.h"
#include "standin/renderer/wire.h"

namespace standin {

class Channel {
 public:
  using Duration = Socket::Duration;

  // Nothing, with the reason in `error`, unless a renderer listens at the port of 127.0.0.1 and welcomes the purpose
  // within the time.
  static std::optional<Channel> open(int port, const Hello& hello, Duration patience, std::string& error);

  // False when the peer is gone, or has taken nothing for so long. Signals are not raised.
  bool send(MessageKind kind, std::string_view payload, Duration patience);
  // The next message that does not just say that work goes on. Nothing when the peer is gone, breaks the rules, or says
  // nothing at all for so long. The payload lives until the next call.
  std::optional<Message> receive(Duration patience);

 private:
  Channel(Socket socket, std::size_t maxPayload) : socket_(std::move(socket)), reader_(maxPayload) {}
  bool sendAll(std::string_view bytes, Duration patience);

  Socket socket_;
  MessageReader reader_;
};

}  // namespace standin
