#include "tools/terminal/progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include "tools/terminal/signal_cleanup.h"

namespace terminal {
namespace {

constexpr std::chrono::milliseconds kPatience{500};
constexpr std::chrono::milliseconds kInterval{100};
constexpr const char* kClearLine = "\r\033[K";

}  // namespace

Progress::Progress(std::FILE* stream) : stream_(stream && isatty(fileno(stream)) ? stream : nullptr) { restart(); }

void Progress::begin() { restart(); }

void Progress::restart() {
  hide();
  next_ = Clock::now() + kPatience;
}

void Progress::show(const std::string& text) {
  if (!stream_ || Clock::now() < next_) return;
  fmt::print(stream_, "{}{}", kClearLine, text);
  std::fflush(stream_);
  next_ = Clock::now() + kInterval;
  shown_ = true;
  clearLineOnSignal(fileno(stream_));
}

void Progress::end() { hide(); }

void Progress::hide() {
  if (!shown_) return;
  fmt::print(stream_, "{}", kClearLine);
  std::fflush(stream_);
  shown_ = false;
  clearLineOnSignal(-1);
}

}  // namespace terminal
