// Dialogs. A wrong order of calls or an unknown name is the plug-in's fault and is noted besides the status.
#include <algorithm>

#include "standin/cad/operation.h"

using standin::Dialog;
using standin::Operation;
using standin::Session;
using standin::Widget;

namespace {

// A dialog that still stands after so many presses is taken for one that nobody ends.
constexpr int kMostPresses = 10;

std::string quoted(const char* name) {
  std::string text(1, '"');
  text += name;
  text += '"';
  return text;
}

// The dialog of a name; null when there is none, with the misuse noted.
Dialog* findDialog(Operation& operation, const char* name) {
  const auto found = operation.impl().dialogs.find(name);
  if (found == operation.impl().dialogs.end()) {
    operation.misuse("there is no dialog " + quoted(name));
    return nullptr;
  }
  return found->second.get();
}

std::deque<Widget>::iterator findWidget(Dialog& dialog, const std::string& name) {
  return std::find_if(dialog.widgets.begin(), dialog.widgets.end(),
                      [&](const Widget& widget) { return widget.name == name; });
}

ProError addWidget(Operation& operation, const char* kind, const char* dialogName, const char* name,
                   const ProUIGridopts* grid) {
  if (dialogName == nullptr || name == nullptr || *name == '\0' || grid == nullptr) return PRO_TK_BAD_INPUTS;
  Dialog* dialog = findDialog(operation, dialogName);
  if (dialog == nullptr) return PRO_TK_E_NOT_FOUND;
  if (findWidget(*dialog, name) != dialog->widgets.end()) {
    operation.misuse("the dialog " + quoted(dialogName) + " has a component " + quoted(name) + " already");
    return PRO_TK_E_FOUND;
  }
  Widget& widget = dialog->widgets.emplace_back();
  widget.kind = kind;
  widget.name = name;
  widget.column = grid->column;
  widget.row = grid->row;
  return PRO_TK_NO_ERROR;
}

// Does something to a component that must exist and be of the kind.
template <typename Change>
ProError changeWidget(Operation& operation, const char* kind, const char* dialogName, const char* name, Change change) {
  if (dialogName == nullptr || name == nullptr) return PRO_TK_BAD_INPUTS;
  Dialog* dialog = findDialog(operation, dialogName);
  if (dialog == nullptr) return PRO_TK_E_NOT_FOUND;
  const auto widget = findWidget(*dialog, name);
  if (widget == dialog->widgets.end() || widget->kind != kind) {
    operation.misuse("the dialog " + quoted(dialogName) + " has no " + kind + " " + quoted(name));
    return PRO_TK_E_NOT_FOUND;
  }
  change(*widget);
  return PRO_TK_NO_ERROR;
}

ProError setText(Operation& operation, const char* kind, const char* dialogName, const char* name,
                 const wchar_t* text) {
  if (text == nullptr) return PRO_TK_BAD_INPUTS;
  return changeWidget(operation, kind, dialogName, name, [&](Widget& widget) { widget.text = text; });
}

// Lets the user's side act until the dialog is exited.
void runDialog(Operation& operation, Dialog& dialog) {
  Session& session = operation.session();
  if (session.onDialog) {
    session.onDialog(dialog);
  } else {
    const auto button = std::find_if(dialog.widgets.begin(), dialog.widgets.end(), [](const Widget& widget) {
      return widget.kind == "pushbutton" && widget.activate != nullptr;
    });
    for (int press = 0; button != dialog.widgets.end() && !dialog.exitStatus && press < kMostPresses; ++press) {
      session.press(dialog, button->name);
    }
  }
  operation.impl().forgetAnswers();
}

}  // namespace

