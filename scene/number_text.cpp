#include "scene/number_text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace rendara {
namespace {

constexpr int kDigits = 6;
constexpr double kLowestScaled = 1e5;  // a scaled value has kDigits digits before the point
constexpr double kHighestScaled = 1e6;

// Every power of ten that a double holds exactly.
constexpr std::array<double, 23> kPowersOfTen = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                                 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr int kHighestPower = static_cast<int>(kPowersOfTen.size()) - 1;

char* copyText(char* first, char* last, std::string_view text) {
  if (last - first < std::ssize(text)) return first;
  return std::copy(text.begin(), text.end(), first);
}

std::string_view textOfNonFinite(double value) {
  if (std::isnan(value)) return "nan";
  return value < 0 ? "-inf" : "inf";
}

char* endOrFirst(char* first, std::to_chars_result result) { return result.ec == std::errc{} ? result.ptr : first; }

// The six leading digits of a number as an integer, 100000 to 999999, and the power of ten of the first of them.
struct Decimal {
  unsigned digits;
  int exponent;
};

// Scales to an integer of six digits with one multiplication or division by an exact power of ten. That is off by half
// a unit in the last place, below 1e-10 here, so the rounding is certain unless the fraction is next to a half.
// False when it is not, or when no exact power is at hand. `magnitude` is finite and above zero.
bool roundToSixDigits(double magnitude, Decimal& result) {
  constexpr double kLog10Of2 = 0.30102999566398120;
  constexpr double kUncertain = 1e-6;
  const int binaryExponent = static_cast<int>(std::bit_cast<std::uint64_t>(magnitude) >> 52) - 1023;
  int exponent = static_cast<int>(std::floor(binaryExponent * kLog10Of2));
  const auto scale = [magnitude](int power) {
    return power >= 0 ? magnitude * kPowersOfTen[static_cast<std::size_t>(power)]
                      : magnitude / kPowersOfTen[static_cast<std::size_t>(-power)];
  };
  // The estimate is exact or one too low.
  if (kDigits - 1 - exponent > kHighestPower || exponent + 1 - (kDigits - 1) > kHighestPower) return false;
  double scaled = scale(kDigits - 1 - exponent);
  if (scaled >= kHighestScaled) scaled = scale(kDigits - 1 - ++exponent);
  if (scaled < kLowestScaled || scaled >= kHighestScaled) return false;

  auto digits = static_cast<unsigned>(scaled);
  const double fraction = scaled - digits;
  if (std::abs(fraction - 0.5) < kUncertain) return false;
  if (fraction > 0.5) ++digits;
  if (digits == 1000000) {
    digits = 100000;
    ++exponent;
  }
  result = {digits, exponent};
  return true;
}

// "%g" of six digits, at most 12 characters.
char* layOutGeneral(char* out, Decimal decimal) {
  std::array<char, kDigits> digits;
  for (std::size_t i = kDigits; i-- > 0; decimal.digits /= 10) digits[i] = static_cast<char>('0' + decimal.digits % 10);
  int count = kDigits;
  while (count > 1 && digits[static_cast<std::size_t>(count - 1)] == '0') --count;

  const char* digit = digits.data();
  if (decimal.exponent >= kDigits || decimal.exponent < -4) {
    *out++ = *digit;
    if (count > 1) *out++ = '.';
    out = std::copy(digit + 1, digit + count, out);
    *out++ = 'e';
    *out++ = decimal.exponent < 0 ? '-' : '+';
    const int exponent = std::abs(decimal.exponent);  // at most 28
    *out++ = static_cast<char>('0' + exponent / 10);
    *out++ = static_cast<char>('0' + exponent % 10);
    return out;
  }
  if (decimal.exponent < 0) {
    *out++ = '0';
    *out++ = '.';
    out = std::fill_n(out, -decimal.exponent - 1, '0');
    return std::copy(digit, digit + count, out);
  }
  const int whole = decimal.exponent + 1;  // trailing zeros before the point stay
  out = std::copy(digit, digit + whole, out);
  if (count > whole) {
    *out++ = '.';
    out = std::copy(digit + whole, digit + count, out);
  }
  return out;
}

char* writeFixedDecimals(char* first, char* last, double value, int decimals, int width) {
  if (std::isfinite(value)) {
    return endOrFirst(first, std::to_chars(first, last, value, std::chars_format::fixed, decimals));
  }
  const std::string_view text = textOfNonFinite(value);
  const std::ptrdiff_t padding = std::max<std::ptrdiff_t>(0, width - std::ssize(text));
  if (last - first < padding + std::ssize(text)) return first;
  return copyText(std::fill_n(first, padding, ' '), last, text);
}

}  // namespace

char* writeGeneral(char* first, char* last, double value) {
  if (!std::isfinite(value)) return copyText(first, last, textOfNonFinite(value));
  if (value != 0 && last - first >= static_cast<std::ptrdiff_t>(kGeneralCapacity)) {
    Decimal decimal;
    if (roundToSixDigits(std::abs(value), decimal)) {
      char* out = first;
      if (value < 0) *out++ = '-';
      return layOutGeneral(out, decimal);
    }
  }
  return endOrFirst(first, std::to_chars(first, last, value, std::chars_format::general, kDigits));
}

char* writeFixed(char* first, char* last, double value) { return writeFixedDecimals(first, last, value, 6, 0); }

// Sixteen decimals fill the width of every finite value.
char* writeFixed16(char* first, char* last, double value) { return writeFixedDecimals(first, last, value, 16, 16); }

char* writeInteger(char* first, char* last, int value) { return endOrFirst(first, std::to_chars(first, last, value)); }

char* writeUnsigned(char* first, char* last, unsigned value) {
  return endOrFirst(first, std::to_chars(first, last, value));
}

}  // namespace rendara
