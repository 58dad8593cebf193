// Dialogs and how they are built. A wrong order of calls or an unknown name is the plug-in's fault and is noted besides
// the status.
#include <algorithm>
#include <memory>

#include "standin/cad/dialog_operation.h"

using standin::changeWidget;
using standin::Dialog;
using standin::onDialog;
using standin::Operation;
using standin::quoted;
using standin::Session;
using standin::setText;
using standin::Widget;
using standin::WidgetKind;

namespace standin {

Dialog* findDialog(Operation& operation, const char* name) {
  const auto found = operation.impl().dialogs.find(name);
  if (found == operation.impl().dialogs.end()) {
    operation.misuse("there is no dialog " + quoted(name));
    return nullptr;
  }
  return found->second.get();
}

Widget* findWidget(Operation& operation, WidgetKind kind, Dialog& dialog, const char* name) {
  Widget* widget = findWidget(dialog, name);
  if (widget == nullptr || widget->kind != kind) {
    operation.misuse("the dialog " + quoted(dialog.name.c_str()) + " has no " + kindName(kind) + " " + quoted(name));
    return nullptr;
  }
  return widget;
}

ProError setText(const char* operationName, WidgetKind kind, const char* dialogName, const char* name,
                 std::wstring Widget::*field, const wchar_t* text) {
  if (text == nullptr) return PRO_TK_BAD_INPUTS;
  return changeWidget(operationName, kind, dialogName, name, [&](Widget& widget) { widget.*field = text; });
}

}  // namespace standin

