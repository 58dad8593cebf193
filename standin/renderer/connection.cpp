#include "standin/renderer/connection.h"

#include <algorithm>
#include <array>

namespace standin {
namespace {

using std::chrono::milliseconds;

// Strangers that never say what they are, and peers that do not close after their answer.
constexpr milliseconds kGreetingPatience{5000};
constexpr milliseconds kClosingPatience{1000};
constexpr milliseconds kKeepAlive{1000};

}  // namespace

Connection::Connection(Socket socket, const Bounds& bounds, Clock::time_point now)
    : socket_(std::move(socket)), bounds_(bounds), progress_(now) {}

Connection::Request Connection::receive(Clock::time_point now) {
  std::array<char, 262144> bytes;
  const auto count = socket_.receive(bytes.data(), bytes.size());
  if (!count) state_ = State::kGone;
  if (!count || *count == 0 || state_ == State::kAnswered) return Request::kNone;
  if (state_ == State::kScript) progress_ = now;
  reader_.append({bytes.data(), *count});
  Request request = Request::kNone;
  while (const auto message = reader_.next()) {
    const Request asked = take(*message, now);
    if (asked != Request::kNone) request = asked;
  }
  if (reader_.faulty() && state_ != State::kAnswered) {
    answer(MessageKind::kFailed, "this is no live link", now);
    return Request::kNone;
  }
  return request;
}

Connection::Request Connection::take(const Message& message, Clock::time_point now) {
  switch (state_) {
    case State::kGreeting:
      return greet(message, now);
    case State::kScript:
      return extend(message, now);
    case State::kWaiting:
      answer(MessageKind::kFailed, "nothing was to come after the request", now);
      return Request::kNone;
    case State::kAnswered:
    case State::kGone:
      break;
  }
  return Request::kNone;
}

Connection::Request Connection::greet(const Message& message, Clock::time_point now) {
  const auto hello = message.kind == MessageKind::kHello ? readHello(message.payload) : std::nullopt;
  if (!hello) {
    answer(MessageKind::kFailed, "this is no live link, or one of another version", now);
    return Request::kNone;
  }
  out_ += standin::message(MessageKind::kWelcome);
  greeted_ = true;
  progress_ = now;
  state_ = hello->purpose == Purpose::kScene ? State::kScript : State::kWaiting;
  if (hello->purpose == Purpose::kStatus) return Request::kStatus;
  return hello->purpose == Purpose::kQuit ? Request::kQuit : Request::kNone;
}

Connection::Request Connection::extend(const Message& message, Clock::time_point now) {
  if (message.kind == MessageKind::kDone) {
    state_ = State::kWaiting;
    return Request::kScene;
  }
  if (message.kind != MessageKind::kScript) {
    answer(MessageKind::kFailed, "a part of a script was to come", now);
  } else if (message.payload.size() > bounds_.maxScript - spool_.size()) {
    answer(MessageKind::kFailed, "the script is longer than " + std::to_string(bounds_.maxScript) + " bytes", now);
  } else if (!spool_.append(message.payload)) {
    answer(MessageKind::kFailed, "there is no room for the script", now);
  }
  return Request::kNone;
}

void Connection::answer(MessageKind kind, std::string_view payload, Clock::time_point now) {
  if (state_ == State::kGone || state_ == State::kAnswered) return;
  out_ += message(kind, payload);
  state_ = State::kAnswered;
  progress_ = now;
  spool_ = ScriptSpool();
}

void Connection::keepAlive(Clock::time_point now) {
  if (state_ != State::kWaiting || wantsToSend() || now - progress_ < kKeepAlive) return;
  out_ += message(MessageKind::kBusy);
  progress_ = now;
}

void Connection::send(Clock::time_point now) {
  const auto count = socket_.send(out_);
  if (!count) state_ = State::kGone;
  if (!count || *count == 0) return;
  progress_ = now;
  out_.erase(0, *count);
  // The peer reads its answer before it learns that nothing else comes.
  if (out_.empty() && state_ == State::kAnswered) socket_.endSending();
}

bool Connection::over(Clock::time_point now) const {
  const auto since = now - progress_;
  switch (state_) {
    case State::kGreeting:
      return since > std::min(kGreetingPatience, bounds_.patience);
    case State::kScript:
      return since > bounds_.patience;
    case State::kWaiting:
      return wantsToSend() && since > bounds_.patience;
    case State::kAnswered:
      return since > (wantsToSend() ? bounds_.patience : kClosingPatience);
    case State::kGone:
      return true;
  }
  return true;
}

}  // namespace standin
