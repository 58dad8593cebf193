#include "tools/rpk/check_arrays.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "tools/rpk/little_endian.h"

namespace rpk {
namespace {

constexpr std::size_t kScanStep = 1U << 20;      // bytes of text, or of packed values, that are looked at in one go
constexpr std::size_t kReleaseStep = 16U << 20;  // bytes after which pages are handed back

bool isSeparator(char c) { return c == ' ' || c == ',' || c == '\n' || c == '\t' || c == '\r'; }

// The next word and what is behind it.
std::string_view takeWord(std::string_view& rest) {
  const char* const bytesEnd = rest.data() + rest.size();
  const char* const begin = std::find_if_not(rest.data(), bytesEnd, isSeparator);
  const char* const end = std::find_if(begin, bytesEnd, isSeparator);
  const std::string_view word(begin, static_cast<std::size_t>(end - begin));
  rest = {end, static_cast<std::size_t>(bytesEnd - end)};
  return word;
}

std::optional<double> parse(std::string_view word) {
  double value = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
  if (end != word.data() + word.size() || error == std::errc::invalid_argument) return std::nullopt;
  return value;
}

// All bits of the exponent are set in infinities and in what is not a number; adding the exponent's lowest bit then
// carries into the sign. No branch inside, so that the loop runs on vectors.
template <typename Bits>
bool anyNotFinite(const char* values, std::size_t count, Bits exponent) {
  const Bits lowest = exponent & (~exponent + 1);
  Bits carried = 0;
  for (std::size_t i = 0; i < count; ++i) {
    carried |= static_cast<Bits>((loadLittleEndian<Bits>(values + i * sizeof(Bits)) & exponent) + lowest);
  }
  return (carried >> (std::numeric_limits<Bits>::digits - 1)) != 0;
}

template <typename Bits>
void countNotFinite(std::string_view block, Bits exponent, ArrayFacts& facts) {
  if (!anyNotFinite(block.data(), block.size() / sizeof(Bits), exponent)) return;
  for (std::size_t i = 0; i + sizeof(Bits) <= block.size(); i += sizeof(Bits)) {
    if ((loadLittleEndian<Bits>(block.data() + i) & exponent) != exponent) continue;
    if (facts.notFinite++ == 0) facts.firstNotFinite = block.data() + i;
  }
}

void scanPacked(const ArrayView& array, const CheckReporter& reporter, ArrayFacts& facts) {
  facts.count = array.count();
  if (array.tag() == 'i') return;
  const std::string_view bytes = array.bytes();
  std::size_t released = 0;
  for (std::size_t at = 0; at < bytes.size(); at += kScanStep) {
    const std::string_view block = bytes.substr(at, kScanStep);
    if (array.tag() == 'r') {
      countNotFinite<std::uint64_t>(block, 0x7ff0000000000000U, facts);
    } else {
      countNotFinite<std::uint32_t>(block, 0x7f800000U, facts);
    }
    if (at - released >= kReleaseStep) {
      reporter.passed(bytes.substr(released, at - released));
      released = at;
    }
  }
}

void scanText(const ArrayView& array, bool wholeNumbers, const CheckReporter& reporter, ArrayFacts& facts) {
  std::string_view rest = array.bytes();
  const char* released = rest.data();
  for (;;) {
    const std::string_view word = takeWord(rest);
    if (word.empty()) return;
    ++facts.count;
    const std::optional<double> value = parse(word);
    if (!value || (wholeNumbers && std::isfinite(*value) && !isInteger(*value))) {
      if (facts.notNumbers++ == 0) facts.firstNotNumber = word.data();
    } else if (!std::isfinite(*value)) {
      if (facts.notFinite++ == 0) facts.firstNotFinite = word.data();
    }
    if (static_cast<std::size_t>(rest.data() - released) >= kReleaseStep) {
      reporter.passed({released, static_cast<std::size_t>(rest.data() - released)});
      released = rest.data();
    }
  }
}

}  // namespace

std::optional<double> NumberCursor::next() {
  if (tag_ == 0) return nextOfText();
  const std::size_t size = tag_ == 'r' ? 8 : 4;
  if (rest_.size() < size) return std::nullopt;
  last_ = rest_.data();
  rest_.remove_prefix(size);
  if (tag_ == 'r') return loadLittleEndian<double>(last_);
  if (tag_ == 'i') return loadLittleEndian<std::int32_t>(last_);
  return static_cast<double>(loadLittleEndian<float>(last_));
}

std::optional<double> NumberCursor::nextOfText() {
  const std::string_view word = takeWord(rest_);
  if (word.empty()) return std::nullopt;
  last_ = word.data();
  return parse(word);
}

ArrayFacts scanArray(const ArrayView& array, bool wholeNumbers, const CheckReporter& reporter) {
  ArrayFacts facts;
  if (array.packed()) {
    scanPacked(array, reporter, facts);
  } else {
    scanText(array, wholeNumbers, reporter, facts);
  }
  return facts;
}

bool isInteger(double value) {
  return value >= std::numeric_limits<std::int32_t>::min() && value <= std::numeric_limits<std::int32_t>::max() &&
         value == std::trunc(value);
}

}  // namespace rpk
