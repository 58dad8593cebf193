#include "standin/window/dialog_window.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>
#include <algorithm>

namespace standin {
namespace {

// In pixels; by the widths that the components want.
constexpr std::size_t kWidestBand = 680;
constexpr int kGap = 18;  // between columns
constexpr int kBandGap = 12;

// "Rendara_Settings" is the name of a dialog for people, too, but for the underscore.
QString titleOf(const Dialog& dialog) { return QString::fromStdString(dialog.name).replace('_', ' '); }

}  // namespace

DialogWindow::DialogWindow(Dialog& dialog, QWidget* parent) : QDialog(parent), dialog_(dialog) {
  setObjectName(QString::fromStdString(dialog.name));
  setWindowTitle(titleOf(dialog));
  setWindowModality(Qt::ApplicationModal);
  const UserSide user{[this](const std::string& component, const std::string& text) {
                        act([&] { userSet(dialog_, component, text); });
                      },
                      [this](const std::string& component) { act([&] { userPress(dialog_, component); }); }};
  // In the order of the tab key.
  for (const Widget& widget : dialog.widgets) controls_.emplace(widget.name, makeControl(widget, user, this));
  auto* box = new QVBoxLayout(this);
  box->setSpacing(kBandGap);
  fill(*box, {});
  if (!dialog.resizable) box->setSizeConstraint(QLayout::SetFixedSize);
}

void DialogWindow::fill(QBoxLayout& box, const std::string& layout) {
  // From the inside out, so that a layout's width is known where it stands.
  const std::vector<DialogStrip> strips = dialogStrips(dialog_, layout);
  for (const Widget& widget : dialog_.widgets) {
    if (widget.kind != WidgetKind::layout || widget.layout != layout) continue;
    auto* inner = new QVBoxLayout(widgetOf(widget));
    inner->setContentsMargins(0, 0, 0, 0);
    fill(*inner, widget.name);
  }
  for (const DialogStrip& strip : strips) {
    if (strip.across == nullptr) {
      addRows(box, strip.rows);
    } else {
      box.addWidget(widgetOf(*strip.across), 0, isCentred(*strip.across) ? Qt::AlignHCenter : Qt::Alignment());
    }
  }
}

int DialogWindow::widthOf(const std::vector<DialogRow>& rows, int column) const {
  int widest = 0;
  for (const DialogRow& row : rows) {
    const auto cell = row.find(column);
    if (cell == row.end()) continue;
    int width = 0;
    for (const Widget* widget : cell->second) {
      width += std::max(widgetOf(*widget)->sizeHint().width(), widgetOf(*widget)->minimumWidth());
    }
    widest = std::max(widest, width);
  }
  return widest;
}

void DialogWindow::addRows(QBoxLayout& box, const std::vector<DialogRow>& rows) {
  const std::vector<int> columns = columnsOf(rows);
  std::vector<std::size_t> widths;
  widths.reserve(columns.size());
  for (const int column : columns) widths.push_back(static_cast<std::size_t>(widthOf(rows, column)));
  auto next = columns.begin();
  for (const std::size_t count : bandsOf(widths, kGap, kWidestBand)) {
    const auto end = next + static_cast<std::ptrdiff_t>(count);
    addBand(box, rows, {next, end});
    next = end;
  }
}

void DialogWindow::addBand(QBoxLayout& box, const std::vector<DialogRow>& rows, const std::vector<int>& columns) {
  auto* grid = new QGridLayout;
  grid->setHorizontalSpacing(kGap);
  box.addLayout(grid);
  for (std::size_t row = 0; row < rows.size(); ++row) {
    for (std::size_t column = 0; column < columns.size(); ++column) {
      const auto cell = rows[row].find(columns[column]);
      if (cell == rows[row].end()) continue;
      auto* beside = new QHBoxLayout;
      for (const Widget* widget : cell->second) beside->addWidget(widgetOf(*widget));
      grid->addLayout(beside, static_cast<int>(row), static_cast<int>(column));
    }
  }
  // What is left of the width goes to the text fields; without one, to the right of all.
  const bool takesWidth = std::any_of(rows.begin(), rows.end(), [](const DialogRow& row) {
    return std::any_of(row.begin(), row.end(), [](const auto& cell) {
      return std::any_of(cell.second.begin(), cell.second.end(), [](const Widget* widget) {
        return widget->kind == WidgetKind::inputpanel || widget->kind == WidgetKind::pushbutton;
      });
    });
  });
  if (!takesWidth) grid->setColumnStretch(static_cast<int>(columns.size()), 1);
}

void DialogWindow::act(const std::function<void()>& what) {
  if (acting_ || dialog_.exitStatus) return;
  acting_ = true;
  what();
  acting_ = false;
  refresh();
}

void DialogWindow::refresh() {
  for (const Widget& widget : dialog_.widgets) controls_.at(widget.name).show(widget);
  if (dialog_.exitStatus) loop_.quit();
}

void DialogWindow::reject() {
  const Widget* button = defaultButton(dialog_);
  if (button != nullptr) act([&] { userPress(dialog_, button->name); });
}

void DialogWindow::run() {
  show();
  if (!dialog_.exitStatus) loop_.exec();
  hide();
}

}  // namespace standin
