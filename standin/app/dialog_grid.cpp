#include "standin/app/dialog_grid.h"

#include <set>
#include <utility>

namespace standin {
namespace {

const Widget* componentAcross(const DialogRow& row) {
  if (row.size() != 1 || row.begin()->second.size() != 1) return nullptr;
  const Widget* widget = row.begin()->second.front();
  const bool spans = widget->kind == WidgetKind::separator || widget->kind == WidgetKind::layout || widget->columns > 1;
  return spans ? widget : nullptr;
}

}  // namespace

std::vector<DialogStrip> dialogStrips(const Dialog& dialog, const std::string& layout) {
  std::map<int, DialogRow> rows;
  for (const Widget& widget : dialog.widgets) {
    if (widget.layout == layout) rows[widget.row][widget.column].push_back(&widget);
  }
  std::vector<DialogStrip> strips;
  bool running = false;
  for (auto& entry : rows) {
    const Widget* across = componentAcross(entry.second);
    if (across != nullptr || !running) strips.emplace_back().across = across;
    running = across == nullptr;
    if (running) strips.back().rows.push_back(std::move(entry.second));
  }
  return strips;
}

std::vector<int> columnsOf(const std::vector<DialogRow>& rows) {
  std::set<int> columns;
  for (const DialogRow& row : rows) {
    for (const auto& entry : row) columns.insert(entry.first);
  }
  return {columns.begin(), columns.end()};
}

std::vector<std::size_t> bandsOf(const std::vector<std::size_t>& widths, std::size_t gap, std::size_t widest) {
  std::vector<std::size_t> bands;
  std::size_t total = 0;
  for (const std::size_t width : widths) {
    if (bands.empty() || total + gap + width > widest) {
      bands.push_back(1);
      total = width;
    } else {
      ++bands.back();
      total += gap + width;
    }
  }
  return bands;
}

bool isCentred(const Widget& layout) {
  return layout.kind == WidgetKind::layout && !layout.attached.left && !layout.attached.right;
}

}  // namespace standin
