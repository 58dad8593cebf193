#include "scene/number_text.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

#include "scene/format_text.h"

namespace rendara {
namespace {

using Writer = char* (*)(char*, char*, double);

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

std::string text(Writer writer, double value) {
  std::array<char, 400> buffer;
  return {buffer.data(), writer(buffer.data(), buffer.data() + buffer.size(), value)};
}

std::string general(double value) { return text(writeGeneral, value); }

std::string printed(const char* format, double value) {
  std::array<char, 400> buffer;
  std::snprintf(buffer.data(), buffer.size(), format, value);
  return buffer.data();
}

TEST(NumberText, GeneralAtItsEdges) {
  EXPECT_EQ(general(0.0), "0");
  EXPECT_EQ(general(-0.0), "-0");
  EXPECT_EQ(general(1), "1");
  EXPECT_EQ(general(-100000), "-100000");
  EXPECT_EQ(general(999999), "999999");
  EXPECT_EQ(general(1000000), "1e+06");
  EXPECT_EQ(general(999999.5), "1e+06");   // a tie, to the even digit
  EXPECT_EQ(general(100000.5), "100000");  // a tie, to the even digit
  EXPECT_EQ(general(100001.5), "100002");
  EXPECT_EQ(general(999999.4999999999), "999999");
  EXPECT_EQ(general(0.0001), "0.0001");
  EXPECT_EQ(general(0.0000999999), "9.99999e-05");
  EXPECT_EQ(general(0.00009999996), "0.0001");
  EXPECT_EQ(general(0.1F), "0.1");
  EXPECT_EQ(general(39370.078F), "39370.1");
  EXPECT_EQ(general(1234567), "1.23457e+06");
  EXPECT_EQ(general(1e100), "1e+100");
  EXPECT_EQ(general(-1.23456789e-300), "-1.23457e-300");
  EXPECT_EQ(general(5e-324), "4.94066e-324");
  EXPECT_EQ(general(std::numeric_limits<float>::max()), "3.40282e+38");
  EXPECT_EQ(general(kInfinity), "inf");
  EXPECT_EQ(general(-kInfinity), "-inf");
  EXPECT_EQ(general(kNan), "nan");
  EXPECT_EQ(general(-kNan), "nan");
}

TEST(NumberText, FixedFormsAtTheirEdges) {
  EXPECT_EQ(text(writeFixed, 0.2), "0.200000");
  EXPECT_EQ(text(writeFixed, -0.0), "-0.000000");
  EXPECT_EQ(text(writeFixed, 0.0000005), "0.000000");  // the double lies below the tie
  EXPECT_EQ(text(writeFixed, 1e15), "1000000000000000.000000");
  EXPECT_EQ(text(writeFixed, kNan), "nan");
  EXPECT_EQ(text(writeFixed, -kInfinity), "-inf");
  EXPECT_EQ(text(writeFixed16, 0.1), "0.1000000000000000");
  EXPECT_EQ(text(writeFixed16, 1.0 / 3), "0.3333333333333333");
  EXPECT_EQ(text(writeFixed16, -1), "-1.0000000000000000");
  EXPECT_EQ(text(writeFixed16, kInfinity), "             inf");
  EXPECT_EQ(text(writeFixed16, -kInfinity), "            -inf");
  EXPECT_EQ(text(writeFixed16, -kNan), "             nan");
  const double lowest = std::numeric_limits<double>::lowest();
  EXPECT_EQ(text(writeFixed, lowest), printed("%f", lowest));
  EXPECT_EQ(text(writeFixed16, lowest), printed("%16.16f", lowest));
}

TEST(NumberText, StaysInsideTheRange) {
  const double value = -1.23457e-300;
  const std::size_t length = general(value).size();
  ASSERT_LT(length, kGeneralCapacity);
  for (const Writer writer : {writeGeneral, writeFixed, writeFixed16}) {
    for (const double number : {value, 0.5, 123456.0, kInfinity, kNan}) {
      const std::string whole = text(writer, number);
      for (std::size_t room = 0; room <= whole.size(); ++room) {
        std::array<char, 400> buffer;
        buffer.fill('#');
        const char* end = writer(buffer.data(), buffer.data() + room, number);
        EXPECT_EQ(static_cast<std::size_t>(end - buffer.data()), room < whole.size() ? 0 : whole.size());
        EXPECT_EQ(buffer[room], '#');
      }
    }
  }
}

// Any bit pattern but those that are not numbers, evenly; so every magnitude comes up.
class RandomNumbers {
 public:
  double nextDouble() {
    while (true) {
      const auto value = std::bit_cast<double>(std::uint64_t{engine_()});
      if (!std::isnan(value)) return value;
    }
  }
  float nextFloat() {
    while (true) {
      const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(engine_()));
      if (!std::isnan(value)) return value;
    }
  }
  // Of the magnitudes of models; some with few decimals, where ties come up.
  double nextCoordinate() {
    const double value = std::uniform_real_distribution<double>(-20000, 20000)(engine_);
    switch (engine_() % 3) {
      case 0:
        return value;
      case 1:
        return static_cast<float>(value);
      default:
        return std::round(value * 128) / 128;
    }
  }

