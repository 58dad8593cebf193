#include "tools/rpk/app/package_input.h"

#include <fmt/format.h>

#include "tools/rpk/app/failure.h"
#include "tools/rpk/package_reader.h"

namespace rpk {

bool isPackage(std::string_view bytes) {
  const std::size_t start = bytes.find_first_not_of(" \t\r\n");
  if (start == std::string_view::npos) return false;
  constexpr std::size_t kLongestHeader = 200;
  std::string_view line = bytes.substr(start, kLongestHeader);
  line = line.substr(0, line.find_first_of("\r\n"));
  return Comment{line, {}}.header();
}

MappedFile openPackage(const std::string& path) {
  std::string error;
  auto file = MappedFile::open(path, &error);
  if (!file) throw Failure(ExitCode::kUnreadable, fmt::format("{}: {}", path, error));
  if (!isPackage(file->bytes())) {
    throw Failure(ExitCode::kUnreadable, fmt::format("{}: not a package (it lacks the header //---...---)", path));
  }
  return std::move(*file);
}

}  // namespace rpk
