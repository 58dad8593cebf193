// The renderer's end of one connection. Nothing here waits: the server calls when the socket is ready.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "standin/renderer/script_bytes.h"
#include "standin/renderer/socket.h"
#include "standin/renderer/wire.h"

namespace standin {

class Connection {
 public:
  using Clock = std::chrono::steady_clock;

  struct Bounds {
    std::uint64_t maxScript = 0;           // bytes
    std::chrono::milliseconds patience{};  // without progress
  };
  // What the peer has come to ask for; once for each connection.
  enum class Request { kNone, kScene, kStatus, kQuit };

  Connection(Socket socket, const Bounds& bounds, Clock::time_point now);

  SocketNumber socket() const { return socket_.number(); }
  bool wantsToSend() const { return !out_.empty(); }
  // The peer has said what it wants.
  bool greeted() const { return greeted_; }

  // Takes some of what has come.
  Request receive(Clock::time_point now);
  void send(Clock::time_point now);
  // The script, after a request for a scene.
  ScriptBytes takeScript() { return spool_.take(); }
  // The answer to the request, or why there is none. Nothing but this is sent any more.
  void answer(MessageKind kind, std::string_view payload, Clock::time_point now);
  // Tells a peer that waits for its answer that work goes on.
  void keepAlive(Clock::time_point now);

  // To be closed: the peer is gone or has its answer, or there was no progress for too long.
  bool over(Clock::time_point now) const;

 private:
  enum class State { kGreeting, kScript, kWaiting, kAnswered, kGone };

  Request take(const Message& message, Clock::time_point now);
  Request greet(const Message& message, Clock::time_point now);
  Request extend(const Message& message, Clock::time_point now);

  Socket socket_;
  Bounds bounds_;
  MessageReader reader_{kMaxPayload};
  ScriptSpool spool_;
  std::string out_;
  State state_ = State::kGreeting;
  bool greeted_ = false;
  Clock::time_point progress_;  // the last, or the beginning of the state
};

}  // namespace standin
