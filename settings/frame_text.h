// The text of a frame file, token by token and number by number, as `scanf` would take them in the C locale, but in
// blocks of its own.
#pragma once

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <span>
#include <string_view>
#include <vector>

namespace rendara {

inline bool isSpace(char letter) { return letter == ' ' || (letter >= '\t' && letter <= '\r'); }

class FrameText {
 public:
  // Reads from where the file stands; the file is the caller's.
  explicit FrameText(std::FILE* file);

  // Takes tokens ("%255s": longer ones are several) until one that equals the word has been taken; false when the text
  // ends first. As with C strings, a token ends at a NUL for the comparison.
  bool skipPast(std::string_view word);

  // What has been taken since the beginning of the last token, or nothing where that is no longer at hand. Valid until
  // something else is taken.
  std::string_view sinceToken() const {
    return token_ == nullptr ? std::string_view() : std::string_view(token_, static_cast<std::size_t>(at_ - token_));
  }

  // Takes white space, and this text if it stands there with white space behind it.
  bool skipText(std::string_view text) {
    const auto size = static_cast<std::ptrdiff_t>(text.size());
    skipSpace();
    gather(size + 1);
    if (end_ - at_ <= size || at_[size] > ' ' || std::memcmp(at_, text.data(), text.size()) != 0 ||
        !isSpace(at_[size])) {
      return false;
    }
    at_ += size;
    return true;
  }

  // "%d"; a value out of range is brought to the nearest. False when there is no number or it has more than 4096
  // characters; nothing can be read from then on that has a meaning.
  bool readInt(int& value);

  // "%f", each to the nearest single-precision value. False as above, unless all of them can be read.
  bool readFloats(std::span<float> values);

  bool skipOpening();  // " (": after white space; false when something else stands there
  void skipClosing();  // ")", if it stands right here

 private:
  // Mostly there is one blank.
  void skipSpace() {
    at_ += *at_ == ' ' ? 1 : 0;
    if (*at_ <= ' ') {
      skipMoreSpace();
    }
  }
  void skipMoreSpace();
  const char* endOfOther(float& value);
  void fill();  // reads on until the block is full or the file ends
  // Afterwards what is left of the text, or its next `size` characters, lies in one piece.
  void gather(std::ptrdiff_t size) {
    if (end_ - at_ < size && !atEnd_) {
      fill();
    }
  }

  std::FILE* file_;
  std::vector<char> block_;
  const char* at_;
  const char* end_;              // a NUL stands there
  const char* token_ = nullptr;  // where the last one began, while it is in the block
  bool atEnd_ = false;
};

}  // namespace rendara
