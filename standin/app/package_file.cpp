#include "standin/app/package_file.h"

#include <fmt/format.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

#include "standin/app/failure.h"
#include "standin/app/system.h"
#include "standin/windows/code_page.h"
#include "tools/rpk/mapped_file.h"

namespace standin {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void failWith(const fs::path& path, const std::string& what) {
  throw Failure(ExitCode::kOutput, fmt::format("{}: {}", path.string(), what));
}

[[noreturn]] void failWithSystemMessage(const fs::path& path, int error) {
  failWith(path, std::generic_category().message(error));
}

}  // namespace

PackageFile::PackageFile(fs::path path) : path_(std::move(path)), before_(state()) {}

std::optional<PackageFile::State> PackageFile::state() const {
  std::error_code error;
  if (!fs::is_regular_file(path_, error)) return std::nullopt;
  State result;
  result.time = fs::last_write_time(path_, error);
  result.size = fs::file_size(path_, error);
  return result;
}

void PackageFile::checkLength() const {
  const std::size_t length = wideFromUtf8(path_.string()).size();
  if (length > kMaxPathLength) {
    failWith(path_, fmt::format("the path has {} characters, the host takes {} at most", length, kMaxPathLength));
  }
}

void PackageFile::checkPlace() const {
  checkLength();
  std::error_code error;
  const fs::file_status status = fs::status(path_, error);
  if (fs::is_directory(status)) failWithSystemMessage(path_, EISDIR);
  if (!fs::exists(status)) {
    if (status.type() != fs::file_type::not_found) failWith(path_, error.message());
    if (path_.filename().empty()) failWithSystemMessage(path_, ENOENT);
  }
  // Of a new file its folder counts.
  const fs::path place = fs::exists(status) ? path_ : path_.parent_path();
  if (place != path_ && fs::is_regular_file(place, error)) failWithSystemMessage(path_, ENOTDIR);
  const int refused = writeRefused(place);
  if (refused != 0) failWithSystemMessage(path_, refused);
}

bool PackageFile::ordinary() const {
  std::error_code error;
  const fs::file_status status = fs::status(path_, error);
  return fs::is_regular_file(status) || !fs::exists(status);
}

bool PackageFile::changed() const {
  const std::optional<State> now = state();
  return now && !(before_ && *before_ == *now);
}

std::optional<rpk::PackageCounts> PackageFile::check(bool modelOpen) const {
  if (!ordinary()) return std::nullopt;
  checkLength();
  if (!changed()) failWith(path_, modelOpen ? "no package was written" : "no package was written: no model is open");
  std::string error;
  const auto file = rpk::MappedFile::open(path_.string(), &error);
  if (!file) failWith(path_, error);
  const rpk::PackageCounts counts = rpk::countPackage(file->bytes());
  if (counts.faultCount > 0) {
    const rpk::Fault& fault = counts.faults.front();
    failWith(path_, fmt::format("not a complete package: line {}: {}", fault.place.line, fault.what));
  }
  if (counts.groups == 0) failWith(path_, "not a complete package: it holds no scene");
  return counts;
}

}  // namespace standin
