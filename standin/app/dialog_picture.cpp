#include "standin/app/dialog_picture.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

#include "standin/app/dialog_grid.h"
#include "standin/app/display_width.h"
#include "standin/windows/code_page.h"

namespace standin {
namespace {

// In columns.
constexpr std::size_t kWidestBand = 96;
constexpr std::size_t kGap = 3;           // between columns
constexpr std::size_t kInputLength = 30;  // an input panel's least
constexpr int kLongestSlider = 60;        // drawn; a longer one is scaled

// Lines of text, as long as each happens to be.
using Block = std::vector<std::wstring>;

std::size_t widthOf(const Block& block) {
  std::size_t width = 0;
  for (const std::wstring& line : block) width = std::max(width, displayWidth(line));
  return width;
}

// The blocks side by side, each in its width.
Block beside(const std::vector<Block>& blocks, const std::vector<std::size_t>& widths) {
  Block result;
  std::size_t left = 0;
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    if (result.size() < blocks[i].size()) result.resize(blocks[i].size());
    for (std::size_t line = 0; line < blocks[i].size(); ++line) {
      result[line] = paddedTo(std::move(result[line]), left) + blocks[i][line];
    }
    left += widths[i] + kGap;
  }
  return result;
}

Block beside(const std::vector<Block>& blocks) {
  std::vector<std::size_t> widths;
  widths.reserve(blocks.size());
  for (const Block& block : blocks) widths.push_back(widthOf(block));
  return beside(blocks, widths);
}

std::string number(const SpinboxState& spinbox, double value) {
  return fmt::format("{:.{}f}", value, spinbox.type == PROUIINPUTTYPE_INTEGER ? 0 : spinbox.digits);
}

Block sliderBlock(const Widget& widget) {
  const SliderState& slider = widget.slider;
  const int length = std::clamp(slider.length, 1, kLongestSlider);
  const double range = static_cast<double>(slider.maximum) - slider.minimum;
  const double share = range > 0 ? (static_cast<double>(slider.value) - slider.minimum) / range : 0;
  const auto at = static_cast<std::size_t>(std::lround(share * (length - 1)));
  const auto size = static_cast<std::size_t>(length);
  if (widget.orientation == PROUIORIENTATION_VERTICAL) {
    Block block(size, L"|");
    block[size - 1 - at] = L"O";
    return block;
  }
  std::wstring line(size, L'-');
  line[at] = L'O';
  return {L'|' + line + L'|'};
}

Block radioBlock(const Widget& widget) {
  const RadioState& radio = widget.radio;
  Block lines;
  for (std::size_t i = 0; i < radio.names.size(); ++i) {
    const std::wstring label = i < radio.labels.size() ? radio.labels[i] : wideFromUtf8(radio.names[i]);
    const std::wstring button = (radio.selected == radio.names[i] ? L"(*) " : L"( ) ") + label;
    if (widget.orientation == PROUIORIENTATION_VERTICAL || lines.empty()) {
      lines.push_back(button);
    } else {
      lines.back() += L"  " + button;
    }
  }
  return lines;
}

Block gridBlock(const Dialog& dialog, const std::string& layout);

Block widgetBlock(const Dialog& dialog, const Widget& widget) {
  switch (widget.kind) {
    case WidgetKind::label:
      return {widget.text};
    case WidgetKind::pushbutton:
      return {L"[ " + widget.text + L" ]"};
    case WidgetKind::spinbox:
      return {L"[" + wideFromUtf8(number(widget.spinbox, widget.spinbox.value)) + L"] -/+"};
    case WidgetKind::slider:
      return sliderBlock(widget);
    case WidgetKind::checkbutton:
      return {(widget.checked ? L"[x] " : L"[ ] ") + widget.text};
    case WidgetKind::radiogroup:
      return radioBlock(widget);
    case WidgetKind::separator:
      return {L"---"};
    case WidgetKind::layout:
      return gridBlock(dialog, widget.name);
    case WidgetKind::inputpanel:
      return {L"[" + paddedTo(widget.text, kInputLength, L'_') + L"]"};
  }
  return {};
}

// A part of a grid from its left to its right edge.
struct Strip {
  Block block;
  bool rule = false;  // drawn across
  bool centred = false;
};

// The components of one cell, side by side; empty when the row has none there.
Block cellBlock(const Dialog& dialog, const DialogRow& row, int column) {
  const auto cell = row.find(column);
  if (cell == row.end()) return {};
  std::vector<Block> blocks;
  for (const Widget* widget : cell->second) blocks.push_back(widgetBlock(dialog, *widget));
  return beside(blocks);
}

// Rows that share their columns, in bands that are not too wide.
void appendBands(const Dialog& dialog, const std::vector<DialogRow>& rows, std::vector<Strip>& strips) {
  std::vector<std::vector<Block>> columns;  // a block for each row
  std::vector<std::size_t> widths;
  for (const int column : columnsOf(rows)) {
    std::vector<Block>& blocks = columns.emplace_back();
    std::size_t& width = widths.emplace_back(0);
    for (const DialogRow& row : rows) {
      blocks.push_back(cellBlock(dialog, row, column));
      width = std::max(width, widthOf(blocks.back()));
    }
  }
  std::size_t first = 0;
  for (const std::size_t count : bandsOf(widths, kGap, kWidestBand)) {
    if (first > 0) strips.push_back({{L""}});
    for (std::size_t row = 0; row < rows.size(); ++row) {
      std::vector<Block> cells;
      for (std::size_t i = first; i < first + count; ++i) cells.push_back(columns[i][row]);
      const auto begin = widths.begin() + static_cast<std::ptrdiff_t>(first);
      strips.push_back({beside(cells, {begin, begin + static_cast<std::ptrdiff_t>(count)})});
    }
    first += count;
  }
}

Block assembled(const std::vector<Strip>& strips) {
  std::size_t width = 0;
  for (const Strip& strip : strips) width = std::max(width, widthOf(strip.block));
  Block result;
  for (const Strip& strip : strips) {
    if (strip.rule) result.emplace_back(width, L'-');
    if (strip.rule) continue;
    const std::size_t indent = strip.centred ? (width - widthOf(strip.block)) / 2 : 0;
    for (const std::wstring& line : strip.block) result.push_back(std::wstring(indent, L' ') + line);
  }
  return result;
}

// What the layout holds, or with no name what the dialog itself does.
Block gridBlock(const Dialog& dialog, const std::string& layout) {
  std::vector<Strip> strips;
  for (const DialogStrip& strip : dialogStrips(dialog, layout)) {
    if (strip.across == nullptr) {
      appendBands(dialog, strip.rows, strips);
      continue;
    }
    const Widget& widget = *strip.across;
    strips.push_back({widgetBlock(dialog, widget), widget.kind == WidgetKind::separator, isCentred(widget)});
  }
  return assembled(strips);
}

std::string framed(const std::string& title, const Block& block) {
  const std::size_t width = std::max(widthOf(block), title.size() + 2);
  std::string text = fmt::format("+- {} {:-<{}}+\n", title, "", width - title.size() - 1);
  for (const std::wstring& line : block) {
    text += fmt::format("| {} |\n", utf8FromWide(paddedTo(line, width)));
  }
  return text + fmt::format("+{:-<{}}+\n", "", width + 2);
}

std::string spinboxRange(const SpinboxState& spinbox) {
  const SpinboxState anything;
  std::string steps =
      fmt::format("by {} or {}", number(spinbox, spinbox.increment), number(spinbox, spinbox.fastIncrement));
  const bool isOpen = spinbox.minimum == anything.minimum || spinbox.maximum == anything.maximum;
  if (!isOpen)
    return fmt::format("{} to {} {}", number(spinbox, spinbox.minimum), number(spinbox, spinbox.maximum), steps);
  if (spinbox.minimum != anything.minimum) return fmt::format("from {} {}", number(spinbox, spinbox.minimum), steps);
  if (spinbox.maximum != anything.maximum) return fmt::format("to {} {}", number(spinbox, spinbox.maximum), steps);
  return steps;
}

using Fields = std::array<std::string, 5>;

// Name, kind, value, range and help; nothing for what is only looked at.
std::optional<Fields> fieldsOf(const Widget& widget) {
  std::string value;
  std::string range;
  switch (widget.kind) {
    case WidgetKind::pushbutton:
      value = utf8FromWide(widget.text);
      break;
    case WidgetKind::spinbox:
      value = number(widget.spinbox, widget.spinbox.value);
      range = spinboxRange(widget.spinbox);
      break;
    case WidgetKind::slider:
      value = std::to_string(widget.slider.value);
      range = fmt::format("{} to {}", widget.slider.minimum, widget.slider.maximum);
      break;
    case WidgetKind::checkbutton:
      value = widget.checked ? "on" : "off";
      break;
    case WidgetKind::radiogroup:
      value = widget.radio.selected.value_or("none");
      range = fmt::format("{}", fmt::join(widget.radio.names, " "));
      break;
    case WidgetKind::inputpanel:
      value = fmt::format("\"{}\"", utf8FromWide(widget.text));
      break;
    case WidgetKind::label:
    case WidgetKind::separator:
    case WidgetKind::layout:
      return std::nullopt;
  }
  if (!widget.enabled) range += range.empty() ? "disabled" : ", disabled";
  return Fields{widget.name, kindName(widget.kind), value, range, utf8FromWide(widget.help)};
}

std::string table(const Dialog& dialog) {
  std::vector<Fields> lines;
  Fields blanks;  // as wide as the widest of each field
  for (const Widget& widget : dialog.widgets) {
    const std::optional<Fields> fields = fieldsOf(widget);
    if (!fields) continue;
    lines.push_back(*fields);
    for (std::size_t i = 0; i < blanks.size(); ++i) {
      blanks[i].resize(std::max(blanks[i].size(), displayWidth(wideFromUtf8((*fields)[i]))), ' ');
    }
  }
  std::string text;
  for (const Fields& fields : lines) {
    std::string line;
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (!blanks[i].empty()) line += "  " + utf8FromWide(paddedTo(wideFromUtf8(fields[i]), blanks[i].size()));
    }
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + '\n';
  }
  return text;
}

}  // namespace

std::string dialogPicture(const Dialog& dialog) { return framed(dialog.name, gridBlock(dialog, "")) + table(dialog); }

}  // namespace standin
