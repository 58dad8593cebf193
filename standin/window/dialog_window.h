// A dialog of the plug-in as a window.
#pragma once

#include <QDialog>
#include <QEventLoop>
#include <map>
#include <string>

#include "standin/app/dialog_grid.h"
#include "standin/window/dialog_control.h"

class QBoxLayout;

namespace standin {

// What the user does goes to the dialog of the session, and what its actions change shows at once. The window's cross
// and Escape press the dialog's default button. Columns that would make the window too wide go below the others.
class DialogWindow : public QDialog {
 public:
  DialogWindow(Dialog& dialog, QWidget* parent);

  // Shows the window until the dialog is exited, whoever hides it meanwhile.
  void run();

 protected:
  void reject() override;

 private:
  void fill(QBoxLayout& box, const std::string& layout);
  void addRows(QBoxLayout& box, const std::vector<DialogRow>& rows);
  void addBand(QBoxLayout& box, const std::vector<DialogRow>& rows, const std::vector<int>& columns);
  int widthOf(const std::vector<DialogRow>& rows, int column) const;
  QWidget* widgetOf(const Widget& component) const { return controls_.at(component.name).widget; }
  // Does what the user did, unless an action of this dialog is running; then shows what has come of it.
  void act(const std::function<void()>& what);
  void refresh();

  Dialog& dialog_;
  std::map<std::string, DialogControl> controls_;
  QEventLoop loop_;
  bool acting_ = false;
};

}  // namespace standin
