// Composes the text of one printer call in a buffer of ScriptText::kTextLimit characters. What does not fit is cut.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "scene/number_text.h"
#include "scene/script_text.h"

namespace rendara {

class ScriptLine {
 public:
  explicit ScriptLine(char* buffer) : begin_(buffer), next_(buffer), end_(buffer + ScriptText::kTextLimit) {}

  ScriptLine& add(std::string_view text) {
    next_ = std::copy_n(text.data(), std::min(text.size(), room()), next_);
    return *this;
  }
  ScriptLine& fill(std::size_t count, char character) {
    next_ = std::fill_n(next_, std::min(count, room()), character);
    return *this;
  }
  ScriptLine& general(double value) {
    next_ = writeGeneral(next_, end_, value);
    return *this;
  }
  ScriptLine& fixed(double value) {
    next_ = writeFixed(next_, end_, value);
    return *this;
  }
  ScriptLine& fixed16(double value) {
    next_ = writeFixed16(next_, end_, value);
    return *this;
  }
  ScriptLine& integer(int value) {
    next_ = writeInteger(next_, end_, value);
    return *this;
  }
  ScriptLine& unsignedInteger(unsigned value) {
    next_ = writeUnsigned(next_, end_, value);
    return *this;
  }
  // Sixteen values in single precision, with a blank between two of them.
  ScriptLine& matrix(const double* values) {
    for (int i = 0; i < 16; ++i) {
      if (i > 0) add(" ");
      general(static_cast<float>(values[i]));
    }
    return *this;
  }

  std::size_t room() const { return static_cast<std::size_t>(end_ - next_); }
  std::string_view text() const { return {begin_, static_cast<std::size_t>(next_ - begin_)}; }
  void clear() { next_ = begin_; }

 private:
  char* begin_;
  char* next_;
  char* end_;
};

}  // namespace rendara
