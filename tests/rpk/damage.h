// Seeded damage to a text or package: the same at every run, on every platform.
#pragma once

#include <cstdint>
#include <random>
#include <string>

namespace rpk_test {

class Damager {
 public:
  explicit Damager(std::uint32_t seed) : random_(seed) {}

  // One to four damages, each of a kind of its own.
  std::string damage(std::string text) {
    for (std::uint32_t count = below(4) + 1; count > 0; --count) damageOnce(text);
    return text;
  }

 private:
  // The distributions of the standard library differ from one to the other.
  std::uint32_t below(std::size_t limit) {
    return limit == 0 ? 0 : static_cast<std::uint32_t>(random_() % static_cast<std::uint32_t>(limit));
  }

  void damageOnce(std::string& text) {
    const std::size_t at = below(text.size());
    const std::size_t length = below(below(4) == 0 ? 400 : 12) + 1;
    switch (below(7)) {
      case 0:
        if (!text.empty()) text[at] = static_cast<char>(static_cast<unsigned char>(text[at]) ^ (1U << below(8)));
        break;
      case 1:
        if (!text.empty()) text[at] = static_cast<char>(below(256));
        break;
      case 2:
        text.resize(at);
        break;
      case 3:
        text.erase(at, length);
        break;
      case 4:
        text.insert(at, std::string(text, below(text.size()), length));
        break;
      case 5:
        for (std::size_t i = 0; i < length; ++i) text.insert(at, 1, kLetters[below(sizeof(kLetters) - 1)]);
        break;
      default:
        changeCount(text, at);
        break;
    }
  }

  // The count of the next packed array, or one of its first values.
  void changeCount(std::string& text, std::size_t at) {
    constexpr std::uint32_t kCounts[] = {0, 1, 2, 3, 6, 0x7fffffff, 0x80000000, 0xffffffff, 0x7f800000, 0x7fc00000};
    const std::size_t head = text.find("\x01\x02\x03", at);
    const std::size_t field = head + 4 + std::size_t{4} * (below(2) == 0 ? 0 : below(12));
    if (head == std::string::npos || field + 4 > text.size()) return;
    const std::uint32_t count = kCounts[below(std::size(kCounts))];
    for (std::size_t i = 0; i < 4; ++i) text[field + i] = static_cast<char>(count >> (8 * i));
  }

  static constexpr char kLetters[] = "{}[]\",\n\r \t#!/xXbX0123456789.e-+infa\x01\x02\x03\x7f\x80";
  std::mt19937 random_;
};

}  // namespace rpk_test
