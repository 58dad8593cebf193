// How the components of a dialog lie, for whoever shows it.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "standin/cad/dialog.h"

namespace standin {

// The components of a row by their columns; those of one cell stand side by side.
using DialogRow = std::map<int, std::vector<const Widget*>>;

// A part of a grid from its left to its right edge: rows that share their columns, or a single component that reaches
// across (a separator, a layout, one of several columns).
struct DialogStrip {
  std::vector<DialogRow> rows;
  const Widget* across = nullptr;  // then there are no rows
};

// What the layout holds, or with no name what the dialog itself does, from the top down.
std::vector<DialogStrip> dialogStrips(const Dialog& dialog, const std::string& layout);

// The columns of the rows, from the left.
std::vector<int> columnsOf(const std::vector<DialogRow>& rows);

// How many columns of these widths go side by side, band after band, so that no band of more than one is wider than
// `widest`, with `gap` between columns.
std::vector<std::size_t> bandsOf(const std::vector<std::size_t>& widths, std::size_t gap, std::size_t widest);

// Whether a layout stands in the middle of its row instead of at its left.
bool isCentred(const Widget& layout);

}  // namespace standin
