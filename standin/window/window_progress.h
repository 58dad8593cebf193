// Progress in the status bar, with the window kept alive while work goes on in its thread.
#pragma once

#include <QElapsedTimer>
#include <functional>
#include <string>

#include "tools/terminal/progress.h"

namespace standin {

class WindowProgress : public terminal::Progress {
 public:
  WindowProgress() : Progress(nullptr) {}

  // Where the texts go; an empty one when the work is done.
  std::function<void(const std::string&)> display;

  void begin() override;
  void show(const std::string& text) override;
  void end() override;

 private:
  QElapsedTimer sinceShown_;
};

}  // namespace standin
