// Files that are locked as long as the process that made them lives, so that others know whether it does.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

#include "standin/renderer/descriptor.h"

namespace standin {

// A new file, locked for whoever holds the descriptor. None when a reader took it for one that was left behind, and
// deletes it. Throws std::system_error.
Descriptor makeLockedFile(const std::filesystem::path& path);

// Gives a locked file its final name. False when a reader has deleted it. Throws std::system_error.
bool renameLockedFile(const std::filesystem::path& from, const std::filesystem::path& to);

// What stands in a file that is locked, up to the limit or somewhat more. A file that is not is deleted and none, as
// are folders, links, and what cannot be read.
std::optional<std::string> readLockedFile(const std::filesystem::path& path, std::size_t limit);

}  // namespace standin
