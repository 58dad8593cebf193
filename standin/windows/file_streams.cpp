// Files opened by wide names. Streams for writing note what the plug-in does not look at: that the file could not be
// opened, written or closed.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <system_error>
#include <utility>

#include "platform/windows_api.h"
#include "standin/windows/code_page.h"

namespace standin {
namespace {

std::mutex failureMutex;
std::optional<FileFailure> firstFailure;

void noteFailure(const std::string& path, int error) {
  const std::lock_guard lock(failureMutex);
  if (!firstFailure) {
    firstFailure = FileFailure{path, std::generic_category().message(error)};
  }
}

struct WrittenFile {
  int descriptor;
  std::string path;
};

ssize_t readFile(void* cookie, char* buffer, std::size_t size) {
  return read(static_cast<WrittenFile*>(cookie)->descriptor, buffer, size);
}

// The number of bytes written; fewer than asked for is an error to the stream.
ssize_t writeFile(void* cookie, const char* buffer, std::size_t size) {
  auto& file = *static_cast<WrittenFile*>(cookie);
  std::size_t done = 0;
  while (done < size) {
    const ssize_t written = write(file.descriptor, buffer + done, size - done);
    if (written < 0 && errno == EINTR) {
      continue;
    }
    if (written < 0) {
      const int error = errno;
      noteFailure(file.path, error);
      errno = error;
      break;
    }
    done += static_cast<std::size_t>(written);
  }
  return static_cast<ssize_t>(done);
}

int seekFile(void* cookie, off64_t* offset, int whence) {
  const off64_t position = lseek64(static_cast<WrittenFile*>(cookie)->descriptor, *offset, whence);
  if (position < 0) {
    return -1;
  }
  *offset = position;
  return 0;
}

int closeFile(void* cookie) {
  const std::unique_ptr<WrittenFile> file(static_cast<WrittenFile*>(cookie));
  if (close(file->descriptor) == 0) {
    return 0;
  }
  const int error = errno;
  noteFailure(file->path, error);
  errno = error;
  return -1;
}

struct OpenMode {
  int flags = 0;
  std::string text;  // what fopencookie takes
  bool valid = false;
};

// Text and binary are the same here; the other letters and the character set of Windows are let pass.
OpenMode openMode(const wchar_t* mode) {
  const std::wstring wide(mode);
  const std::wstring letters = wide.substr(0, wide.find(L','));
  const bool both = letters.find(L'+') != std::wstring::npos;
  OpenMode result;
  result.valid = !letters.empty();
  switch (letters.empty() ? L'\0' : letters[0]) {
    case L'r':
      result.flags = both ? O_RDWR : O_RDONLY;
      break;
    case L'w':
      result.flags = (both ? O_RDWR : O_WRONLY) | O_CREAT | O_TRUNC;
      break;
    case L'a':
      result.flags = (both ? O_RDWR : O_WRONLY) | O_CREAT | O_APPEND;
      break;
    default:
      result.valid = false;
  }
  if (result.valid) {
    result.text = std::string(1, static_cast<char>(letters[0])) + (both ? "+" : "");
  }
  return result;
}

std::FILE* openWritten(const std::string& path, const OpenMode& mode) {
  const int descriptor = open(path.c_str(), mode.flags | O_CLOEXEC, 0666);
  if (descriptor < 0) {
    const int error = errno;
    noteFailure(path, error);
    errno = error;
    return nullptr;
  }
  auto file = std::make_unique<WrittenFile>(WrittenFile{descriptor, path});
  const cookie_io_functions_t functions = {readFile, writeFile, seekFile, closeFile};
  std::FILE* stream = fopencookie(file.get(), mode.text.c_str(), functions);
  if (stream == nullptr) {
    close(descriptor);
    return nullptr;
  }
  static_cast<void>(file.release());  // the stream's own now; freed when it is closed
  return stream;
}

}  // namespace

std::optional<FileFailure> fileFailure() {
  const std::lock_guard lock(failureMutex);
  return firstFailure;
}

void forgetFileFailures() {
  const std::lock_guard lock(failureMutex);
  firstFailure.reset();
}

}  // namespace standin

extern "C" std::FILE* _wfopen(const wchar_t* path, const wchar_t* mode) {
  if (path == nullptr || mode == nullptr) {
    errno = EINVAL;
    return nullptr;
  }
  const standin::OpenMode open = standin::openMode(mode);
  if (!open.valid) {
    errno = EINVAL;
    return nullptr;
  }
  const std::string narrowPath = standin::utf8FromWide(path);
  return (open.flags & O_ACCMODE) == O_RDONLY ? std::fopen(narrowPath.c_str(), "re")
                                              : standin::openWritten(narrowPath, open);
}

extern "C" int _wfopen_s(std::FILE** stream, const wchar_t* path, const wchar_t* mode) {
  if (stream == nullptr) return EINVAL;
  *stream = _wfopen(path, mode);
  return *stream != nullptr ? 0 : errno;
}
