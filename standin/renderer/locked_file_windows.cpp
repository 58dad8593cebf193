#include <fcntl.h>
#include <io.h>

#include <array>
#include <system_error>

#include "platform/windows_api.h"
#include "standin/renderer/locked_file.h"

namespace standin {
namespace {

namespace fs = std::filesystem;

// Others may read, rename and delete what one process has open, as elsewhere.
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

[[noreturn]] void fail(DWORD error, const fs::path& path) {
  throw std::system_error(static_cast<int>(error), std::system_category(), path.string());
}

// Takes the handle over.
Descriptor descriptorOf(HANDLE handle, int flags) {
  if (handle == INVALID_HANDLE_VALUE) return {};
  Descriptor file(_open_osfhandle(reinterpret_cast<intptr_t>(handle), flags));
  if (!file) CloseHandle(handle);
  return file;
}

// A lock keeps others from the bytes under it, so it lies far behind those of the text.
bool lock(const Descriptor& file, DWORD flags) {
  OVERLAPPED place{};
  place.OffsetHigh = 1;
  const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(file.get()));  // NOLINT(performance-no-int-to-ptr)
  return LockFileEx(handle, flags | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place) != 0;
}

}  // namespace

Descriptor makeLockedFile(const fs::path& path) {
  const HANDLE handle = CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, kShareAll, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
  const DWORD error = GetLastError();
  Descriptor file = descriptorOf(handle, _O_BINARY);
  if (!file) fail(error, path);
  return lock(file, LOCKFILE_EXCLUSIVE_LOCK) ? std::move(file) : Descriptor();
}

bool renameLockedFile(const fs::path& from, const fs::path& to) {
  if (MoveFileExW(from.c_str(), to.c_str(), 0) != 0) return true;
  const DWORD error = GetLastError();
  // Access is denied to a file that goes when the last that has it open closes it.
  if (error != ERROR_FILE_NOT_FOUND && error != ERROR_ACCESS_DENIED) fail(error, to);
  return false;
}

std::optional<std::string> readLockedFile(const fs::path& path, std::size_t limit) {
  const HANDLE handle =
      CreateFileW(path.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
  const Descriptor file = descriptorOf(handle, _O_RDONLY | _O_BINARY);
  if (!file || GetFileType(handle) != FILE_TYPE_DISK) return std::nullopt;
  if (lock(file, 0)) {
    DeleteFileW(path.c_str());
    return std::nullopt;
  }
  std::string text;
  std::array<char, 4096> bytes;
  int count = 0;
  while (text.size() <= limit && (count = _read(file.get(), bytes.data(), bytes.size())) > 0) {
    text.append(bytes.data(), static_cast<std::size_t>(count));
  }
  return text;
}

}  // namespace standin
