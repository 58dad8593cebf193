#include "tools/rpk/app/output_file.h"

#include <fmt/format.h>

#include <cerrno>
#include <system_error>

#include "tools/rpk/app/failure.h"
#include "tools/rpk/app/new_file.h"

namespace rpk {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void failWith(const std::string& path, int error) {
  throw Failure(ExitCode::kOutput,
                fmt::format("{}: {}", path, std::generic_category().message(error != 0 ? error : EIO)));
}

// A new file of its own beside the place; nobody else's is touched.
fs::path makeBeside(const fs::path& place, const char* kind, const std::string& path) {
  for (int number = 0;; ++number) {
    fs::path candidate = place;
    candidate += fmt::format(".{}-{}{}", processNumber(), number, kind);
    const int error = makeNewFile(candidate);
    if (error == 0) return candidate;
    if (error != EEXIST) failWith(path, error);
  }
}

// Where a link leads; a path that cannot be followed stays, and opening it says why.
fs::path placeOf(const std::string& path) {
  std::error_code error;
  const fs::path followed = fs::canonical(path, error);
  return error ? fs::path(path) : followed;
}

}  // namespace

OutputFile::OutputFile(const std::string& path) : path_(path), place_(placeOf(path)) {
  std::error_code ignored;
  const fs::file_status status = fs::status(place_, ignored);
  if (fs::is_directory(status)) fail(EISDIR);
  errno = 0;
  if (fs::exists(status) && !fs::is_regular_file(status)) {
    stream_.open(place_, std::ios::out | std::ios::binary);
  } else {
    const int refused = fs::exists(status) ? writingRefused(place_) : 0;
    if (refused != 0) fail(refused);
    temporary_ = makeBeside(place_, ".part", path_);
    removed_.emplace(temporary_, terminal::RemovedOnSignal::Kind::kFile);
    stream_.open(temporary_, std::ios::in | std::ios::out | std::ios::binary | std::ios::trunc);
  }
  if (!stream_) fail(errno);
}

OutputFile::~OutputFile() {
  if (temporary_.empty()) return;
  stream_.close();
  std::error_code ignored;
  fs::remove(temporary_, ignored);
}

void OutputFile::finish() {
  errno = 0;
  stream_.close();
  if (!stream_) fail(errno);
  if (temporary_.empty()) return;
  std::error_code error;
  fs::rename(temporary_, place_, error);
  if (error) fail(error.value());
  temporary_.clear();
  removed_.reset();
}

void OutputFile::fail(int error) const { failWith(path_, error); }

ScratchFile::ScratchFile(const std::string& beside) {
  std::error_code ignored;
  fs::path place = placeOf(beside);
  // Nothing can stand beside a device.
  if (fs::exists(place, ignored) && !fs::is_regular_file(place, ignored)) {
    place = fs::temp_directory_path(ignored) / "rpk";
  }
  path_ = makeBeside(place, ".scratch", beside);
  removed_.emplace(path_, terminal::RemovedOnSignal::Kind::kFile);
  stream_.open(path_, std::ios::in | std::ios::out | std::ios::binary | std::ios::trunc);
  if (!stream_) failWith(beside, errno);
}

ScratchFile::~ScratchFile() {
  stream_.close();
  std::error_code ignored;
  fs::remove(path_, ignored);
}

}  // namespace rpk
