// The values of components. What the plug-in sets is brought into the range, and calls nothing back.
#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

#include "standin/cad/dialog_operation.h"

using standin::AllocationKind;
using standin::changeWidget;
using standin::Dialog;
using standin::onDialog;
using standin::onWidget;
using standin::Operation;
using standin::quoted;
using standin::RadioState;
using standin::setText;
using standin::SliderState;
using standin::SpinboxState;
using standin::Widget;
using standin::WidgetKind;

namespace {

// Changes an end of a range; the other end gives way, and the value follows.
template <typename State, typename Number>
void setEnd(State& state, Number State::*end, Number value) {
  state.*end = value;
  state.minimum = end == &State::minimum ? value : std::min(state.minimum, value);
  state.maximum = end == &State::maximum ? value : std::max(state.maximum, value);
  state.value = std::clamp(state.value, state.minimum, state.maximum);
}

ProError setSpinboxNumber(const char* operationName, const char* dialog, const char* name, double SpinboxState::*field,
                          double value) {
  const bool isStep = field == &SpinboxState::increment || field == &SpinboxState::fastIncrement;
  if (!std::isfinite(value) || (isStep && value <= 0)) return PRO_TK_BAD_INPUTS;
  return changeWidget(operationName, WidgetKind::spinbox, dialog, name, [&](Widget& widget) {
    if (isStep) {
      widget.spinbox.*field = value;
    } else {
      setEnd(widget.spinbox, field, value);
    }
  });
}

// Runs an operation on the value of a spin box that holds doubles.
template <typename Act>
ProError onDouble(const char* operationName, const char* dialog, const char* name, Act act) {
  return onWidget(operationName, WidgetKind::spinbox, dialog, name, [&](Operation& operation, Widget& widget) {
    if (widget.spinbox.type != PROUIINPUTTYPE_DOUBLE) {
      operation.misuse("the spinbox " + quoted(name) + " does not hold doubles");
      return PRO_TK_BAD_CONTEXT;
    }
    act(widget.spinbox);
    return PRO_TK_NO_ERROR;
  });
}

// Reads a component that the caller may ask for on the chance that it is there: when the dialog has none of the name
// that is an answer like others. One of another kind is misuse.
template <typename Read>
ProError readWidget(const char* operationName, WidgetKind kind, const char* dialogName, const char* name, Read read) {
  return onDialog(operationName, dialogName, [&](Operation& operation, Dialog& dialog) {
    if (name == nullptr) return PRO_TK_BAD_INPUTS;
    if (standin::findWidget(dialog, name) == nullptr) return PRO_TK_E_NOT_FOUND;
    const Widget* widget = findWidget(operation, kind, dialog, name);
    if (widget == nullptr) return PRO_TK_E_NOT_FOUND;
    read(operation, *widget);
    return PRO_TK_NO_ERROR;
  });
}

template <typename Text>
bool areTexts(int count, Text* const* texts) {
  if (count < 0 || (count > 0 && texts == nullptr)) return false;
  return std::all_of(texts, texts + count, [](const Text* text) { return text != nullptr; });
}

ProError setOrientation(const char* operationName, WidgetKind kind, const char* dialog, const char* name,
                        ProUIOrientation orientation) {
  if (orientation != PROUIORIENTATION_HORIZONTAL && orientation != PROUIORIENTATION_VERTICAL) return PRO_TK_BAD_INPUTS;
  return changeWidget(operationName, kind, dialog, name, [&](Widget& widget) { widget.orientation = orientation; });
}

ProError setUpdateAction(const char* operationName, WidgetKind kind, const char* dialog, const char* name,
                         ProUIAction action, ProAppData data) {
  if (action == nullptr) return PRO_TK_BAD_INPUTS;
  return changeWidget(operationName, kind, dialog, name, [&](Widget& widget) {
    widget.update = action;
    widget.updateData = data;
  });
}

// Buttons that stay keep the selection.
ProError nameButtons(Operation& operation, Widget& widget, std::vector<std::string> names) {
  if (std::set(names.begin(), names.end()).size() != names.size()) {
    operation.misuse("two buttons of the radiogroup " + quoted(widget.name.c_str()) + " have one name");
    return PRO_TK_E_FOUND;
  }
  RadioState& radio = widget.radio;
  radio.names = std::move(names);
  if (radio.selected && std::find(radio.names.begin(), radio.names.end(), *radio.selected) == radio.names.end()) {
    radio.selected.reset();
  }
  return PRO_TK_NO_ERROR;
}

ProError selectButton(Operation& operation, Widget& widget, const char* name) {
  RadioState& radio = widget.radio;
  if (name == nullptr) {
    radio.selected.reset();
    return PRO_TK_NO_ERROR;
  }
  if (std::find(radio.names.begin(), radio.names.end(), name) == radio.names.end()) {
    operation.misuse("the radiogroup " + quoted(widget.name.c_str()) + " has no button " + quoted(name));
    return PRO_TK_E_NOT_FOUND;
  }
  radio.selected = name;
  return PRO_TK_NO_ERROR;
}

// An array of copies, which are freed with it.
char** copyStrings(Operation& operation, const std::vector<std::string>& strings) {
  char** array = operation.newArray<char*>(strings.size(), AllocationKind::stringArray);
  for (std::size_t at = 0; at < strings.size(); ++at) {
    array[at] = operation.newArray<char>(strings[at].size() + 1, AllocationKind::ownedArray);
    std::copy_n(strings[at].c_str(), strings[at].size() + 1, array[at]);
  }
  return array;
}

}  // namespace

