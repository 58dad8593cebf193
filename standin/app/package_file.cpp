#include "standin/app/package_file.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

#include "standin/app/failure.h"
#include "standin/windows/code_page.h"
#include "tools/rpk/mapped_file.h"

namespace standin {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const fs::path& path, const std::string& what) {
  throw Failure(ExitCode::kOutput, fmt::format("{}: {}", path.string(), what));
}

[[noreturn]] void failWithSystemMessage(const fs::path& path, int error) {
  fail(path, std::generic_category().message(error));
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
    fail(path_, fmt::format("the path has {} characters, the host takes {} at most", length, kMaxPathLength));
  }
}

void PackageFile::checkPlace() const {
  checkLength();
  if (access(path_.c_str(), F_OK) == 0) {
    std::error_code error;
    if (fs::is_directory(path_, error)) failWithSystemMessage(path_, EISDIR);
    if (access(path_.c_str(), W_OK) != 0) failWithSystemMessage(path_, errno);
    return;
  }
  if (errno != ENOENT) failWithSystemMessage(path_, errno);
  // A new file: what counts is its folder.
  if (path_.filename().empty()) failWithSystemMessage(path_, ENOENT);
  if (access(path_.parent_path().c_str(), W_OK | X_OK) != 0) failWithSystemMessage(path_, errno);
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
  if (!changed()) fail(path_, modelOpen ? "no package was written" : "no package was written: no model is open");
  std::string error;
  const auto file = rpk::MappedFile::open(path_.string(), &error);
  if (!file) fail(path_, error);
  const rpk::PackageCounts counts = rpk::countPackage(file->bytes());
  if (counts.faultCount > 0) {
    const rpk::Fault& fault = counts.faults.front();
    fail(path_, fmt::format("not a complete package: line {}: {}", fault.place.line, fault.what));
  }
  if (counts.groups == 0) fail(path_, "not a complete package: it holds no scene");
  return counts;
}

}  // namespace standin
