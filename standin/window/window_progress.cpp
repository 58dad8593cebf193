#include "standin/window/window_progress.h"

#include <QCoreApplication>

namespace standin {
namespace {

constexpr qint64 kMilliseconds = 60;  // between two texts

}  // namespace

void WindowProgress::begin() { sinceShown_.invalidate(); }

void WindowProgress::show(const std::string& text) {
  if (sinceShown_.isValid() && sinceShown_.elapsed() < kMilliseconds) return;
  sinceShown_.start();
  if (display) display(text);
  // The user's doing waits until the work is done.
  QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void WindowProgress::end() {
  if (display) display({});
}

}  // namespace standin
