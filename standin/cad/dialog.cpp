#include "standin/cad/dialog.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <sstream>
#include <string_view>

#include "standin/cad/operation.h"
#include "standin/windows/code_page.h"

namespace standin {
namespace {

// A dialog that still stands after so many presses is taken for one that nobody ends.
constexpr int kMostPresses = 10;

std::string described(const Widget& widget) {
  return std::string("the ") + kindName(widget.kind) + " \"" + widget.name + "\"";
}

// Runs an action on the plug-in's time. It gets texts that it may change, as the host's are.
void callBack(ProUIAction action, const Dialog& dialog, const Widget& widget, ProAppData data) {
  if (action == nullptr) return;
  std::string dialogName = dialog.name;
  std::string componentName = widget.name;
  Session* session = Session::active();
  const bool onClock = session != nullptr && session->impl().stretch != nullptr;
  RunClock::Duration* const before = onClock ? session->impl().enter(&session->clock.plugin) : nullptr;
  action(dialogName.data(), componentName.data(), data);
  if (before != nullptr) session->impl().enter(before);
}

// The component that the user reaches for; null, with the reason, when he cannot.
Widget* reach(Dialog& dialog, const std::string& component, std::string& reason) {
  if (!dialog.active || dialog.exitStatus) {
    reason = "the dialog \"" + dialog.name + "\" is not open";
    return nullptr;
  }
  Widget* widget = findWidget(dialog, component);
  if (widget == nullptr) {
    reason = "the dialog \"" + dialog.name + "\" has no component \"" + component + "\"";
  } else if (!widget->enabled) {
    reason = described(*widget) + " is disabled";
    widget = nullptr;
  }
  return widget;
}

template <typename Number>
std::optional<Number> parsed(std::string_view text) {
  Number value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::string setSpinbox(Dialog& dialog, Widget& widget, const std::string& text) {
  SpinboxState& state = widget.spinbox;
  std::optional<double> wanted;
  if (text == "up") {
    wanted = state.value + state.increment;
  } else if (text == "down") {
    wanted = state.value - state.increment;
  } else if (text == "fast up") {
    wanted = state.value + state.fastIncrement;
  } else if (text == "fast down") {
    wanted = state.value - state.fastIncrement;
  } else {
    wanted = parsed<double>(text);
  }
  const bool isWhole = wanted && std::trunc(*wanted) == *wanted;
  if (!wanted || !std::isfinite(*wanted)) return "\"" + text + "\" is not a number";
  if (state.type == PROUIINPUTTYPE_INTEGER && !isWhole) return "\"" + text + "\" is not a whole number";
  const double value = std::clamp(*wanted, state.minimum, state.maximum);
  if (value == state.value) return "";
  state.value = value;
  callBack(widget.update, dialog, widget, widget.updateData);
  return "";
}

std::string setSlider(Dialog& dialog, Widget& widget, const std::string& text) {
  std::vector<int> positions;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    const std::optional<int> position = parsed<int>(word);
    if (!position) return "\"" + word + "\" is not a position of a slider";
    positions.push_back(*position);
  }
  if (positions.empty()) return "a slider is set to a position";
  const int before = widget.slider.value;
  for (const int position : positions) {
    const int value = std::clamp(position, widget.slider.minimum, widget.slider.maximum);
    if (value == widget.slider.value) continue;
    widget.slider.value = value;
    if (!widget.slider.tracking) continue;
    callBack(widget.update, dialog, widget, widget.updateData);
    if (dialog.exitStatus) return "";
  }
  if (!widget.slider.tracking && widget.slider.value != before) {
    callBack(widget.update, dialog, widget, widget.updateData);
  }
  return "";
}

std::string setCheckbutton(Dialog& dialog, Widget& widget, const std::string& text) {
  if (text != "on" && text != "off") return "\"" + text + "\" is neither on nor off";
  const bool checked = text == "on";
  if (checked == widget.checked) return "";
  widget.checked = checked;
  callBack(widget.update, dialog, widget, widget.updateData);
  return "";
}

// The name of the button that has the text for its name or, when none has, for its label.
std::optional<std::string> radioButton(const RadioState& radio, const std::string& text) {
  if (std::find(radio.names.begin(), radio.names.end(), text) != radio.names.end()) return text;
  const auto label = std::find(radio.labels.begin(), radio.labels.end(), wideFromUtf8(text));
  const auto at = static_cast<std::size_t>(label - radio.labels.begin());
  return at < std::min(radio.names.size(), radio.labels.size()) ? std::optional(radio.names[at]) : std::nullopt;
}

std::string setRadiogroup(Dialog& dialog, Widget& widget, const std::string& text) {
  const std::optional<std::string> button = radioButton(widget.radio, text);
  if (!button) {
    std::string reason = described(widget) + " has no button \"" + text + "\", only";
    for (const std::string& name : widget.radio.names) reason += ' ' + name;
    return reason;
  }
  if (widget.radio.selected == button) return "";
  widget.radio.selected = button;
  callBack(widget.update, dialog, widget, widget.updateData);
  return "";
}

std::string setInputpanel(Dialog& dialog, Widget& widget, const std::string& text) {
  std::wstring wide = wideFromUtf8(text);
  if (wide == widget.text) return "";
  widget.text = std::move(wide);
  callBack(widget.update, dialog, widget, widget.updateData);
  return "";
}

}  // namespace

const char* kindName(WidgetKind kind) {
  switch (kind) {
    case WidgetKind::label:
      return "label";
    case WidgetKind::pushbutton:
      return "pushbutton";
    case WidgetKind::spinbox:
      return "spinbox";
    case WidgetKind::slider:
      return "slider";
    case WidgetKind::checkbutton:
      return "checkbutton";
    case WidgetKind::radiogroup:
      return "radiogroup";
    case WidgetKind::separator:
      return "separator";
    case WidgetKind::layout:
      return "layout";
    case WidgetKind::inputpanel:
      return "inputpanel";
  }
  return "";
}

const Widget* findWidget(const Dialog& dialog, const std::string& name) {
  const auto found = std::find_if(dialog.widgets.begin(), dialog.widgets.end(),
                                  [&](const Widget& widget) { return widget.name == name; });
  return found != dialog.widgets.end() ? &*found : nullptr;
}

Widget* findWidget(Dialog& dialog, const std::string& name) {
  return const_cast<Widget*>(findWidget(static_cast<const Dialog&>(dialog), name));
}

bool isCancelButton(const Widget& button) {
  return button.kind == WidgetKind::pushbutton && std::string_view(button.name).ends_with("Cancel");
}

Widget* defaultButton(Dialog& dialog) {
  Widget* first = nullptr;
  for (Widget& widget : dialog.widgets) {
    if (widget.kind != WidgetKind::pushbutton || widget.activate == nullptr || !widget.enabled) continue;
    if (isCancelButton(widget)) return &widget;
    if (first == nullptr) first = &widget;
  }
  return first;
}

void closeByDefault(Dialog& dialog) {
  const Widget* button = defaultButton(dialog);
  for (int press = 0; button != nullptr && !dialog.exitStatus && press < kMostPresses; ++press) {
    userPress(dialog, button->name);
  }
}

std::string userPress(Dialog& dialog, const std::string& component) {
  std::string reason;
  Widget* widget = reach(dialog, component, reason);
  if (widget == nullptr) return reason;
  if (widget->kind != WidgetKind::pushbutton) return described(*widget) + " cannot be pressed";
  if (widget->activate == nullptr) return described(*widget) + " does nothing";
  callBack(widget->activate, dialog, *widget, widget->data);
  return "";
}

std::string userSet(Dialog& dialog, const std::string& component, const std::string& text) {
  std::string reason;
  Widget* widget = reach(dialog, component, reason);
  if (widget == nullptr) return reason;
  switch (widget->kind) {
    case WidgetKind::spinbox:
      return setSpinbox(dialog, *widget, text);
    case WidgetKind::slider:
      return setSlider(dialog, *widget, text);
    case WidgetKind::checkbutton:
      return setCheckbutton(dialog, *widget, text);
    case WidgetKind::radiogroup:
      return setRadiogroup(dialog, *widget, text);
    case WidgetKind::inputpanel:
      return setInputpanel(dialog, *widget, text);
    case WidgetKind::label:
    case WidgetKind::pushbutton:
    case WidgetKind::separator:
    case WidgetKind::layout:
      break;
  }
  return described(*widget) + " has no value to set";
}

}  // namespace standin