 private:
  std::mt19937_64 engine_{20240607};
};

TEST(NumberText, IsTheTextOfTheCStandard) {
  RandomNumbers random;
  for (int i = 0; i < 200000; ++i) {
    for (const double value : {random.nextDouble(), double{random.nextFloat()}, random.nextCoordinate()}) {
      ASSERT_EQ(general(value), printed("%g", value));
    }
  }
  for (int i = 0; i < 20000; ++i) {
    for (const double value : {random.nextDouble(), double{random.nextFloat()}, random.nextCoordinate()}) {
      ASSERT_EQ(text(writeFixed, value), printed("%f", value));
      ASSERT_EQ(text(writeFixed16, value), printed("%16.16f", value));
    }
  }
}

TEST(NumberText, ReadsBackWithinItsDigits) {
  RandomNumbers random;
  for (int i = 0; i < 50000; ++i) {
    const double value = random.nextCoordinate();
    ASSERT_NEAR(std::strtod(general(value).c_str(), nullptr), value, std::abs(value) * 5.0000001e-6);
    ASSERT_NEAR(std::strtod(text(writeFixed16, value).c_str(), nullptr), value,
                0.5000001e-16 + std::abs(value) * 2.3e-16);
  }
}

std::string formatted(std::size_t size, const char* format, ...) {
  std::array<char, 4096> buffer;
  buffer.fill('#');
  std::va_list arguments;
  va_start(arguments, format);
  const std::size_t length = formatText(buffer.data(), size, format, arguments);
  va_end(arguments);
  if (size > 0) {
    EXPECT_EQ(buffer[length], '\0');
  }
  EXPECT_EQ(buffer[size], '#');
  return {buffer.data(), length};
}

template <typename... Arguments>
std::string printedBy(const char* format, Arguments... arguments) {
  std::array<char, 4096> buffer;
  std::snprintf(buffer.data(), buffer.size(), format, arguments...);
  return buffer.data();
}

// Both ways to print must agree; "nan" is left out, since its sign is printed by one of them only.
#define EXPECT_SAME_TEXT(...) EXPECT_EQ(formatted(4000, __VA_ARGS__), printedBy(__VA_ARGS__))

TEST(FormatText, IntegersLikePrintf) {
  EXPECT_SAME_TEXT("%d|%i|%5d|%-5d|%05d|%+d|% d|%.4d|%7.4d|%.0d", 12, -12, 12, 12, -12, 12, 12, -12, 12, 0);
  EXPECT_SAME_TEXT("%u|%o|%x|%X|%#o|%#x|%#X|%#x|%#.5o|%#o", 12U, 12U, 0xabcU, 0xabcU, 12U, 0xabcU, 0xabcU, 0U, 8U, 0U);
  EXPECT_SAME_TEXT("%08x|%-8x|%#8x|%#08x|%.0x", 0xffU, 0xffU, 0xffU, 0xffU, 0U);
  EXPECT_SAME_TEXT("%hhd|%hd|%hhu|%hu", 300, 70000, 300, 70000);
  EXPECT_SAME_TEXT("%ld|%lld|%lu|%llx", -5L, std::numeric_limits<long long>::min(), 5UL, ~0ULL);
  EXPECT_SAME_TEXT("%jd|%zu|%td|%zx", std::intmax_t{-7}, std::size_t{7}, std::ptrdiff_t{-7}, std::size_t{255});
  EXPECT_SAME_TEXT("%*d|%*d|%.*d|%.*d", 6, 42, -6, 42, 4, 42, -4, 42);
}

TEST(FormatText, FloatsLikePrintf) {
  for (const double value :
       {0.0, -0.0, 1.0, -1.5, 0.1, 123456.789, 1e-5, 1e100, -2.5e-300, 1e22, 99999.95, kInfinity, -kInfinity}) {
    EXPECT_SAME_TEXT("%f|%e|%g|%F|%E|%G|%a|%A", value, value, value, value, value, value, value, value);
    EXPECT_SAME_TEXT("%.0f|%#.0f|%.0e|%#.0e|%.0g|%#g|%#.3g|%.1a|%#.0a", value, value, value, value, value, value, value,
                     value, value);
    EXPECT_SAME_TEXT("%20f|%-20f|%020f|%+f|% f|%+020.3e|%020.10g|%030a", value, value, value, value, value, value,
                     value, value);
    EXPECT_SAME_TEXT("%.40f|%.1200f", value, value);
    EXPECT_SAME_TEXT("%.1200e|%.1200g", value, value);
    EXPECT_SAME_TEXT("%#.1200g", value);
  }
  EXPECT_EQ(formatted(100, "%f %5G %05f|%Lg", kNan, -kNan, kNan, 0.25L), "nan   NAN   nan|0.25");
}

TEST(FormatText, TextsAndPointers) {
  EXPECT_SAME_TEXT("%s|%8s|%-8s|%.2s|%c|%3c|%-3c|%%|%s", "text", "text", "text", "text", 'a', 'b', 'c', "");
  const std::array<char, 3> unterminated = {'a', 'b', 'c'};
  EXPECT_EQ(formatted(100, "%.3s", unterminated.data()), "abc");
  EXPECT_EQ(formatted(100, "%s", static_cast<const char*>(nullptr)), "(null)");
  EXPECT_SAME_TEXT("%p|%20p", static_cast<const void*>(unterminated.data()),
                   static_cast<const void*>(unterminated.data()));
}

TEST(FormatText, UnknownConversionsStandAsTheyAre) {
  EXPECT_EQ(formatted(100, "%d %k %d", 1, 2), "1 %k %d");
  EXPECT_EQ(formatted(100, "%d %", 1), "1 %");
  EXPECT_EQ(formatted(100, "%ls", L"wide"), "%ls");
}

TEST(FormatText, CutAndTerminated) {
  EXPECT_EQ(formatted(0, "text"), "");
  EXPECT_EQ(formatted(1, "text"), "");
  EXPECT_EQ(formatted(4, "text"), "tex");
  EXPECT_EQ(formatted(5, "text"), "text");
  EXPECT_EQ(formatted(5, "%d", 1234567), "1234");
  EXPECT_EQ(formatted(5, "%2000000000d|", 1), "    ");
  EXPECT_EQ(formatted(5, "ab%.2000000000f", 1.0), "ab1.");
  EXPECT_EQ(formatted(5, "%s%s", "abc", "def"), "abcd");
}

}  // namespace
}  // namespace rendara
