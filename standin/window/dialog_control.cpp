#include "standin/window/dialog_control.h"

#include <fmt/format.h>

#include <QAbstractButton>
#include <QButtonGroup>
#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QSlider>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

namespace standin {
namespace {

// Without a range of its own a spin box takes numbers up to this; more would make it as wide as its largest number.
constexpr double kLargestNumber = 1e9;
constexpr int kInputLength = 36;  // characters of an input panel that are to be seen
constexpr int kFastSteps = 10;    // what Qt asks for with Page Up, and with Control held
constexpr int kPagesOfSlider = 10;
constexpr int kStepsOfSlider = 100;

QString toText(const std::wstring& text) { return QString::fromStdWString(text); }

// Steps are made by the session, which knows the number behind the digits that are shown.
class SpinBox : public QDoubleSpinBox {
 public:
  SpinBox(std::string name, const UserSide& user, QWidget* parent)
      : QDoubleSpinBox(parent), name_(std::move(name)), user_(user) {
    // A number that is half typed is none yet.
    setKeyboardTracking(false);
    connect(this, &QDoubleSpinBox::valueChanged, this,
            [this](double value) { user_.set(name_, fmt::format("{}", value)); });
  }

  void stepBy(int steps) override {
    interpretText();
    const bool fast = std::abs(steps) >= kFastSteps;
    user_.set(name_, fmt::format("{}{}", fast ? "fast " : "", steps > 0 ? "up" : "down"));
    selectAll();
  }

  void show(const Widget& component) {
    const SpinboxState& state = component.spinbox;
    const QSignalBlocker silent(this);
    setDecimals(state.type == PROUIINPUTTYPE_INTEGER ? 0 : state.digits);
    setRange(std::max(state.minimum, -kLargestNumber), std::min(state.maximum, kLargestNumber));
    setSingleStep(state.increment);
    setValue(state.value);
  }

