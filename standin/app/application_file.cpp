#include "standin/app/application_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <fstream>
#include <map>
#include <string>
#include <system_error>

#include "standin/app/failure.h"

namespace standin {
namespace {

namespace fs = std::filesystem;

constexpr const char* kBlanks = " \t\r";

[[noreturn]] void failOn(const fs::path& file, const std::string& what) {
  throw Failure(ExitCode::kUsage, fmt::format("{}: {}", file.string(), what));
}

std::string lowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return text;
}

// What stands before the first blanks and after them.
std::pair<std::string, std::string> split(const std::string& line) {
  const std::size_t begin = line.find_first_not_of(kBlanks);
  if (begin == std::string::npos) return {};
  const std::size_t end = std::min(line.find_first_of(kBlanks, begin), line.size());
  const std::size_t value = line.find_first_not_of(kBlanks, end);
  if (value == std::string::npos) return {line.substr(begin, end - begin), {}};
  return {line.substr(begin, end - begin), line.substr(value, line.find_last_not_of(kBlanks) + 1 - value)};
}

using EntryFields = std::map<std::string, std::string>;

EntryFields readEntry(const fs::path& file) {
  std::ifstream lines(file);
  if (!lines) failOn(file, std::generic_category().message(errno));
  EntryFields fields;
  std::string line;
  for (int number = 1; std::getline(lines, line); ++number) {
    const auto [name, value] = split(line);
    if (name.empty() || name.front() == '!') continue;
    const std::string key = lowerCase(name);
    if (key == "end") return fields;
    if (value.empty()) failOn(file, fmt::format("line {}: \"{}\" has no value", number, name));
    fields[key] = value;
  }
  failOn(file, "the entry has no \"end\"");
}

const std::string& field(const fs::path& file, const EntryFields& fields, const std::string& key) {
  const auto found = fields.find(key);
  if (found == fields.end()) failOn(file, fmt::format("there is no \"{}\"", key));
  return found->second;
}

fs::path pathFrom(const fs::path& file, std::string text) {
  std::replace(text.begin(), text.end(), '\\', '/');
  return (fs::absolute(file).parent_path() / text).lexically_normal();
}

}  // namespace

Application readApplicationFile(const fs::path& file) {
  const EntryFields fields = readEntry(file);
  field(file, fields, "name");
  if (lowerCase(field(file, fields, "startup")) != "dll") {
    failOn(file, fmt::format("\"startup\" is \"{}\", and only a dll can be loaded here", fields.at("startup")));
  }
  return {pathFrom(file, field(file, fields, "exec_file")), pathFrom(file, field(file, fields, "text_dir")) / "text"};
}

}  // namespace standin
