#include "tools/terminal/suggestion.h"

#include <algorithm>

namespace terminal {
namespace {

char lower(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

}  // namespace

std::size_t editDistance(std::string_view first, std::string_view second) {
  const std::size_t width = second.size() + 1;
  std::vector<std::size_t> beforeLast(width), last(width), row(width);
  for (std::size_t j = 0; j < width; ++j) last[j] = j;
  for (std::size_t i = 1; i <= first.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j < width; ++j) {
      const char a = lower(first[i - 1]), b = lower(second[j - 1]);
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (a == b ? 0U : 1U)});
      const bool swapped = i > 1 && j > 1 && a == lower(second[j - 2]) && b == lower(first[i - 2]);
      if (swapped) row[j] = std::min(row[j], beforeLast[j - 2] + 1);
    }
    std::swap(beforeLast, last);
    std::swap(last, row);
  }
  return last[second.size()];
}

std::string didYouMean(std::string_view word, const std::vector<std::string>& names) {
  // A third of the letters may differ; more is another word.
  const std::string* nearest = nullptr;
  std::size_t least = std::max<std::size_t>(1, word.size() / 3) + 1;
  for (const std::string& name : names) {
    const std::size_t distance = editDistance(word, name);
    if (distance < least) {
      least = distance;
      nearest = &name;
    }
  }
  return nearest ? "; did you mean " + *nearest + "?" : std::string();
}

}  // namespace terminal
