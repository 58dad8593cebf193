#include "standin/app/script_line.h"

#include <fmt/format.h>

#include "standin/app/failure.h"

namespace standin {
namespace {

bool isBlank(char character) { return character == ' ' || character == '\t' || character == '\r'; }

// Appends the quoted text whose opening quote stands at `at`; gives the place behind its closing quote.
std::size_t appendQuoted(std::string_view line, std::size_t at, std::string& word) {
  const char quote = line[at];
  for (std::size_t i = at + 1; i < line.size(); ++i) {
    if (line[i] == quote) return i + 1;
    const bool escapes = quote == '"' && line[i] == '\\' && i + 1 < line.size();
    if (escapes && (line[i + 1] == '"' || line[i + 1] == '\\')) ++i;
    word += line[i];
  }
  throw Failure(ExitCode::kUsage, fmt::format("the quote {} is not closed", quote));
}

}  // namespace

std::vector<std::string> splitScriptLine(std::string_view line) {
  std::vector<std::string> words;
  std::size_t at = 0;
  while (true) {
    while (at < line.size() && isBlank(line[at])) ++at;
    if (at == line.size() || line[at] == '#') return words;
    std::string word;
    while (at < line.size() && !isBlank(line[at])) {
      if (line[at] == '"' || line[at] == '\'') {
        at = appendQuoted(line, at, word);
      } else {
        word += line[at++];
      }
    }
    words.push_back(std::move(word));
  }
}

}  // namespace standin
