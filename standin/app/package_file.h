// The file that a package is to be written to: whether it can be, and whether it was.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include "tools/rpk/package_counts.h"

namespace standin {

// The host's paths hold 260 characters with the terminator.
inline constexpr std::size_t kMaxPathLength = 259;

class PackageFile {
 public:
  // Remembers the state of the file before the command runs.
  explicit PackageFile(std::filesystem::path path);

  // Throws Failure when it is plain beforehand that no package can be written there: a path too long for the host, a
  // folder, a folder that does not exist, no permission.
  void checkPlace() const;
  // What the package holds. Throws Failure when the command has not written a complete one there. Devices and pipes
  // are taken as they are, without counts.
  std::optional<rpk::PackageCounts> check(bool modelOpen) const;
  // True when the file is an ordinary one that was made or changed since.
  bool changed() const;
  // True when the path leads, or could lead, to an ordinary file.
  bool ordinary() const;
  const std::filesystem::path& path() const { return path_; }

 private:
  struct State {
    std::filesystem::file_time_type time;
    std::uintmax_t size;
    bool operator==(const State& other) const { return time == other.time && size == other.size; }
  };
  std::optional<State> state() const;
  void checkLength() const;

  std::filesystem::path path_;
  std::optional<State> before_;
};

}  // namespace standin
