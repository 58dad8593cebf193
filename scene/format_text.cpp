#include "scene/format_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string_view>

namespace rendara {
namespace {

// Past this many digits every double has only zeros left.
constexpr int kExactDigits = 1100;
// A double in any notation with that many digits after the point.
constexpr std::size_t kFloatCapacity = 1500;
constexpr std::size_t kIntegerDigits = 24;  // 64 bits in octal: 22

enum class Length { kNone, kChar, kShort, kLong, kLongLong, kMax, kSize, kDifference, kLongDouble };

struct Conversion {
  bool left = false;
  bool plus = false;
  bool blank = false;
  bool alternate = false;
  bool zero = false;
  int width = 0;
  int precision = -1;  // -1: none given
  Length length = Length::kNone;
  char type = 0;
};

// A va_list that can be handed on by reference on every platform.
struct Arguments {
  std::va_list list;
};

class Output {
 public:
  Output(char* buffer, std::size_t capacity) : next_(buffer), end_(buffer + capacity) {}

  void put(std::string_view text) {
    const std::size_t count = std::min(text.size(), static_cast<std::size_t>(end_ - next_));
    next_ = std::copy_n(text.data(), count, next_);
  }
  void fill(std::ptrdiff_t count, char character) {
    if (count > 0) next_ = std::fill_n(next_, std::min(count, end_ - next_), character);
  }
  char* end() const { return next_; }

