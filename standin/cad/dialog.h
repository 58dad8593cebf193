// The dialogs of the session as the user meets them: what a dialog shows, and what he does to it.
//
// Only the user's doing calls back into the plug-in; a value that the plug-in sets itself calls nothing back, so that
// two components whose actions set each other come to rest.
#pragma once

#include <deque>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "platform/creo_toolkit.h"

namespace standin {

enum class WidgetKind { label, pushbutton, spinbox, slider, checkbutton, radiogroup, separator, layout, inputpanel };

// A spin box keeps the number it was given or the user typed, brought into the range; the digits only show. Without a
// range it takes any number.
struct SpinboxState {
  ProUIInputtype type = PROUIINPUTTYPE_INTEGER;
  double value = 0;
  double minimum = std::numeric_limits<double>::lowest(), maximum = std::numeric_limits<double>::max();
  double increment = 1, fastIncrement = 10;
  int digits = 2;
};

struct SliderState {
  int value = 0;
  int minimum = 0, maximum = 100;
  int length = 10;        // in characters
  bool tracking = false;  // the update action runs at each position of a drag instead of once at its end
};

struct RadioState {
  std::vector<std::string> names;
  std::vector<std::wstring> labels;  // of the names in their order; a button without one shows its name
  std::optional<std::string> selected;
};

struct Attachments {
  bool left = false, right = false, top = false, bottom = false;
};

// A component. Only the state of its own kind has a meaning.
struct Widget {
  WidgetKind kind = WidgetKind::label;
  std::string name;
  std::string layout;  // the layout that holds it; empty for the dialog itself
  std::wstring text;   // the caption; of an input panel what stands in it
  std::wstring help;
  int column = 0, row = 0, columns = 1, rows = 1;  // cells of the grid
  Attachments attached;
  ProUIOrientation orientation = PROUIORIENTATION_HORIZONTAL;
  bool enabled = true;
  bool checked = false;
  SpinboxState spinbox;
  SliderState slider;
  RadioState radio;
  ProUIAction activate = nullptr;
  ProAppData data = nullptr;  // of `activate`
  ProUIAction update = nullptr;
  ProAppData updateData = nullptr;
};

// Components in the order of their creation, those of layouts among them.
struct Dialog {
  std::string name;
  std::deque<Widget> widgets;
  bool active = false;
  bool resizable = true;
  std::optional<int> exitStatus;
};

// "label", "pushbutton" and so on.
const char* kindName(WidgetKind kind);

// Null when there is none of the name.
Widget* findWidget(Dialog& dialog, const std::string& name);
const Widget* findWidget(const Dialog& dialog, const std::string& name);

// Whether the name of a button ends in "Cancel".
bool isCancelButton(const Widget& button);

// What a user presses who wants nothing of the dialog: its cancel button, else the first one that does something. Null
// when there is none.
Widget* defaultButton(Dialog& dialog);

// Presses the default button until the dialog closes; when it never does it stays open.
void closeByDefault(Dialog& dialog);

// The user presses a button. Empty, or why he cannot: the dialog is not open, there is no such component, it is no
// button, is disabled, or does nothing. The result comes back when the button's action has returned.
std::string userPress(Dialog& dialog, const std::string& component);

// The user changes a value; the update action runs when it really changed. Empty, or why he cannot, and then nothing
// changed. The text, by the component's kind:
//   spinbox      a number, or "up", "down", "fast up", "fast down"
//   slider       a position, or the positions of one drag with blanks between them
//   checkbutton  "on" or "off"
//   radiogroup   the name or the label of a button
//   inputpanel   the text, in UTF-8
// Numbers out of the range end at its nearer end.
std::string userSet(Dialog& dialog, const std::string& component, const std::string& text);

}  // namespace standin
