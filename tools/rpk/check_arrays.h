// Going through the numbers of an array once, packed or as text, without a copy of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "tools/rpk/check_reporter.h"
#include "tools/rpk/package_reader.h"

namespace rpk {

// Hands out the numbers of an array in order. Words of a text array that are no numbers end it.
class NumberCursor {
 public:
  explicit NumberCursor(const ArrayView& array) : rest_(array.bytes()), tag_(array.tag()) {}

  std::optional<double> next();
  // Where the number that was handed out last stands.
  const char* last() const { return last_; }

 private:
  std::optional<double> nextOfText();

  std::string_view rest_;
  const char* last_ = nullptr;
  char tag_;
};

struct ArrayFacts {
  std::size_t count = 0;       // single values
  std::size_t notFinite = 0;   // of them
  std::size_t notNumbers = 0;  // words of a text array; with `wholeNumbers` numbers that are no 32-bit integers, too
  const char* firstNotFinite = nullptr;
  const char* firstNotNumber = nullptr;
};

// Passes over the array once; pages are handed back in steps.
ArrayFacts scanArray(const ArrayView& array, bool wholeNumbers, const CheckReporter& reporter);

// Whether a number is one of the 32-bit integers.
bool isInteger(double value);

}  // namespace rpk