 private:
  std::string name_;
  UserSide user_;
};

DialogControl makeSpinbox(const Widget& component, const UserSide& user, QWidget* parent) {
  auto* box = new SpinBox(component.name, user, parent);
  return {box, [box](const Widget& now) { box->show(now); }};
}

DialogControl makeSlider(const Widget& component, const UserSide& user, QWidget* parent) {
  auto* slider = new QSlider(parent);
  QObject::connect(slider, &QSlider::valueChanged, slider,
                   [name = component.name, user](int value) { user.set(name, std::to_string(value)); });
  return {slider, [slider](const Widget& now) {
            const QSignalBlocker silent(slider);
            const bool vertical = now.orientation == PROUIORIENTATION_VERTICAL;
            slider->setOrientation(vertical ? Qt::Vertical : Qt::Horizontal);
            slider->setTracking(now.slider.tracking);
            slider->setRange(now.slider.minimum, now.slider.maximum);
            const int range = now.slider.maximum - now.slider.minimum;
            slider->setSingleStep(std::max(1, range / kStepsOfSlider));
            slider->setPageStep(std::max(1, range / kPagesOfSlider));
            const int length = now.slider.length * slider->fontMetrics().averageCharWidth();
            (vertical ? slider->setMinimumHeight(length) : slider->setMinimumWidth(length));
            // A slider that is held stays where it is held.
            if (!slider->isSliderDown() || slider->value() != now.slider.value) slider->setValue(now.slider.value);
          }};
}

DialogControl makeCheck(const Widget& component, const UserSide& user, QWidget* parent) {
  auto* box = new QCheckBox(parent);
  QObject::connect(box, &QCheckBox::toggled, box,
                   [name = component.name, user](bool on) { user.set(name, on ? "on" : "off"); });
  return {box, [box](const Widget& now) {
            const QSignalBlocker silent(box);
            box->setText(toText(now.text));
            box->setChecked(now.checked);
          }};
}

QRadioButton* makeRadioButton(const Widget& component, std::size_t at, const UserSide& user, QWidget* parent) {
  const RadioState& radio = component.radio;
  const QString name = QString::fromStdString(radio.names[at]);
  auto* button = new QRadioButton(at < radio.labels.size() ? toText(radio.labels[at]) : name, parent);
  button->setObjectName(name);
  QObject::connect(button, &QRadioButton::toggled, button,
                   [group = component.name, value = radio.names[at], user](bool on) {
                     if (on) user.set(group, value);
                   });
  return button;
}

void showChosen(QButtonGroup& buttons, const RadioState& radio) {
  // An exclusive group cannot be left without a choice.
  buttons.setExclusive(false);
  for (QAbstractButton* button : buttons.buttons()) {
    const QSignalBlocker silent(button);
    button->setChecked(radio.selected == button->objectName().toStdString());
  }
  buttons.setExclusive(true);
}

DialogControl makeRadio(const Widget& component, const UserSide& user, QWidget* parent) {
  auto* box = new QWidget(parent);
  QBoxLayout* row = component.orientation == PROUIORIENTATION_VERTICAL ? static_cast<QBoxLayout*>(new QVBoxLayout(box))
                                                                       : new QHBoxLayout(box);
  row->setContentsMargins(0, 0, 0, 0);
  auto* buttons = new QButtonGroup(box);
  for (std::size_t i = 0; i < component.radio.names.size(); ++i) {
    QRadioButton* button = makeRadioButton(component, i, user, box);
    buttons->addButton(button);
    row->addWidget(button);
  }
  row->addStretch();
  return {box, [buttons](const Widget& now) { showChosen(*buttons, now.radio); }};
}

DialogControl makeInput(const Widget& component, const UserSide& user, QWidget* parent) {
  auto* line = new QLineEdit(parent);
  line->setMinimumWidth(kInputLength * line->fontMetrics().averageCharWidth());
  QObject::connect(line, &QLineEdit::textEdited, line,
                   [name = component.name, user](const QString& text) { user.set(name, text.toStdString()); });
  return {line, [line](const Widget& now) {
            // Setting a text puts the cursor at its end.
            if (line->text() != toText(now.text)) line->setText(toText(now.text));
          }};
}

DialogControl makeButton(const Widget& component, const UserSide& user, QWidget* parent) {
  auto* button = new QPushButton(parent);
  // Enter in a field takes the field's value and presses nothing.
  button->setAutoDefault(false);
  QObject::connect(button, &QPushButton::clicked, button, [name = component.name, user] { user.press(name); });
  return {button, [button](const Widget& now) { button->setText(toText(now.text)); }};
}

DialogControl makeLabel(QWidget* parent) {
  auto* label = new QLabel(parent);
  label->setTextFormat(Qt::PlainText);
  return {label, [label](const Widget& now) { label->setText(toText(now.text)); }};
}

DialogControl makeSeparator(QWidget* parent) {
  auto* line = new QFrame(parent);
  line->setFrameStyle(static_cast<int>(QFrame::HLine) | static_cast<int>(QFrame::Sunken));
  return {line, {}};
}

DialogControl makeByKind(const Widget& component, const UserSide& user, QWidget* parent) {
  switch (component.kind) {
    case WidgetKind::label:
      return makeLabel(parent);
    case WidgetKind::pushbutton:
      return makeButton(component, user, parent);
    case WidgetKind::spinbox:
      return makeSpinbox(component, user, parent);
    case WidgetKind::slider:
      return makeSlider(component, user, parent);
    case WidgetKind::checkbutton:
      return makeCheck(component, user, parent);
    case WidgetKind::radiogroup:
      return makeRadio(component, user, parent);
    case WidgetKind::separator:
      return makeSeparator(parent);
    case WidgetKind::inputpanel:
      return makeInput(component, user, parent);
    case WidgetKind::layout:
      break;
  }
  return {new QWidget(parent), {}};
}

}  // namespace

DialogControl makeControl(const Widget& component, const UserSide& user, QWidget* parent) {
  DialogControl control = makeByKind(component, user, parent);
  control.widget->setObjectName(QString::fromStdString(component.name));
  control.show = [own = std::move(control.show), widget = control.widget](const Widget& now) {
    widget->setEnabled(now.enabled);
    widget->setToolTip(toText(now.help).toHtmlEscaped());
    if (own) own(now);
  };
  control.show(component);
  return control;
}

}  // namespace standin
