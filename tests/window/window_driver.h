// The user of windows: finds what is open and does something in it.
#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QTest>
#include <QTimer>
#include <functional>
#include <stdexcept>
#include <string>

namespace standin::testing {

// One for the whole program, which never ends it: what Qt keeps in statics may be gone by then. Tests that need no
// display run without one.
inline QApplication& application(const char* platform = nullptr) {
  static int count = 1;
  static char name[] = "test";
  static char* arguments[] = {name, nullptr};
  if (platform != nullptr) qputenv("QT_QPA_PLATFORM", platform);
  QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
  static auto* const instance = new QApplication(count, arguments);
  return *instance;
}

// A part of a window, by its name; throws when there is none.
template <typename Part = QWidget>
Part& part(const QWidget& window, const std::string& name) {
  auto* found = window.findChild<Part*>(QString::fromStdString(name));
  if (found == nullptr) throw std::runtime_error(window.objectName().toStdString() + " has no part " + name);
  return *found;
}

inline void click(QWidget& widget, const QPoint& place = {}) {
  QTest::mouseClick(&widget, Qt::LeftButton, Qt::NoModifier, place);
}

// Does something in the next window, or part of one, of the name that is shown, from the program's event loop.
inline void whenOpen(const std::string& name, std::function<void(QWidget&)> act) {
  auto* timer = new QTimer(qApp);
  QObject::connect(timer, &QTimer::timeout, timer, [timer, name, act = std::move(act)] {
    for (QWidget* window : QApplication::allWidgets()) {
      if (!window->isVisible() || window->objectName().toStdString() != name) continue;
      timer->stop();
      timer->deleteLater();
      QTest::qWait(50);
      act(*window);
      return;
    }
  });
  timer->start(10);
}

inline void waitFor(const std::string& what, const std::function<bool()>& condition) {
  if (!QTest::qWaitFor(condition, 60000)) throw std::runtime_error("waited in vain for " + what);
}

}  // namespace standin::testing
