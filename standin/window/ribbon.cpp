#include "standin/window/ribbon.h"

#include <QIcon>
#include <QToolButton>
#include <array>
#include <string_view>
#include <vector>

namespace standin {
namespace {

constexpr int kIconSide = 32;
constexpr int kLongLabel = 12;  // characters; a longer label goes on two lines where it can
constexpr int kButtonWidth = 74;
// The ribbon's own order, in which the CAD system's ribbon file would put them; other commands come after these. An
// empty name stands for a line between.
constexpr std::array<std::string_view, 7> kOrder = {
    "Rendara Render", "Rendara Update", "Rendara Export", "", "Automatic selection", "Manual selection", ""};

QString inTwoLines(const QString& label) {
  const qsizetype blank = label.indexOf(' ');
  return label.size() > kLongLabel && blank > 0 ? label.left(blank) + '\n' + label.mid(blank + 1) : label;
}

}  // namespace

Ribbon::Ribbon(Session& session, QWidget* parent) : QToolBar("Rendara", parent), session_(session) {
  setObjectName("ribbon");
  setMovable(false);
  setContextMenuPolicy(Qt::PreventContextMenu);
  setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
  setIconSize({kIconSide, kIconSide});
  refresh();
}

QString Ribbon::message(const Command& command, const std::string& key) const {
  const auto text = session_.message(command.messageFile, key);
  return text ? QString::fromStdWString(*text) : QString();
}

void Ribbon::build() {
  clear();
  actions_.clear();
  std::vector<std::string> names;
  const auto add = [&](const std::string& name) {
    if (actions_.count(name) != 0) return;
    QAction* action = actions_[name] = addAction(QString::fromStdString(name));
    action->setObjectName(QString::fromStdString(name));
    connect(action, &QAction::triggered, this, [this, name] {
      if (onCommand) onCommand(name);
    });
    if (QWidget* button = widgetForAction(action)) button->setMinimumWidth(kButtonWidth);
  };
  for (const std::string_view name : kOrder) {
    if (name.empty()) addSeparator();
    if (session_.findCommand(std::string(name)) != nullptr) add(std::string(name));
  }
  for (const Command& command : session_.commands()) add(command.name);
}

void Ribbon::show(const Command& command) {
  QAction& action = *actions_.at(command.name);
  const QString label = message(command, command.labelKey);
  action.setText(inTwoLines(label.isEmpty() ? QString::fromStdString(command.name) : label));
  action.setToolTip(message(command, command.helpKey).toHtmlEscaped());
  action.setStatusTip(message(command, command.descriptionKey));
  if (!command.icons.empty()) {
    const auto file = session_.messageFolder.parent_path() / "resource" / command.icons.back();
    action.setIcon(QIcon(QString::fromStdString(file.string())));
  }
  const uiCmdAccessState access = command.access != nullptr ? command.access(0) : ACCESS_AVAILABLE;
  action.setEnabled(access == ACCESS_AVAILABLE);
  action.setVisible(access == ACCESS_AVAILABLE || access == ACCESS_UNAVAILABLE);
}

void Ribbon::refresh() {
  if (actions_.size() != session_.commands().size()) build();
  for (const Command& command : session_.commands()) show(command);
}

QAction* Ribbon::action(const std::string& command) const {
  const auto found = actions_.find(command);
  return found != actions_.end() ? found->second : nullptr;
}

}  // namespace standin
