#include "settings/number_reading.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

namespace rendara {
namespace {

// The C library is the judge; it runs in the C locale here.
TEST(NumberReading, DoublesReadAsTheCLibraryReadsThem) {
  for (const std::string text : {"0.2",
                                 "  \t\n0.25abc",
                                 "+1.5",
                                 "-0.0",
                                 "1e3",
                                 "1e",
                                 "1e+",
                                 ".5",
                                 "5.",
                                 ".",
                                 "",
                                 "abc",
                                 "--1",
                                 "+-1",
                                 "0x1.8p1",
                                 "0x",
                                 "0xg",
                                 "0x.8",
                                 "inf",
                                 "-Infinity",
                                 "1e400",
                                 "-1e400",
                                 "1e-400",
                                 "0.00000000000000000001e-320",
                                 "100000000000000000000e300",
                                 "1,5",
                                 "\v\f\r7",
                                 "0x1p99999",
                                 "0x0.0001p-99999",
                                 "1e99999999999999999999",
                                 "1e-99999999999999999999",
                                 "0.1e1_"}) {
    const double expected = std::atof(text.c_str());
    const double actual = readDouble(text);
    EXPECT_EQ(expected, actual) << '"' << text << '"';
    EXPECT_EQ(std::signbit(expected), std::signbit(actual)) << '"' << text << '"';
  }
  EXPECT_TRUE(std::isnan(readDouble("nan")));
}

TEST(NumberReading, RandomDoublesComeBack) {
  std::mt19937_64 random(7);
  for (int i = 0; i < 2000; ++i) {
    const double value = std::ldexp(static_cast<double>(random()) - 9e18, static_cast<int>(random() % 2000) - 1000);
    char text[64];
    std::snprintf(text, sizeof text, "%.17g;", value);
    EXPECT_EQ(value, readDouble(text)) << text;
  }
}

TEST(NumberReading, IntegersReadAsTheCLibraryReadsThem) {
  for (const std::string text : {"7", " -3x", "+12", "", "x", "-", "+-2", "007", "1.9", "2147483647", "-2147483648"}) {
    EXPECT_EQ(std::atoi(text.c_str()), readInt(text)) << '"' << text << '"';
  }
  EXPECT_EQ(std::numeric_limits<int>::max(), readInt("99999999999999999999"));
  EXPECT_EQ(std::numeric_limits<int>::min(), readInt("-3000000000"));
}

}  // namespace
}  // namespace rendara
