#include "tools/rpk/check_reporter.h"

#include <algorithm>

namespace rpk {
namespace {

constexpr std::size_t kMaxPathPart = 64;  // bytes of one opening line
constexpr std::size_t kMaxWhat = 400;
constexpr std::size_t kPackedHeader = 8;
constexpr std::size_t kPassedStep = 16U << 20;

// Runs of blanks become one; what a terminal or a JSON text would not take becomes \xNN.
void appendPrintable(std::string& text, std::string_view part) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  bool blank = false;
  for (const char c : part) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == ' ' || c == '\t' || c == '\n' || c == '\r') {
      blank = true;
      continue;
    }
    if (blank && !text.empty()) text += ' ';
    blank = false;
    if (byte >= 0x20 && byte < 0x7f) {
      text += c;
    } else {
      text += "\\x";
      text += kDigits[byte >> 4U];
      text += kDigits[byte & 15U];
    }
  }
}

}  // namespace

void CheckReporter::openBlock(const Block& block) {
  std::size_t end = block.place.offset + block.directive.size();
  for (const Word& word : block.words) {
    end = std::max(end, static_cast<std::size_t>(word.source.data() + word.source.size() - bytes_.data()));
  }
  open_.push_back(bytes_.substr(block.place.offset, end - block.place.offset));
}

void CheckReporter::report(CheckKind kind, const Place& place, std::string_view what) {
  if (++report_.counts[static_cast<std::size_t>(kind)] > limits_.findingsOfOneKind) return;
  Finding finding{kind, place, path(), {}};
  appendPrintable(finding.what, what.substr(0, kMaxWhat));
  report_.findings.push_back(std::move(finding));
}

Place CheckReporter::placeOf(const ArrayView& array, const Place& parameter, const char* value) const {
  // Within packed data nothing is a line break; its head can look like one.
  const char* end = array.packed() ? array.bytes().data() - kPackedHeader : value;
  const auto lines = std::count(bytes_.data() + parameter.offset, end, '\n');
  return {static_cast<std::size_t>(value - bytes_.data()), parameter.line + static_cast<std::uint64_t>(lines)};
}

void CheckReporter::passed(std::string_view range) const {
  if (passed_) passed_(range);
}

void CheckReporter::passedUntil(std::size_t offset) {
  if (offset < passedOffset_ + kPassedStep) return;
  passed(bytes_.substr(passedOffset_, offset - passedOffset_));
  passedOffset_ = offset;
}

std::string CheckReporter::path() const {
  std::string text;
  for (const std::string_view line : open_) {
    if (!text.empty()) text += " / ";
    appendPrintable(text, line.substr(0, kMaxPathPart));
    if (line.size() > kMaxPathPart) text += "...";
  }
  return text;
}

}  // namespace rpk