 private:
  char* next_;
  char* end_;
};

// A converted number in the pieces between which padding goes.
struct NumberText {
  std::string_view prefix;  // sign, "0x"
  int leadingZeros = 0;     // from a precision
  std::string_view body;
  int innerZeros = 0;  // decimals past the exact ones
  std::string_view exponent;
  bool zeroPadded = false;
};

void putNumber(Output& out, const Conversion& conversion, const NumberText& number) {
  const std::ptrdiff_t size = std::ssize(number.prefix) + number.leadingZeros + std::ssize(number.body) +
                              number.innerZeros + std::ssize(number.exponent);
  const std::ptrdiff_t padding = conversion.width - size;
  if (!conversion.left && !number.zeroPadded) out.fill(padding, ' ');
  out.put(number.prefix);
  if (!conversion.left && number.zeroPadded) out.fill(padding, '0');
  out.fill(number.leadingZeros, '0');
  out.put(number.body);
  out.fill(number.innerZeros, '0');
  out.put(number.exponent);
  if (conversion.left) out.fill(padding, ' ');
}

void putText(Output& out, const Conversion& conversion, std::string_view text) {
  const std::ptrdiff_t padding = conversion.width - std::ssize(text);
  if (!conversion.left) out.fill(padding, ' ');
  out.put(text);
  if (conversion.left) out.fill(padding, ' ');
}

std::string_view signText(const Conversion& conversion, bool negative) {
  if (negative) return "-";
  if (conversion.plus) return "+";
  return conversion.blank ? " " : "";
}

void toUpper(char* first, char* last) {
  std::transform(first, last, first,
                 [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
}

// ----- Integers

// Some of the types are the same on some platforms.
// NOLINTBEGIN(bugprone-branch-clone)
std::intmax_t signedArgument(Arguments& arguments, Length length) {
  switch (length) {
    case Length::kChar:
      return static_cast<signed char>(va_arg(arguments.list, int));
    case Length::kShort:
      return static_cast<short>(va_arg(arguments.list, int));
    case Length::kLong:
      return va_arg(arguments.list, long);
    case Length::kLongLong:
      return va_arg(arguments.list, long long);
    case Length::kMax:
      return va_arg(arguments.list, std::intmax_t);
    case Length::kSize:
    case Length::kDifference:
      return va_arg(arguments.list, std::ptrdiff_t);
    default:
      return va_arg(arguments.list, int);
  }
}

std::uintmax_t unsignedArgument(Arguments& arguments, Length length) {
  switch (length) {
    case Length::kChar:
      return static_cast<unsigned char>(va_arg(arguments.list, unsigned));
    case Length::kShort:
      return static_cast<unsigned short>(va_arg(arguments.list, unsigned));
    case Length::kLong:
      return va_arg(arguments.list, unsigned long);
    case Length::kLongLong:
      return va_arg(arguments.list, unsigned long long);
    case Length::kMax:
      return va_arg(arguments.list, std::uintmax_t);
    case Length::kSize:
    case Length::kDifference:
      return va_arg(arguments.list, std::size_t);
    default:
      return va_arg(arguments.list, unsigned);
  }
}
// NOLINTEND(bugprone-branch-clone)

void putMagnitude(Output& out, const Conversion& conversion, std::uintmax_t magnitude, int base,
                  std::string_view prefix) {
  std::array<char, kIntegerDigits> digits;
  char* end = digits.data();
  if (magnitude != 0 || conversion.precision != 0) end = std::to_chars(end, end + digits.size(), magnitude, base).ptr;
  if (conversion.type == 'X') toUpper(digits.data(), end);

  NumberText number;
  number.prefix = prefix;
  number.body = {digits.data(), static_cast<std::size_t>(end - digits.data())};
  number.leadingZeros = std::max(0, conversion.precision - static_cast<int>(number.body.size()));
  const bool startsWithZero = number.leadingZeros > 0 || number.body.starts_with('0');
  if (base == 8 && conversion.alternate && !startsWithZero) number.leadingZeros = 1;
  number.zeroPadded = conversion.zero && conversion.precision < 0;
  putNumber(out, conversion, number);
}

void putSigned(Output& out, const Conversion& conversion, std::intmax_t value) {
  const auto bits = static_cast<std::uintmax_t>(value);
  putMagnitude(out, conversion, value < 0 ? 0 - bits : bits, 10, signText(conversion, value < 0));
}

void putUnsigned(Output& out, const Conversion& conversion, std::uintmax_t value) {
  switch (conversion.type) {
    case 'o':
      return putMagnitude(out, conversion, value, 8, "");
    case 'x':
      return putMagnitude(out, conversion, value, 16, conversion.alternate && value != 0 ? "0x" : "");
    case 'X':
      return putMagnitude(out, conversion, value, 16, conversion.alternate && value != 0 ? "0X" : "");
    default:
      return putMagnitude(out, conversion, value, 10, "");
  }
}

// ----- Floats

using FloatBuffer = std::array<char, kFloatCapacity>;

char* convertFloat(FloatBuffer& buffer, double magnitude, std::chars_format notation, int precision) {
  char* first = buffer.data();
  return std::to_chars(first, first + buffer.size(), magnitude, notation, precision).ptr;
}

// The trailing zeros that "%#g" keeps.
char* convertAlternateGeneral(FloatBuffer& buffer, double magnitude, int precision, bool& scientific) {
  char* end = convertFloat(buffer, magnitude, std::chars_format::scientific, precision - 1);
  const char* mark = std::find(buffer.data(), end, 'e');
  int exponent = 0;
  std::from_chars(mark[1] == '+' ? mark + 2 : mark + 1, end, exponent);
  scientific = exponent < -4 || exponent >= precision;
  return scientific ? end : convertFloat(buffer, magnitude, std::chars_format::fixed, precision - 1 - exponent);
}

// Writes the digits of a finite magnitude in the conversion's notation; returns their end.
char* convertMagnitude(FloatBuffer& buffer, double magnitude, const Conversion& conversion, int precision) {
  switch (conversion.type) {
    case 'f':
    case 'F':
      return convertFloat(buffer, magnitude, std::chars_format::fixed, precision);
    case 'e':
    case 'E':
      return convertFloat(buffer, magnitude, std::chars_format::scientific, precision);
    case 'a':
    case 'A':
      if (conversion.precision >= 0) return convertFloat(buffer, magnitude, std::chars_format::hex, precision);
      return std::to_chars(buffer.data(), buffer.data() + buffer.size(), magnitude, std::chars_format::hex).ptr;
    default: {
      const int digits = std::max(1, precision);
      bool scientific = false;
      if (conversion.alternate) return convertAlternateGeneral(buffer, magnitude, digits, scientific);
      return convertFloat(buffer, magnitude, std::chars_format::general, digits);
    }
  }
}

bool isGeneral(char type) { return type == 'g' || type == 'G'; }
bool isHex(char type) { return type == 'a' || type == 'A'; }

void putNonFinite(Output& out, const Conversion& conversion, double value) {
  const bool upper = conversion.type >= 'A' && conversion.type <= 'Z';
  NumberText number;
  if (std::isnan(value)) {
    number.prefix = signText(conversion, false);
    number.body = upper ? "NAN" : "nan";
  } else {
    number.prefix = signText(conversion, value < 0);
    number.body = upper ? "INF" : "inf";
  }
  putNumber(out, conversion, number);
}

void putFloat(Output& out, const Conversion& conversion, double value) {
  if (!std::isfinite(value)) return putNonFinite(out, conversion, value);
  const bool upper = conversion.type >= 'A' && conversion.type <= 'Z';
  const int wanted = conversion.precision < 0 ? 6 : conversion.precision;
  const int precision = std::min(wanted, kExactDigits);

  FloatBuffer buffer;
  char* end = convertMagnitude(buffer, std::abs(value), conversion, precision);
  if (upper) toUpper(buffer.data(), end);
  const char exponentMark = isHex(conversion.type) ? 'p' : 'e';
  char* exponent = std::find(buffer.data(), end, upper ? static_cast<char>(exponentMark - 'a' + 'A') : exponentMark);
  if (conversion.alternate && std::find(buffer.data(), exponent, '.') == exponent) {
    std::copy_backward(exponent, end, end + 1);
    *exponent++ = '.';
    ++end;
  }

  NumberText number;
  std::array<char, 3> prefix{};
  const std::string_view sign = signText(conversion, std::signbit(value));
  char* prefixEnd = std::copy(sign.begin(), sign.end(), prefix.data());
  if (isHex(conversion.type)) {
    *prefixEnd++ = '0';
    *prefixEnd++ = upper ? 'X' : 'x';
  }
  number.prefix = {prefix.data(), static_cast<std::size_t>(prefixEnd - prefix.data())};
  number.body = {buffer.data(), static_cast<std::size_t>(exponent - buffer.data())};
  number.innerZeros = !isGeneral(conversion.type) || conversion.alternate ? wanted - precision : 0;
  number.exponent = {exponent, static_cast<std::size_t>(end - exponent)};
  number.zeroPadded = conversion.zero;
  putNumber(out, conversion, number);
}

// ----- The format

bool isFlag(Conversion& conversion, char character) {
  switch (character) {
    case '-':
      return conversion.left = true;
    case '+':
      return conversion.plus = true;
    case ' ':
      return conversion.blank = true;
    case '#':
      return conversion.alternate = true;
    case '0':
      return conversion.zero = true;
    default:
      return false;
  }
}

// A number of the format, or the next argument for "*". Numbers that no output could need are cut.
int readCount(const char*& format, Arguments& arguments) {
  constexpr int kLimit = 1 << 20;
  if (*format == '*') {
    ++format;
    return std::clamp(va_arg(arguments.list, int), -kLimit, kLimit);
  }
  int count = 0;
  for (; *format >= '0' && *format <= '9'; ++format) count = std::min(kLimit, count * 10 + (*format - '0'));
  return count;
}

Length readLength(const char*& format) {
  const auto doubled = [&format](Length one, Length two) {
    if (format[1] != format[0]) return ++format, one;
    format += 2;
    return two;
  };
  switch (*format) {
    case 'h':
      return doubled(Length::kShort, Length::kChar);
    case 'l':
      return doubled(Length::kLong, Length::kLongLong);
    case 'j':
      return ++format, Length::kMax;
    case 'z':
      return ++format, Length::kSize;
    case 't':
      return ++format, Length::kDifference;
    case 'L':
      return ++format, Length::kLongDouble;
    default:
      return Length::kNone;
  }
}

// Reads what follows a "%" and moves past it.
Conversion readConversion(const char*& format, Arguments& arguments) {
  Conversion conversion;
  while (isFlag(conversion, *format)) ++format;
  conversion.width = readCount(format, arguments);
  if (conversion.width < 0) {
    conversion.left = true;
    conversion.width = -conversion.width;
  }
  if (*format == '.') {
    ++format;
    conversion.precision = std::max(-1, readCount(format, arguments));
  }
  conversion.length = readLength(format);
  conversion.type = *format;
  if (*format != '\0') ++format;
  return conversion;
}

void putString(Output& out, const Conversion& conversion, const char* text) {
  if (text == nullptr) text = "(null)";
  if (conversion.precision < 0) return putText(out, conversion, text);
  const auto limit = static_cast<std::size_t>(conversion.precision);
  const void* end = std::memchr(text, '\0', limit);  // a text without an end is read up to the precision only
  putText(out, conversion,
          {text, end == nullptr ? limit : static_cast<std::size_t>(static_cast<const char*>(end) - text)});
}

// False, with nothing written and no argument used, for a conversion that is not known.
bool putConversion(Output& out, Conversion conversion, Arguments& arguments) {
  const bool narrow = conversion.length == Length::kNone;
  switch (conversion.type) {
    case '%':
      out.put("%");
      return true;
    case 'd':
    case 'i':
      putSigned(out, conversion, signedArgument(arguments, conversion.length));
      return true;
    case 'u':
    case 'o':
    case 'x':
    case 'X':
      putUnsigned(out, conversion, unsignedArgument(arguments, conversion.length));
      return true;
    case 'e':
    case 'E':
    case 'f':
    case 'F':
    case 'g':
    case 'G':
    case 'a':
    case 'A':
      putFloat(out, conversion,
               conversion.length == Length::kLongDouble ? static_cast<double>(va_arg(arguments.list, long double))
                                                        : va_arg(arguments.list, double));
      return true;
    case 'c': {
      if (!narrow) return false;
      const char character = static_cast<char>(va_arg(arguments.list, int));
      putText(out, conversion, {&character, 1});
      return true;
    }
    case 's':
      if (narrow) putString(out, conversion, va_arg(arguments.list, const char*));
      return narrow;
    case 'p':
      putMagnitude(out, conversion, reinterpret_cast<std::uintptr_t>(va_arg(arguments.list, void*)), 16, "0x");
      return true;
    default:
      return false;
  }
}

void putFormat(Output& out, const char* format, Arguments& arguments) {
  while (*format != '\0') {
    const std::size_t plain = std::strcspn(format, "%");
    out.put({format, plain});
    format += plain;
    if (*format == '\0') return;
    const char* start = format++;
    if (!putConversion(out, readConversion(format, arguments), arguments)) return out.put(start);
  }
}

}  // namespace

std::size_t formatText(char* buffer, std::size_t size, const char* format, std::va_list arguments) {
  if (size == 0) return 0;
  Output out(buffer, size - 1);
  Arguments copy;
  va_copy(copy.list, arguments);
  putFormat(out, format, copy);
  va_end(copy.list);
  *out.end() = '\0';
  return static_cast<std::size_t>(out.end() - buffer);
}

}  // namespace rendara
