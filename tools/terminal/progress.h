// A line on the terminal, or in a window, that says how far long work is.
#pragma once

#include <chrono>
#include <cstdio>
#include <string>

namespace terminal {

class Progress {
 public:
  // Writes to the stream when it is a terminal; a null stream stays silent.
  explicit Progress(std::FILE* stream);
  virtual ~Progress() { hide(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Work begins: nothing shows until it has taken half a second.
  virtual void begin();
  // Shows the text, which has no line break and fits a line. To be called as often as one likes.
  virtual void show(const std::string& text);
  // Work is done: the line is cleared.
  virtual void end();

 private:
  void restart();
  void hide();

  using Clock = std::chrono::steady_clock;
  std::FILE* stream_;
  Clock::time_point next_{};
  bool shown_ = false;
};

}  // namespace terminal