namespace {

void place(Widget& widget, const ProUIGridopts& grid) {
  widget.column = grid.column;
  widget.row = grid.row;
  widget.columns = std::max(grid.horz_cells, 1);
  widget.rows = std::max(grid.vert_cells, 1);
  widget.attached = {grid.attach_left != PRO_B_FALSE, grid.attach_right != PRO_B_FALSE, grid.attach_top != PRO_B_FALSE,
                     grid.attach_bottom != PRO_B_FALSE};
}

// Adds to the dialog itself when there is no layout. A name is free once in the whole dialog.
ProError addTo(Operation& operation, Dialog& dialog, const char* layout, WidgetKind kind, const char* name,
               const ProUIGridopts* grid) {
  if (name == nullptr || *name == '\0' || grid == nullptr) return PRO_TK_BAD_INPUTS;
  if (layout != nullptr && findWidget(operation, WidgetKind::layout, dialog, layout) == nullptr) {
    return PRO_TK_E_NOT_FOUND;
  }
  if (standin::findWidget(dialog, name) != nullptr) {
    operation.misuse("the dialog " + quoted(dialog.name.c_str()) + " has a component " + quoted(name) + " already");
    return PRO_TK_E_FOUND;
  }
  Widget& widget = dialog.widgets.emplace_back();
  widget.kind = kind;
  widget.name = name;
  widget.layout = layout != nullptr ? layout : "";
  place(widget, *grid);
  return PRO_TK_NO_ERROR;
}

ProError addWidget(const char* operationName, WidgetKind kind, const char* dialogName, const char* name,
                   const ProUIGridopts* grid) {
  return onDialog(operationName, dialogName, [&](Operation& operation, Dialog& dialog) {
    return addTo(operation, dialog, nullptr, kind, name, grid);
  });
}

ProError addToLayout(const char* operationName, WidgetKind kind, const char* dialogName, const char* layout,
                     const char* name, const ProUIGridopts* grid) {
  return onDialog(operationName, dialogName, [&](Operation& operation, Dialog& dialog) {
    return layout != nullptr ? addTo(operation, dialog, layout, kind, name, grid) : PRO_TK_BAD_INPUTS;
  });
}

// What can only be told when the dialog is complete.
void checkComplete(Operation& operation, const Dialog& dialog) {
  for (const Widget& widget : dialog.widgets) {
    const std::size_t labels = widget.radio.labels.size();
    if (labels == 0 || labels == widget.radio.names.size()) continue;
    operation.misuse("the radiogroup " + quoted(widget.name.c_str()) + " has " +
                     std::to_string(widget.radio.names.size()) + " names and " + std::to_string(labels) + " labels");
  }
}

// Lets the user's side act until the dialog is exited.
void runDialog(Operation& operation, Dialog& dialog) {
  Session& session = operation.session();
  if (session.onDialog) {
    session.onDialog(dialog);
  } else {
    standin::closeByDefault(dialog);
  }
  operation.impl().forgetAnswers();
}

ProError activate(Operation& operation, Dialog& dialog, int* result) {
  if (dialog.active) {
    operation.misuse("the dialog " + quoted(dialog.name.c_str()) + " is active already");
    return PRO_TK_BAD_CONTEXT;
  }
  checkComplete(operation, dialog);
  operation.session().dialogsShown.push_back(dialog.name);
  dialog.exitStatus.reset();
  dialog.active = true;
  runDialog(operation, dialog);
  dialog.active = false;
  if (!dialog.exitStatus) {
    operation.misuse("nothing ended the dialog " + quoted(dialog.name.c_str()));
    return PRO_TK_GENERAL_ERROR;
  }
  if (result != nullptr) *result = *dialog.exitStatus;
  return PRO_TK_NO_ERROR;
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
  return onDialog("ProUIDialogActivate", dialog_name,
                  [&](Operation& operation, Dialog& dialog) { return activate(operation, dialog, p_return_value); });
}

// The activation ends when the action that calls this has returned.
ProError ProUIDialogExit(char* dialog_name, int return_value) {
  return onDialog("ProUIDialogExit", dialog_name, [&](Operation& operation, Dialog& dialog) {
    if (!dialog.active) {
      operation.misuse("the dialog " + quoted(dialog_name) + " is not active");
      return PRO_TK_BAD_CONTEXT;
    }
    dialog.exitStatus = return_value;
    return PRO_TK_NO_ERROR;
  });
}

ProError ProUIDialogDestroy(char* dialog_name) {
  return onDialog("ProUIDialogDestroy", dialog_name, [&](Operation& operation, const Dialog& dialog) {
    if (dialog.active) {
      operation.misuse("the dialog " + quoted(dialog_name) + " is active");
      return PRO_TK_BAD_CONTEXT;
    }
    operation.impl().dialogs.erase(dialog_name);
    return PRO_TK_NO_ERROR;
  });
}

ProError ProUIDialogDisableResizing(char* dialog_name) {
  return onDialog("ProUIDialogDisableResizing", dialog_name, [](Operation&, Dialog& dialog) {
    dialog.resizable = false;
    return PRO_TK_NO_ERROR;
  });
}

ProError ProUIDialogCheckbuttonAdd(char* dialog_name, char* component_name, ProUIGridopts* p_grid_options) {
  return addWidget("ProUIDialogCheckbuttonAdd", WidgetKind::checkbutton, dialog_name, component_name, p_grid_options);
}

ProError ProUIDialogInputpanelAdd(char* dialog_name, char* component_name, ProUIGridopts* p_grid_options) {
  return addWidget("ProUIDialogInputpanelAdd", WidgetKind::inputpanel, dialog_name, component_name, p_grid_options);
}

ProError ProUIDialogLabelAdd(char* dialog_name, char* component_name, ProUIGridopts* p_grid_options) {
  return addWidget("ProUIDialogLabelAdd", WidgetKind::label, dialog_name, component_name, p_grid_options);
}

ProError ProUIDialogLayoutAdd(char* dialog_name, char* component_name, ProUIGridopts* p_grid_options) {
  return addWidget("ProUIDialogLayoutAdd", WidgetKind::layout, dialog_name, component_name, p_grid_options);
}

ProError ProUIDialogPushbuttonAdd(char* dialog_name, char* component_name, ProUIGridopts* p_grid_options) {
  return addWidget("ProUIDialogPushbuttonAdd", WidgetKind::pushbutton, dialog_name, component_name, p_grid_options);
}

ProError ProUIDialogRadiogroupAdd(char* dialog_name, char* component_name, ProUIGridopts* p_grid_options) {
  return addWidget("ProUIDialogRadiogroupAdd", WidgetKind::radiogroup, dialog_name, component_name, p_grid_options);
}

ProError ProUIDialogSeparatorAdd(char* dialog_name, char* component_name, ProUIGridopts* p_grid_options) {
  return addWidget("ProUIDialogSeparatorAdd", WidgetKind::separator, dialog_name, component_name, p_grid_options);
}

ProError ProUIDialogSliderAdd(char* dialog_name, char* component_name, ProUIGridopts* p_grid_options) {
  return addWidget("ProUIDialogSliderAdd", WidgetKind::slider, dialog_name, component_name, p_grid_options);
}

ProError ProUIDialogSpinboxAdd(char* dialog_name, char* component_name, ProUIGridopts* p_grid_options) {
  return addWidget("ProUIDialogSpinboxAdd", WidgetKind::spinbox, dialog_name, component_name, p_grid_options);
}

ProError ProUILayoutInputpanelAdd(char* dialog_name, char* layout_name, char* component_name,
                                  ProUIGridopts* p_grid_options) {
  return addToLayout("ProUILayoutInputpanelAdd", WidgetKind::inputpanel, dialog_name, layout_name, component_name,
                     p_grid_options);
}

ProError ProUILayoutLabelAdd(char* dialog_name, char* layout_name, char* component_name,
                             ProUIGridopts* p_grid_options) {
  return addToLayout("ProUILayoutLabelAdd", WidgetKind::label, dialog_name, layout_name, component_name,
                     p_grid_options);
}

ProError ProUILayoutPushbuttonAdd(char* dialog_name, char* layout_name, char* component_name,
                                  ProUIGridopts* p_grid_options) {
  return addToLayout("ProUILayoutPushbuttonAdd", WidgetKind::pushbutton, dialog_name, layout_name, component_name,
                     p_grid_options);
}

ProError ProUILayoutUnattachLeft(char* dialog_name, char* component_name) {
  return changeWidget("ProUILayoutUnattachLeft", WidgetKind::layout, dialog_name, component_name,
                      [](Widget& widget) { widget.attached.left = false; });
}

ProError ProUILayoutUnattachRight(char* dialog_name, char* component_name) {
  return changeWidget("ProUILayoutUnattachRight", WidgetKind::layout, dialog_name, component_name,
                      [](Widget& widget) { widget.attached.right = false; });
}

ProError ProUILabelTextSet(char* dialog_name, char* component_name, wchar_t* text) {
  return setText("ProUILabelTextSet", WidgetKind::label, dialog_name, component_name, &Widget::text, text);
}

ProError ProUILabelUnattachLeft(char* dialog_name, char* component_name) {
  return changeWidget("ProUILabelUnattachLeft", WidgetKind::label, dialog_name, component_name,
                      [](Widget& widget) { widget.attached.left = false; });
}

ProError ProUIPushbuttonTextSet(char* dialog_name, char* component_name, wchar_t* text) {
  return setText("ProUIPushbuttonTextSet", WidgetKind::pushbutton, dialog_name, component_name, &Widget::text, text);
}

ProError ProUIPushbuttonHelptextSet(char* dialog_name, char* component_name, wchar_t* text) {
  return setText("ProUIPushbuttonHelptextSet", WidgetKind::pushbutton, dialog_name, component_name, &Widget::help,
                 text);
}

ProError ProUIPushbuttonEnable(char* dialog_name, char* component_name) {
  return changeWidget("ProUIPushbuttonEnable", WidgetKind::pushbutton, dialog_name, component_name,
                      [](Widget& widget) { widget.enabled = true; });
}

ProError ProUIPushbuttonActivateActionSet(char* dialog_name, char* component_name, ProUIAction action,
                                          ProAppData app_data) {
  if (action == nullptr) return PRO_TK_BAD_INPUTS;
  return changeWidget("ProUIPushbuttonActivateActionSet", WidgetKind::pushbutton, dialog_name, component_name,
                      [&](Widget& widget) {
                        widget.activate = action;
                        widget.data = app_data;
                      });
}
}
