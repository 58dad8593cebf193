// Files that nobody else sees and that are gone with their last user, however the process ends.
#pragma once

#include <cstddef>
#include <memory>

#include "standin/renderer/descriptor.h"

namespace standin {

// In the system's folder for temporary files, for writing and reading. None when there is no place for it.
Descriptor makeNamelessFile();

// The first `size` bytes of the file, more than 0, for reading; null when the address space has no room.
std::shared_ptr<const void> mapFile(Descriptor file, std::size_t size);

}  // namespace standin
