#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <sys/stat.h>

#include <cerrno>

#include "tools/rpk/app/new_file.h"

namespace rpk {
namespace {

constexpr int kMayWrite = 2;  // of _waccess

}  // namespace

int makeNewFile(const std::filesystem::path& path) {
  const int file = _wopen(path.c_str(), _O_CREAT | _O_EXCL | _O_WRONLY | _O_NOINHERIT, _S_IREAD | _S_IWRITE);
  if (file < 0) return errno;
  _close(file);
  return 0;
}

int writingRefused(const std::filesystem::path& file) { return _waccess(file.c_str(), kMayWrite) == 0 ? 0 : errno; }

int processNumber() { return _getpid(); }

}  // namespace rpk
