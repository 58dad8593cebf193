#include "standin/app/scratch_directory.h"

#include <fmt/format.h>

#include <string>
#include <system_error>

#include "standin/app/failure.h"
#include "standin/app/settings_file.h"
#include "standin/app/system.h"

namespace standin {
namespace {

std::filesystem::path makeFolder() {
  try {
    return makeTemporaryFolder();
  } catch (const std::system_error& error) {
    throw Failure(ExitCode::kOutput,
                  fmt::format("no folder for temporary files can be made: {}", error.code().message()));
  }
}

}  // namespace

ScratchDirectory::ScratchDirectory()
    : origin_(std::filesystem::current_path()),
      path_(makeFolder()),
      removedFolder_(path_, terminal::RemovedOnSignal::Kind::kFolder),
      removedSettings_(path_ / SettingsFile::kName, terminal::RemovedOnSignal::Kind::kFile) {
  std::error_code error;
  std::filesystem::current_path(path_, error);
  if (error) {
    std::filesystem::remove(path_, error);
    throw Failure(ExitCode::kOutput, fmt::format("{}: cannot be entered", path_.string()));
  }
}

ScratchDirectory::~ScratchDirectory() {
  std::error_code ignored;
  std::filesystem::current_path(origin_, ignored);
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace standin
