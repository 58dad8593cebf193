#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "tools/rpk/app/new_file.h"

namespace rpk {

int makeNewFile(const std::filesystem::path& path) {
  const int file = ::open(path.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
  if (file < 0) return errno;
  ::close(file);
  return 0;
}

int writingRefused(const std::filesystem::path& file) { return access(file.c_str(), W_OK) == 0 ? 0 : errno; }

int processNumber() { return getpid(); }

}  // namespace rpk
