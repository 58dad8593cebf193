#include "settings/frame_text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>

#include "settings/number_reading.h"

namespace rendara {
namespace {

constexpr std::size_t kBlock = 64 << 10;
constexpr std::size_t kBeyond = 20;  // a NUL, and what is read at once from it on
constexpr std::ptrdiff_t kLongestToken = 255;
constexpr std::ptrdiff_t kLongestNumber = 4096;

bool isDigit(char letter) { return letter >= '0' && letter <= '9'; }
char lower(char letter) { return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter | 0x20) : letter; }
bool isHexDigit(char letter) { return isDigit(letter) || (lower(letter) >= 'a' && lower(letter) <= 'f'); }
bool isSign(char letter) { return letter == '-' || letter == '+'; }

// Each of the following begins at a character of a text that a NUL ends.

bool startsWith(const char* text, std::string_view lowerWord) {
  return std::all_of(lowerWord.begin(), lowerWord.end(), [&](char letter) { return lower(*text++) == letter; });
}

const char* skipDigits(const char* at) {
  while (isDigit(*at)) {
    ++at;
  }
  return at;
}

// The end of what "%f" takes, which can be more than a number ("1e+"), or null when it takes no number.
const char* endOfFloat(const char* at) {
  at += isSign(*at) ? 1 : 0;
  if (startsWith(at, "nan")) {
    return at + 3;
  }
  if (startsWith(at, "inf")) {
    const bool longForm = lower(at[3]) == 'i';
    return longForm ? (startsWith(at, "infinity") ? at + 8 : nullptr) : at + 3;
  }
  const bool hexadecimal = startsWith(at, "0x");
  at += hexadecimal ? 2 : 0;
  const char* const mantissa = at;
  bool digits = false;
  for (bool point = false;; ++at) {
    if (hexadecimal ? isHexDigit(*at) : isDigit(*at)) {
      digits = true;
    } else if (*at == '.' && !point) {
      point = true;
    } else {
      break;
    }
  }
  if (hexadecimal ? at == mantissa : !digits) {
    return nullptr;
  }
  if (digits && lower(*at) == (hexadecimal ? 'p' : 'e')) {
    ++at;
    at = skipDigits(at + (isSign(*at) ? 1 : 0));
  }
  return at;
}

// A decimal number as it was scanned: mantissa times ten to the exponent.
struct Decimal {
  std::uint64_t mantissa = 0;
  int exponent = 0;
  bool negative = false;
};

// Appends digits to a number, without a bound.
const char* scanDigits(const char* at, std::uint64_t& number) {
  for (; isDigit(*at); ++at) {
    number = number * 10 + static_cast<std::uint64_t>(*at - '0');
  }
  return at;
}

// The first one lowest.
std::uint64_t eightBytes(const char* at) {
  std::uint64_t bytes = 0;
  for (int i = 0; i < 8; ++i) {
    bytes |= static_cast<std::uint64_t>(static_cast<unsigned char>(at[i])) << (8 * i);
  }
  return bytes;
}

constexpr std::uint64_t kEightZeros = 0x3030303030303030;

// Of up to eight digits, the last one in the highest byte, each without its '0'.
std::uint64_t numberOf(std::uint64_t digits) {
  // Neighbours are put together in pairs, these in fours, these in one.
  digits = (digits * 10 + (digits >> 8)) & 0x00FF00FF00FF00FF;
  digits = (digits * 100 + (digits >> 16)) & 0x0000FFFF0000FFFF;
  return (digits * 10000 + (digits >> 32)) & 0xFFFFFFFF;
}

// What "%f" prints of numbers below a thousand: up to three digits, a point, six digits, white space. The end, behind
// the first of it, or null for all others. Reads 12 characters.
const char* scanSmall(const char* at, float& value) {
  static constexpr std::array<double, 2> kMillions = {1e6, -1e6};
  const std::size_t negative = *at == '-' ? 1 : 0;
  at += negative;
  std::uint64_t upper = 0;
  for (int i = 0; i < 2 && at[1] != '.'; ++i, ++at) {
    if (!isDigit(*at)) {
      return nullptr;
    }
    upper = upper * 10 + static_cast<std::uint64_t>(*at - '0');
  }
  const std::uint64_t bytes = eightBytes(at);
  // The digits together, behind a zero.
  const std::uint64_t digits = ((bytes & ~std::uint64_t{0xFFFF}) | ((bytes & 0xFF) << 8) | '0') ^ kEightZeros;
  // Bytes above nine carry into their upper half when six is added.
  if (at[1] != '.' || ((digits | (digits + 0x0606060606060606)) & 0xF0F0F0F0F0F0F0F0) != 0) {
    return nullptr;
  }
  // The quotient, rounded twice, is the nearest value: to be next to the middle of two floats in double precision it
  // has to be that middle, as a whole number of millionths below a thousand is farther from it otherwise.
  const auto millionths = static_cast<std::int64_t>(upper * 10'000'000 + numberOf(digits));
  value = static_cast<float>(static_cast<double>(millionths) / kMillions[negative]);
  at += 8;
  return isSpace(*at) ? at + 1 : nullptr;
}

// How many of the bytes are digits until the first that is none; the bytes without a digit's '0'.
int leadingDigits(std::uint64_t bytes) {
  // A byte above nine gets its upper bit, and may carry into those behind it only.
  const std::uint64_t others = (bytes | (bytes + 0x7676767676767676)) & 0x8080808080808080;
  return std::countr_zero(others) / 8;
}

// Up to eight digits, a point, up to eight digits, white space. Its end, or null for all others. Reads 19 characters.
const char* scanPlain(const char* at, Decimal& decimal) {
  decimal.negative = *at == '-';
  at += decimal.negative ? 1 : 0;
  const std::uint64_t whole = eightBytes(at) ^ kEightZeros;
  const int wholes = leadingDigits(whole);
  if (wholes == 0 || at[wholes] != '.') {
    return nullptr;
  }
  at += wholes + 1;
  const std::uint64_t part = eightBytes(at) ^ kEightZeros;
  const int parts = leadingDigits(part);
  if (parts == 0 || !isSpace(at[parts])) {
    return nullptr;
  }
  static constexpr std::array<std::uint32_t, 9> kShifts = {1,       10,        100,        1000,       10'000,
                                                           100'000, 1'000'000, 10'000'000, 100'000'000};
  decimal.mantissa = numberOf(whole << (64 - 8 * wholes)) * kShifts[static_cast<std::size_t>(parts)] +
                     numberOf(part << (64 - 8 * parts));
  decimal.exponent = -parts;
  return at + parts;
}

// Numbers as they mostly are: few digits, white space behind them. Its end, or null for all others.
const char* scanDecimal(const char* at, Decimal& decimal) {
  constexpr std::ptrdiff_t kMostDigits = 19;  // always fit
  decimal.negative = *at == '-';
  at += isSign(*at) ? 1 : 0;
  const char* const first = at;
  at = scanDigits(at, decimal.mantissa);
  std::ptrdiff_t digits = at - first;
  if (*at == '.') {
    const char* const point = ++at;
    at = scanDigits(at, decimal.mantissa);
    decimal.exponent = static_cast<int>(point - at);
    digits += at - point;
  }
  if (digits == 0 || digits > kMostDigits) {
    return nullptr;
  }
  if (lower(*at) == 'e') {
    const bool negative = *++at == '-';
    at += isSign(*at) ? 1 : 0;
    const char* const end = skipDigits(at);
    if (end == at || end - at > 3) {
      return nullptr;
    }
    int power = 0;
    for (; at != end; ++at) {
      power = power * 10 + (*at - '0');
    }
    decimal.exponent += negative ? -power : power;
  }
  return isSpace(*at) ? at : nullptr;
}

constexpr int kLargestPower = 22;
constexpr std::array<double, 2 * kLargestPower + 1> kPowers = {
    1e-22, 1e-21, 1e-20, 1e-19, 1e-18, 1e-17, 1e-16, 1e-15, 1e-14, 1e-13, 1e-12, 1e-11, 1e-10, 1e-9, 1e-8,
    1e-7,  1e-6,  1e-5,  1e-4,  1e-3,  1e-2,  1e-1,  1e0,   1e1,   1e2,   1e3,   1e4,   1e5,   1e6,  1e7,
    1e8,   1e9,   1e10,  1e11,  1e12,  1e13,  1e14,  1e15,  1e16,  1e17,  1e18,  1e19,  1e20,  1e21, 1e22};

// The nearest float, when it is certain. Mantissa, power and product are each rounded once, so the double is fewer than
// four of its own steps off; only next to the middle between two floats could that lead to the wrong one.
bool toFloat(const Decimal& decimal, float& value) {
  const int power = decimal.exponent + kLargestPower;
  if (power < 0 || power > 2 * kLargestPower) {
    return false;
  }
  const double number = static_cast<double>(decimal.mantissa) * kPowers[static_cast<std::size_t>(power)];
  constexpr std::uint64_t kFurtherBits = (std::uint64_t{1} << 29) - 1;  // of a double's fraction beyond a float's
  constexpr std::uint64_t kMiddle = std::uint64_t{1} << 28;
  constexpr std::uint64_t kMargin = 8;
  const std::uint64_t further = std::bit_cast<std::uint64_t>(number) & kFurtherBits;
  const bool usual = number >= static_cast<double>(std::numeric_limits<float>::min()) &&
                     number <= static_cast<double>(std::numeric_limits<float>::max());
  if ((!usual && decimal.mantissa != 0) || further - (kMiddle - kMargin) <= 2 * kMargin) {
    return false;
  }
  value = static_cast<float>(decimal.negative ? -number : number);
  return true;
}

bool equalsAsCString(std::string_view token, std::string_view word) {
  return token.starts_with(word) && (token.size() == word.size() || token[word.size()] == '\0');
}

}  // namespace

FrameText::FrameText(std::FILE* file)
    : file_(file), block_(kBlock + kBeyond), at_(block_.data()), end_(block_.data()) {}

void FrameText::fill() {
  const auto left = static_cast<std::size_t>(end_ - at_);
  std::memmove(block_.data(), at_, left);
  const std::size_t got = std::fread(block_.data() + left, 1, kBlock - left, file_);
  atEnd_ = got < kBlock - left;
  at_ = block_.data();
  end_ = at_ + left + got;
  block_[left + got] = '\0';
  token_ = nullptr;
}

void FrameText::skipMoreSpace() {
  for (;;) {
    while (isSpace(*at_)) {
      ++at_;
    }
    if (at_ != end_ || atEnd_) {
      return;
    }
    fill();
  }
}

bool FrameText::skipPast(std::string_view word) {
  for (;;) {
    skipSpace();
    gather(kLongestToken);
    const char* const first = at_;
    const char* const limit = first + std::min(end_ - first, kLongestToken);
    while (at_ != limit && !isSpace(*at_)) {
      ++at_;
    }
    if (at_ == first) {
      return false;
    }
    token_ = first;
    if (equalsAsCString({first, static_cast<std::size_t>(at_ - first)}, word)) {
      return true;
    }
  }
}

bool FrameText::readInt(int& value) {
  skipSpace();
  gather(kLongestNumber + 1);
  const char* const digits = at_ + (isSign(*at_) ? 1 : 0);
  std::uint64_t number = 0;
  const char* const end = scanDigits(digits, number);
  if (end == digits || end - at_ > kLongestNumber) {
    return false;
  }
  if (end - digits < 10) {
    value = static_cast<int>(number);
    value = *at_ == '-' ? -value : value;
  } else {
    value = rendara::readInt({at_, static_cast<std::size_t>(end - at_)});
  }
  at_ = end;
  return true;
}

bool FrameText::readFloats(std::span<float> values) {
  for (float& value : values) {
    if (*at_ <= ' ') {
      skipMoreSpace();
    }
    // What the block has not whole is none of these.
    const char* end = scanSmall(at_, value);
    if (end == nullptr) {
      gather(kLongestNumber + 1);
      end = endOfOther(value);
    }
    if (end == nullptr) {
      return false;
    }
    at_ = end;
  }
  return true;
}

const char* FrameText::endOfOther(float& value) {
  Decimal decimal;
  const char* end = scanPlain(at_, decimal);
  if (end == nullptr) {
    decimal = {};
    end = scanDecimal(at_, decimal);
  }
  if (end == nullptr || !toFloat(decimal, value)) {
    end = endOfFloat(at_);
    if (end == nullptr || end - at_ > kLongestNumber) {
      return nullptr;
    }
    value = rendara::readFloat({at_, static_cast<std::size_t>(end - at_)});
  }
  return end;
}

bool FrameText::skipOpening() {
  skipSpace();
  if (*at_ != '(') {
    return false;
  }
  ++at_;
  return true;
}

void FrameText::skipClosing() {
  gather(1);
  at_ += *at_ == ')' ? 1 : 0;
}

}  // namespace rendara
