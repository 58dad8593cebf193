#include "standin/renderer/client.h"

#include <fmt/format.h>

#include <chrono>
#include <optional>

#include "standin/app/failure.h"
#include "standin/renderer/channel.h"

namespace standin {
namespace {

constexpr std::chrono::seconds kWelcomePatience{5};
constexpr std::chrono::seconds kSilencePatience{60};

std::string ask(int port, Purpose purpose, MessageKind wanted) {
  std::string error;
  auto channel = Channel::open(port, {purpose, 0}, kWelcomePatience, error);
  if (!channel) throw Failure(ExitCode::kOutput, fmt::format("port {}: {}", port, error));
  const auto answer = channel->receive(kSilencePatience);
  if (answer && answer->kind == wanted) return std::string(answer->payload);
  throw Failure(ExitCode::kOutput, fmt::format("port {}: {}", port,
                                               answer && answer->kind == MessageKind::kFailed
                                                   ? std::string(answer->payload)
                                                   : "the renderer went away without an answer"));
}

}  // namespace

std::string askStatus(int port) { return ask(port, Purpose::kStatus, MessageKind::kStatus); }

void askToQuit(int port) { ask(port, Purpose::kQuit, MessageKind::kTaken); }

}  // namespace standin
