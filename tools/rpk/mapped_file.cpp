#include "tools/rpk/mapped_file.h"

#include <utility>

#ifdef _WIN32
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <vector>
#else
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#endif

namespace rpk {

#ifdef _WIN32

std::optional<MappedFile> MappedFile::open(const std::string& path, std::string* error) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    if (error) *error = std::strerror(errno);
    return std::nullopt;
  }
  const std::vector<char> content{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (content.empty()) return MappedFile(nullptr, 0);
  auto copy = std::make_unique<char[]>(content.size());
  std::memcpy(copy.get(), content.data(), content.size());
  return MappedFile(copy.release(), content.size());
}

void MappedFile::release() noexcept { delete[] data_; }

void MappedFile::drop(std::string_view) const noexcept {}

#else

namespace {

std::optional<MappedFile> failed(std::string* error, int code) {
  if (error) *error = std::strerror(code);
  return std::nullopt;
}

}  // namespace

std::optional<MappedFile> MappedFile::open(const std::string& path, std::string* error) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return failed(error, errno);
  struct stat status = {};
  if (::fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) {
    const int code = S_ISDIR(status.st_mode) ? EISDIR : (errno != 0 ? errno : EINVAL);
    ::close(file);
    return failed(error, code);
  }
  const auto size = static_cast<std::size_t>(status.st_size);
  if (size == 0) {
    ::close(file);
    return MappedFile(nullptr, 0);
  }
  void* address = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file, 0);
  const int code = errno;
  ::close(file);
  if (address == MAP_FAILED) return failed(error, code);
  // A reader goes through the file once, front to back.
  ::madvise(address, size, MADV_SEQUENTIAL);
  return MappedFile(static_cast<const char*>(address), size);
}

void MappedFile::release() noexcept {
  if (data_) ::munmap(const_cast<char*>(data_), size_);
}

// Only whole pages within the range: its neighbours may be in use.
void MappedFile::drop(std::string_view range) const noexcept {
  static const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  const auto from = (static_cast<std::size_t>(range.data() - data_) + page - 1) / page * page;
  const auto to = static_cast<std::size_t>(range.data() + range.size() - data_) / page * page;
  if (from < to) ::madvise(const_cast<char*>(data_) + from, to - from, MADV_DONTNEED);
}

#endif

MappedFile::MappedFile(MappedFile&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)) {}

MappedFile& MappedFile::operator=(MappedFile&& other) noexcept {
  if (this != &other) {
    release();
    data_ = std::exchange(other.data_, nullptr);
    size_ = std::exchange(other.size_, 0);
  }
  return *this;
}

MappedFile::~MappedFile() { release(); }

}  // namespace rpk
