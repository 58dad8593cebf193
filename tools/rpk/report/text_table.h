// Columns of text that line up.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace rpk {

// Cells are UTF-8. One column, the flexible one, is shortened when the lines would get longer than the page. A column
// without any text is left out.
class TextTable {
 public:
  enum class Align { kLeft, kRight };
  struct Column {
    std::string title;
    Align align = Align::kLeft;
  };

  TextTable(std::vector<Column> columns, std::size_t flexible) : columns_(std::move(columns)), flexible_(flexible) {}

  // As many cells as columns.
  void add(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
  bool empty() const { return rows_.empty(); }
  // The titles and all rows, each line with so many blanks before it and none after.
  std::string text(std::size_t indentation, std::size_t pageWidth) const;

 private:
  // 0 for a column that is left out.
  std::vector<std::size_t> widths(std::size_t room) const;

  std::vector<Column> columns_;
  std::size_t flexible_;
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace rpk
