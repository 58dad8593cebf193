// What the operations on dialogs share: finding dialogs and components, and noting what is wrong with the names.
// Private to the session.
#pragma once

#include <string>

#include "standin/cad/dialog.h"
#include "standin/cad/operation.h"

namespace standin {

inline std::string quoted(const char* name) { return '"' + std::string(name) + '"'; }

// The dialog of a name; null when there is none, with the misuse noted.
Dialog* findDialog(Operation& operation, const char* name);

// The component of a name and a kind; null when there is none, with the misuse noted.
Widget* findWidget(Operation& operation, WidgetKind kind, Dialog& dialog, const char* name);

// Runs an operation on a dialog: `act(operation, dialog)` gives its status.
template <typename Act>
ProError onDialog(const char* operationName, const char* dialogName, Act act) {
  Operation operation(operationName);
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (dialogName == nullptr || *dialogName == '\0') return PRO_TK_BAD_INPUTS;
  Dialog* dialog = findDialog(operation, dialogName);
  return dialog != nullptr ? act(operation, *dialog) : PRO_TK_E_NOT_FOUND;
}

// Runs an operation on a component: `act(operation, widget)` gives its status.
template <typename Act>
ProError onWidget(const char* operationName, WidgetKind kind, const char* dialogName, const char* name, Act act) {
  return onDialog(operationName, dialogName, [&](Operation& operation, Dialog& dialog) {
    if (name == nullptr) return PRO_TK_BAD_INPUTS;
    Widget* widget = findWidget(operation, kind, dialog, name);
    return widget != nullptr ? act(operation, *widget) : PRO_TK_E_NOT_FOUND;
  });
}

// The same for one that only changes the component, and cannot fail then.
template <typename Change>
ProError changeWidget(const char* operationName, WidgetKind kind, const char* dialogName, const char* name,
                      Change change) {
  return onWidget(operationName, kind, dialogName, name, [&](Operation&, Widget& widget) {
    change(widget);
    return PRO_TK_NO_ERROR;
  });
}

// Sets a text or a help text.
ProError setText(const char* operationName, WidgetKind kind, const char* dialogName, const char* name,
                 std::wstring Widget::*field, const wchar_t* text);

}  // namespace standin