extern "C" {

ProError ProUISpinboxInputtypeSet(char* dialog_name, char* component_name, ProUIInputtype type) {
  if (type != PROUIINPUTTYPE_INTEGER && type != PROUIINPUTTYPE_DOUBLE) return PRO_TK_BAD_INPUTS;
  return changeWidget("ProUISpinboxInputtypeSet", WidgetKind::spinbox, dialog_name, component_name,
                      [&](Widget& widget) { widget.spinbox.type = type; });
}

ProError ProUISpinboxDigitsSet(char* dialog_name, char* component_name, int digits) {
  if (digits < 0) return PRO_TK_BAD_INPUTS;
  return changeWidget("ProUISpinboxDigitsSet", WidgetKind::spinbox, dialog_name, component_name,
                      [&](Widget& widget) { widget.spinbox.digits = digits; });
}

ProError ProUISpinboxMindoubleSet(char* dialog_name, char* component_name, double value) {
  return setSpinboxNumber("ProUISpinboxMindoubleSet", dialog_name, component_name, &SpinboxState::minimum, value);
}

ProError ProUISpinboxMaxdoubleSet(char* dialog_name, char* component_name, double value) {
  return setSpinboxNumber("ProUISpinboxMaxdoubleSet", dialog_name, component_name, &SpinboxState::maximum, value);
}

ProError ProUISpinboxDoubleincrementSet(char* dialog_name, char* component_name, double value) {
  return setSpinboxNumber("ProUISpinboxDoubleincrementSet", dialog_name, component_name, &SpinboxState::increment,
                          value);
}

ProError ProUISpinboxFastdoubleincrementSet(char* dialog_name, char* component_name, double value) {
  return setSpinboxNumber("ProUISpinboxFastdoubleincrementSet", dialog_name, component_name,
                          &SpinboxState::fastIncrement, value);
}

ProError ProUISpinboxDoubleSet(char* dialog_name, char* component_name, double value) {
  if (!std::isfinite(value)) return PRO_TK_BAD_INPUTS;
  return onDouble("ProUISpinboxDoubleSet", dialog_name, component_name,
                  [&](SpinboxState& spinbox) { spinbox.value = std::clamp(value, spinbox.minimum, spinbox.maximum); });
}

ProError ProUISpinboxDoubleGet(char* dialog_name, char* component_name, double* p_value) {
  if (p_value == nullptr) return PRO_TK_BAD_INPUTS;
  return onDouble("ProUISpinboxDoubleGet", dialog_name, component_name,
                  [&](const SpinboxState& spinbox) { *p_value = spinbox.value; });
}

ProError ProUISpinboxHelptextSet(char* dialog_name, char* component_name, wchar_t* text) {
  return setText("ProUISpinboxHelptextSet", WidgetKind::spinbox, dialog_name, component_name, &Widget::help, text);
}

ProError ProUISpinboxUpdateActionSet(char* dialog_name, char* component_name, ProUIAction action, ProAppData app_data) {
  return setUpdateAction("ProUISpinboxUpdateActionSet", WidgetKind::spinbox, dialog_name, component_name, action,
                         app_data);
}

ProError ProUISliderOrientationSet(char* dialog_name, char* component_name, ProUIOrientation orientation) {
  return setOrientation("ProUISliderOrientationSet", WidgetKind::slider, dialog_name, component_name, orientation);
}

ProError ProUISliderEnableTracking(char* dialog_name, char* component_name) {
  return changeWidget("ProUISliderEnableTracking", WidgetKind::slider, dialog_name, component_name,
                      [](Widget& widget) { widget.slider.tracking = true; });
}

ProError ProUISliderLengthSet(char* dialog_name, char* component_name, int value) {
  if (value <= 0) return PRO_TK_BAD_INPUTS;
  return changeWidget("ProUISliderLengthSet", WidgetKind::slider, dialog_name, component_name,
                      [&](Widget& widget) { widget.slider.length = value; });
}

ProError ProUISliderMinintegerSet(char* dialog_name, char* component_name, int value) {
  return changeWidget("ProUISliderMinintegerSet", WidgetKind::slider, dialog_name, component_name,
                      [&](Widget& widget) { setEnd(widget.slider, &SliderState::minimum, value); });
}

ProError ProUISliderMaxintegerSet(char* dialog_name, char* component_name, int value) {
  return changeWidget("ProUISliderMaxintegerSet", WidgetKind::slider, dialog_name, component_name,
                      [&](Widget& widget) { setEnd(widget.slider, &SliderState::maximum, value); });
}

ProError ProUISliderIntegerSet(char* dialog_name, char* component_name, int value) {
  return changeWidget("ProUISliderIntegerSet", WidgetKind::slider, dialog_name, component_name, [&](Widget& widget) {
    widget.slider.value = std::clamp(value, widget.slider.minimum, widget.slider.maximum);
  });
}

ProError ProUISliderIntegerGet(char* dialog_name, char* component_name, int* p_value) {
  if (p_value == nullptr) return PRO_TK_BAD_INPUTS;
  return changeWidget("ProUISliderIntegerGet", WidgetKind::slider, dialog_name, component_name,
                      [&](Widget& widget) { *p_value = widget.slider.value; });
}

ProError ProUISliderHelptextSet(char* dialog_name, char* component_name, wchar_t* text) {
  return setText("ProUISliderHelptextSet", WidgetKind::slider, dialog_name, component_name, &Widget::help, text);
}

ProError ProUISliderUpdateActionSet(char* dialog_name, char* component_name, ProUIAction action, ProAppData app_data) {
  return setUpdateAction("ProUISliderUpdateActionSet", WidgetKind::slider, dialog_name, component_name, action,
                         app_data);
}

ProError ProUICheckbuttonTextSet(char* dialog_name, char* component_name, wchar_t* text) {
  return setText("ProUICheckbuttonTextSet", WidgetKind::checkbutton, dialog_name, component_name, &Widget::text, text);
}

ProError ProUICheckbuttonHelptextSet(char* dialog_name, char* component_name, wchar_t* text) {
  return setText("ProUICheckbuttonHelptextSet", WidgetKind::checkbutton, dialog_name, component_name, &Widget::help,
                 text);
}

ProError ProUICheckbuttonSet(char* dialog_name, char* component_name) {
  return changeWidget("ProUICheckbuttonSet", WidgetKind::checkbutton, dialog_name, component_name,
                      [](Widget& widget) { widget.checked = true; });
}

ProError ProUICheckbuttonGetState(char* dialog_name, char* component_name, ProBoolean* p_state) {
  if (p_state == nullptr) return PRO_TK_BAD_INPUTS;
  return readWidget("ProUICheckbuttonGetState", WidgetKind::checkbutton, dialog_name, component_name,
                    [&](Operation&, const Widget& widget) { *p_state = widget.checked ? PRO_B_TRUE : PRO_B_FALSE; });
}

ProError ProUIRadiogroupNamesSet(char* dialog_name, char* component_name, int count, char** names) {
  if (!areTexts(count, names)) return PRO_TK_BAD_INPUTS;
  return onWidget("ProUIRadiogroupNamesSet", WidgetKind::radiogroup, dialog_name, component_name,
                  [&](Operation& operation, Widget& widget) {
                    return nameButtons(operation, widget, std::vector<std::string>(names, names + count));
                  });
}

ProError ProUIRadiogroupLabelsSet(char* dialog_name, char* component_name, int count, wchar_t** labels) {
  if (!areTexts(count, labels)) return PRO_TK_BAD_INPUTS;
  return changeWidget("ProUIRadiogroupLabelsSet", WidgetKind::radiogroup, dialog_name, component_name,
                      [&](Widget& widget) { widget.radio.labels.assign(labels, labels + count); });
}

ProError ProUIRadiogroupOrientationSet(char* dialog_name, char* component_name, ProUIOrientation orientation) {
  return setOrientation("ProUIRadiogroupOrientationSet", WidgetKind::radiogroup, dialog_name, component_name,
                        orientation);
}

ProError ProUIRadiogroupHelptextSet(char* dialog_name, char* component_name, wchar_t* text) {
  return setText("ProUIRadiogroupHelptextSet", WidgetKind::radiogroup, dialog_name, component_name, &Widget::help,
                 text);
}

// One button at most can be selected; with none given, none is.
ProError ProUIRadiogroupSelectednamesSet(char* dialog_name, char* component_name, int count, char** names) {
  if (!areTexts(count, names) || count > 1) return PRO_TK_BAD_INPUTS;
  return onWidget("ProUIRadiogroupSelectednamesSet", WidgetKind::radiogroup, dialog_name, component_name,
                  [&](Operation& operation, Widget& widget) {
                    return selectButton(operation, widget, count == 1 ? names[0] : nullptr);
                  });
}

// With no button selected the array is empty, and to be freed all the same.
ProError ProUIRadiogroupSelectednamesGet(char* dialog_name, char* component_name, int* p_count, char*** p_names) {
  if (p_count == nullptr || p_names == nullptr) return PRO_TK_BAD_INPUTS;
  return onWidget("ProUIRadiogroupSelectednamesGet", WidgetKind::radiogroup, dialog_name, component_name,
                  [&](Operation& operation, const Widget& widget) {
                    std::vector<std::string> selected;
                    if (widget.radio.selected) selected.push_back(*widget.radio.selected);
                    *p_names = copyStrings(operation, selected);
                    *p_count = static_cast<int>(selected.size());
                    return PRO_TK_NO_ERROR;
                  });
}

ProError ProUIInputpanelValueSet(char* dialog_name, char* component_name, wchar_t* value) {
  return setText("ProUIInputpanelValueSet", WidgetKind::inputpanel, dialog_name, component_name, &Widget::text, value);
}

ProError ProUIInputpanelWidestringGet(char* dialog_name, char* component_name, wchar_t** p_value) {
  if (p_value == nullptr) return PRO_TK_BAD_INPUTS;
  return readWidget("ProUIInputpanelWidestringGet", WidgetKind::inputpanel, dialog_name, component_name,
                    [&](Operation& operation, const Widget& widget) {
                      const std::size_t size = widget.text.size() + 1;
                      *p_value = operation.newArray<wchar_t>(size, AllocationKind::text);
                      std::copy_n(widget.text.c_str(), size, *p_value);
                    });
}

ProError ProStringarrayFree(char** strings, int count) {
  Operation operation("ProStringarrayFree");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (strings == nullptr || count < 0) return PRO_TK_BAD_INPUTS;
  standin::Allocations& allocations = operation.allocations();
  if (!allocations.isLive(strings, AllocationKind::stringArray)) {
    return operation.misuse(allocations.describe(strings, AllocationKind::stringArray));
  }
  const std::size_t size = *allocations.count(strings, AllocationKind::stringArray);
  if (static_cast<std::size_t>(count) != size) {
    operation.misuse("the array holds " + std::to_string(size) + " strings and not " + std::to_string(count));
  }
  for (std::size_t at = 0; at < size; ++at) {
    if (!allocations.release(strings[at], AllocationKind::ownedArray)) {
      operation.misuse("a string was taken out of the array");
    }
  }
  allocations.release(strings, AllocationKind::stringArray);
  return static_cast<std::size_t>(count) == size ? PRO_TK_NO_ERROR : PRO_TK_BAD_INPUTS;
}

ProError ProWstringFree(wchar_t* text) {
  Operation operation("ProWstringFree");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  return operation.release(&text, AllocationKind::text);
}
}
