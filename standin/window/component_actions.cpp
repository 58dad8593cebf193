#include "standin/window/component_actions.h"

#include <QAction>
#include <QColorDialog>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "standin/app/component_change.h"

namespace standin {
namespace {

constexpr double kLargestShift = 1e6;

bool isPart(const Component& component) {
  return component.feature->component != nullptr && component.feature->component->type == PRO_MDL_PART;
}

bool anyComponent(const Component& /*component*/) { return true; }

std::optional<std::array<double, 3>> askShift(const std::wstring& unit, QWidget* parent) {
  QDialog dialog(parent);
  dialog.setObjectName("move");
  dialog.setWindowTitle("Move");
  auto* form = new QFormLayout(&dialog);
  std::array<QDoubleSpinBox*, 3> boxes = {};
  constexpr std::array<const char*, 3> kAxes = {"x", "y", "z"};
  for (std::size_t i = 0; i < boxes.size(); ++i) {
    boxes[i] = new QDoubleSpinBox(&dialog);
    boxes[i]->setObjectName(kAxes[i]);
    boxes[i]->setRange(-kLargestShift, kLargestShift);
    boxes[i]->setDecimals(3);
    boxes[i]->setSuffix(" " + QString::fromStdWString(unit));
    form->addRow(QString("Along %1:").arg(kAxes[i]), boxes[i]);
  }
  boxes.front()->selectAll();
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
  form->addRow(buttons);
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return std::array<double, 3>{boxes[0]->value(), boxes[1]->value(), boxes[2]->value()};
}

QColor displayed(const Appearance& appearance) {
  const auto channel = [&](std::size_t i) { return static_cast<float>(std::clamp(appearance.color[i], 0.0, 1.0)); };
  return QColor::fromRgbF(channel(0), channel(1), channel(2));
}

}  // namespace

ComponentActions::ComponentActions(Session& session, ModelTree& tree) : session_(session), tree_(tree) {
  add(
      "hide", "Hide", [](const Component& component) { return !component.feature->hidden; },
      [](const Component& component) { setComponentHidden(component, true); });
  add(
      "unhide", "Unhide", [](const Component& component) { return component.feature->hidden; },
      [](const Component& component) { setComponentHidden(component, false); });
  add(
      "suppress", "Suppress", [](const Component& component) { return component.feature->status == PRO_FEAT_ACTIVE; },
      [this](const Component& component) { setComponentStatus(session_, component, PRO_FEAT_SUPPRESSED); });
  add(
      "resume", "Resume", [](const Component& component) { return component.feature->status == PRO_FEAT_SUPPRESSED; },
      [this](const Component& component) { setComponentStatus(session_, component, PRO_FEAT_ACTIVE); });
  move_ = new QAction("Move...", this);
  paint_ = new QAction("Change colour...", this);
  move_->setObjectName("move");
  paint_->setObjectName("paint");
  connect(move_, &QAction::triggered, this, [this] { move(); });
  connect(paint_, &QAction::triggered, this, [this] { paint(); });
  actions_ << move_ << paint_;
  refresh();
}

void ComponentActions::add(const char* name, const char* text, Fits fits, std::function<void(const Component&)> what) {
  auto* action = new QAction(text, this);
  action->setObjectName(name);
  connect(action, &QAction::triggered, this, [this, fits, what = std::move(what)] { change(what, fits); });
  actions_ << action;
  fits_.push_back(std::move(fits));
}

void ComponentActions::refresh(bool allowed) {
  const std::vector<Component> selected = tree_.selectedComponents();
  for (std::size_t i = 0; i < fits_.size(); ++i) {
    actions_[static_cast<qsizetype>(i)]->setEnabled(allowed && std::any_of(selected.begin(), selected.end(), fits_[i]));
  }
  move_->setEnabled(allowed && !selected.empty());
  paint_->setEnabled(allowed && canPaint());
}

void ComponentActions::change(const std::function<void(const Component&)>& what, const Fits& fits) {
  for (const Component& component : tree_.selectedComponents()) {
    if (fits(component)) what(component);
  }
  if (onChanged) onChanged();
}

void ComponentActions::move() {
  const std::vector<Component> selected = tree_.selectedComponents();
  if (selected.empty()) return;
  const auto shift = askShift(selected.front().owner->lengthUnit, tree_.window());
  if (shift) change([&](const Component& component) { moveComponent(session_, component, *shift); }, anyComponent);
}

// A part that is open by itself, or components that place a part: of a sub-assembly's colour nothing would be sent.
bool ComponentActions::canPaint() const {
  const std::vector<Component> selected = tree_.selectedComponents();
  if (!selected.empty()) return std::all_of(selected.begin(), selected.end(), isPart);
  return tree_.model() != nullptr && tree_.model()->type == PRO_MDL_PART && !tree_.selectedItems().isEmpty();
}

void ComponentActions::paint() {
  const std::vector<Component> selected = tree_.selectedComponents();
  Model& model = *(selected.empty() ? tree_.model() : selected.front().feature->component);
  const auto& component = selected.empty() ? std::nullopt : selected.front().feature->appearance;
  const Appearance now = component ? *component : model.appearance.value_or(Appearance{});
  QColorDialog dialog(displayed(now), tree_.window());
  dialog.setObjectName("colour");
  dialog.setWindowTitle("Change colour");
  if (dialog.exec() != QDialog::Accepted) return;
  const QColor chosen = dialog.selectedColor();
  const Appearance appearance = plainAppearance({chosen.redF(), chosen.greenF(), chosen.blueF()});
  if (selected.empty()) paintModel(session_, model, appearance);
  change([&](const Component& each) { paintComponent(session_, each, appearance); }, isPart);
}

}  // namespace standin
