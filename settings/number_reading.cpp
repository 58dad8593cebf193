#include "settings/number_reading.h"

#include <charconv>
#include <limits>

namespace rendara {
namespace {

std::string_view skipSpace(std::string_view text) {
  const auto first = text.find_first_not_of(" \t\n\v\f\r");
  return first == std::string_view::npos ? std::string_view() : text.substr(first);
}

// Takes a sign from the front of the text; true for a minus.
bool takeSign(std::string_view& text) {
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) {
    text.remove_prefix(1);
  }
  return negative;
}

bool isHexadecimal(std::string_view text) {
  if (text.size() < 3 || text[0] != '0' || (text[1] != 'x' && text[1] != 'X')) {
    return false;
  }
  const std::string_view digits = text.substr(text[2] == '.' ? 3 : 2, 1);
  return digits.find_first_of("0123456789abcdefABCDEF") == 0;
}

// Whether a number that is out of range is too large: by the place of its first digit and its exponent.
bool isTooLarge(std::string_view number, bool hexadecimal) {
  const std::string_view digits = hexadecimal ? "123456789abcdefABCDEF" : "123456789";
  const std::string_view exponentMarks = hexadecimal ? "pP" : "eE";
  const std::string_view mantissa = number.substr(0, number.find_first_of(exponentMarks));
  long long exponent = 0;
  if (mantissa.size() + 1 < number.size()) {
    std::string_view text = number.substr(mantissa.size() + 1);
    const bool negative = takeSign(text);
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), exponent);
    if (parsed.ec == std::errc::result_out_of_range) {
      exponent = std::numeric_limits<int>::max();
    }
    exponent = negative ? -exponent : exponent;
  }
  const auto point =
      static_cast<long long>(mantissa.find('.') == std::string_view::npos ? mantissa.size() : mantissa.find('.'));
  const auto first = static_cast<long long>(mantissa.find_first_of(digits));
  return exponent + (point - first) * (hexadecimal ? 4 : 1) > 0;
}

template <typename Number>
Number readNumber(std::string_view text) {
  text = skipSpace(text);
  const bool negative = takeSign(text);
  if (text.starts_with('-') || text.starts_with('+')) {
    return 0;
  }
  const bool hexadecimal = isHexadecimal(text);
  if (hexadecimal) {
    text.remove_prefix(2);
  }
  Number value = 0;
  const auto parsed = std::from_chars(text.data(), text.data() + text.size(), value,
                                      hexadecimal ? std::chars_format::hex : std::chars_format::general);
  if (parsed.ec == std::errc::result_out_of_range) {
    const std::string_view number(text.data(), static_cast<std::size_t>(parsed.ptr - text.data()));
    value = isTooLarge(number, hexadecimal) ? std::numeric_limits<Number>::infinity() : 0;
  }
  return negative ? -value : value;
}

}  // namespace

double readDouble(std::string_view text) { return readNumber<double>(text); }

float readFloat(std::string_view text) { return readNumber<float>(text); }

int readInt(std::string_view text) {
  text = skipSpace(text);
  const bool negative = takeSign(text);
  if (text.starts_with('-') || text.starts_with('+')) {
    return 0;
  }
  long long value = 0;
  const auto parsed = std::from_chars(text.data(), text.data() + text.size(), value);
  if (parsed.ec == std::errc::result_out_of_range) {
    value = std::numeric_limits<long long>::max();
  }
  value = negative ? -value : value;
  if (value > std::numeric_limits<int>::max()) {
    return std::numeric_limits<int>::max();
  }
  return value < std::numeric_limits<int>::min() ? std::numeric_limits<int>::min() : static_cast<int>(value);
}

}  // namespace rendara
