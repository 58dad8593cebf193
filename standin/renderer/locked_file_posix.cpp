#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <system_error>

#include "standin/renderer/locked_file.h"

namespace standin {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const fs::path& path) { throw std::system_error(errno, std::generic_category(), path.string()); }

}  // namespace

Descriptor makeLockedFile(const fs::path& path) {
  Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!file) fail(path);
  if (flock(file.get(), LOCK_EX | LOCK_NB) == 0) return file;
  if (errno != EWOULDBLOCK) fail(path);
  return {};
}

bool renameLockedFile(const fs::path& from, const fs::path& to) {
  if (rename(from.c_str(), to.c_str()) == 0) return true;
  if (errno != ENOENT) fail(to);
  return false;
}

std::optional<std::string> readLockedFile(const fs::path& path, std::size_t limit) {
  // Neither a link nor a pipe, which would have the reader wait.
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  struct stat status {};
  if (!file || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  if (flock(file.get(), LOCK_SH | LOCK_NB) == 0) {
    unlink(path.c_str());
    return std::nullopt;
  }
  std::string text;
  std::array<char, 4096> bytes;
  ssize_t count = 0;
  while (text.size() <= limit && (count = read(file.get(), bytes.data(), bytes.size())) > 0) {
    text.append(bytes.data(), static_cast<std::size_t>(count));
  }
  return text;
}

}  // namespace standin
