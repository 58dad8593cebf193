// The Qt widgets of a dialog's components.
#pragma once

#include <QWidget>
#include <functional>
#include <string>

#include "standin/cad/dialog.h"

namespace standin {

// What the user does with a component.
struct UserSide {
  std::function<void(const std::string& component, const std::string& text)> set;  // as userSet() takes it
  std::function<void(const std::string& component)> press;
};

struct DialogControl {
  QWidget* widget = nullptr;
  // Takes over the component's state, without telling the user's side.
  std::function<void(const Widget&)> show;
};

// The widget is named after the component. That of a layout is empty; its contents are for others to put in. The parent
// owns the widget.
DialogControl makeControl(const Widget& component, const UserSide& user, QWidget* parent);

}  // namespace standin
