// Asks for a selection: a line above the picture with OK and Cancel.
#pragma once

#include <QEventLoop>
#include <QFrame>

class QLabel;
class QPushButton;

namespace standin {

class SelectionBar : public QFrame {
 public:
  explicit SelectionBar(QWidget* parent = nullptr);

  // Shows the line until the user presses a button; true for OK.
  bool ask();
  bool asking() const { return loop_.isRunning(); }
  void cancel() { loop_.exit(0); }
  // How many components are selected.
  void showCount(std::size_t count);

 private:
  QLabel* text_;
  QPushButton* ok_;
  QEventLoop loop_;
};

}  // namespace standin