extern "C" {

// There are no resource files here: a dialog is always built by the calls that follow.
ProError ProUIDialogCreate(char* dialog_name, char* resource_name) {
  Operation operation("ProUIDialogCreate");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (dialog_name == nullptr || *dialog_name == '\0') return PRO_TK_BAD_INPUTS;
  if (resource_name != nullptr && *resource_name != '\0') return PRO_TK_E_NOT_FOUND;
  std::unique_ptr<Dialog>& dialog = operation.impl().dialogs[dialog_name];
  if (dialog != nullptr) {
    operation.misuse("there is a dialog " + quoted(dialog_name) + " already");
    return PRO_TK_E_FOUND;
  }
  dialog = std::make_unique<Dialog>();
  dialog->name = dialog_name;
  return PRO_TK_NO_ERROR;
}

ProError ProUIDialogActivate(char* dialog_name, int* p_return_value) {
  Operation operation("ProUIDialogActivate");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (dialog_name == nullptr) return PRO_TK_BAD_INPUTS;
  Dialog* dialog = findDialog(operation, dialog_name);
  if (dialog == nullptr) return PRO_TK_E_NOT_FOUND;
  if (dialog->active) {
    operation.misuse("the dialog " + quoted(dialog_name) + " is active already");
    return PRO_TK_BAD_CONTEXT;
  }
  operation.session().dialogsShown.emplace_back(dialog_name);
  dialog->exitStatus.reset();
  dialog->active = true;
  runDialog(operation, *dialog);
  dialog->active = false;
  if (!dialog->exitStatus) {
    operation.misuse("nothing ended the dialog " + quoted(dialog_name));
    return PRO_TK_GENERAL_ERROR;
  }
  if (p_return_value != nullptr) {
    *p_return_value = *dialog->exitStatus;
  }
  return PRO_TK_NO_ERROR;
}

ProError ProUIDialogExit(char* dialog_name, int return_value) {
  Operation operation("ProUIDialogExit");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (dialog_name == nullptr) return PRO_TK_BAD_INPUTS;
  Dialog* dialog = findDialog(operation, dialog_name);
  if (dialog == nullptr) return PRO_TK_E_NOT_FOUND;
  if (!dialog->active) {
    operation.misuse("the dialog " + quoted(dialog_name) + " is not active");
    return PRO_TK_BAD_CONTEXT;
  }
  dialog->exitStatus = return_value;
  return PRO_TK_NO_ERROR;
}

ProError ProUIDialogDestroy(char* dialog_name) {
  Operation operation("ProUIDialogDestroy");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (dialog_name == nullptr) return PRO_TK_BAD_INPUTS;
  const Dialog* dialog = findDialog(operation, dialog_name);
  if (dialog == nullptr) return PRO_TK_E_NOT_FOUND;
  if (dialog->active) {
    operation.misuse("the dialog " + quoted(dialog_name) + " is active");
    return PRO_TK_BAD_CONTEXT;
  }
  operation.impl().dialogs.erase(dialog_name);
  return PRO_TK_NO_ERROR;
}

ProError ProUIDialogLabelAdd(char* dialog_name, char* label_name, ProUIGridopts* p_grid_options) {
  Operation operation("ProUIDialogLabelAdd");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  return addWidget(operation, "label", dialog_name, label_name, p_grid_options);
}

ProError ProUIDialogPushbuttonAdd(char* dialog_name, char* button_name, ProUIGridopts* p_grid_options) {
  Operation operation("ProUIDialogPushbuttonAdd");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  return addWidget(operation, "pushbutton", dialog_name, button_name, p_grid_options);
}

ProError ProUILabelTextSet(char* dialog_name, char* label_name, wchar_t* text) {
  Operation operation("ProUILabelTextSet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  return setText(operation, "label", dialog_name, label_name, text);
}

ProError ProUIPushbuttonTextSet(char* dialog_name, char* button_name, wchar_t* text) {
  Operation operation("ProUIPushbuttonTextSet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  return setText(operation, "pushbutton", dialog_name, button_name, text);
}

ProError ProUIPushbuttonActivateActionSet(char* dialog_name, char* button_name, ProUIAction action,
                                          ProAppData app_data) {
  Operation operation("ProUIPushbuttonActivateActionSet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (action == nullptr) return PRO_TK_BAD_INPUTS;
  return changeWidget(operation, "pushbutton", dialog_name, button_name, [&](Widget& widget) {
    widget.activate = action;
    widget.data = app_data;
  });
}
}
