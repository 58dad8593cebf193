#include "tools/rpk/report/text_table.h"

#include <algorithm>
#include <numeric>

#include "tools/rpk/report/display_text.h"

namespace rpk {
namespace {

constexpr std::size_t kGap = 2;
constexpr std::size_t kNarrowest = 20;

}  // namespace

std::vector<std::size_t> TextTable::widths(std::size_t room) const {
  std::vector<std::size_t> result(columns_.size());
  std::size_t shown = 0;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    for (const auto& row : rows_) result[i] = std::max(result[i], displayWidth(row[i]));
    if (result[i] == 0) continue;
    result[i] = std::max(result[i], displayWidth(columns_[i].title));
    ++shown;
  }
  const std::size_t all =
      std::accumulate(result.begin(), result.end(), kGap * (shown - std::min<std::size_t>(shown, 1)));
  if (all > room) {
    std::size_t& flexible = result[flexible_];
    const std::size_t least = std::min(flexible, kNarrowest);
    flexible = std::max(least, flexible - std::min(flexible, all - room));
  }
  return result;
}

std::string TextTable::text(std::size_t indentation, std::size_t pageWidth) const {
  const std::vector<std::size_t> wide = widths(pageWidth - std::min(pageWidth, indentation));
  std::string result;
  const auto write = [&](const auto& cellAt) {
    std::string line(indentation, ' ');
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      if (wide[i] == 0) continue;
      const std::string cell = shortened(cellAt(i), wide[i]);
      const std::string blanks(wide[i] - std::min(wide[i], displayWidth(cell)), ' ');
      if (line.size() > indentation) line.append(kGap, ' ');
      line += columns_[i].align == Align::kRight ? blanks + cell : cell + blanks;
    }
    line.erase(line.find_last_not_of(' ') + 1);
    result += line + '\n';
  };
  write([&](std::size_t i) { return columns_[i].title; });
  for (const auto& row : rows_) write([&](std::size_t i) { return row[i]; });
  return result;
}

}  // namespace rpk
