#include "standin/renderer/script_bytes.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

namespace standin {
namespace {

Descriptor namelessFile() {
  std::error_code error;
  const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
  if (Descriptor file(open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600)); file) return file;
  // Not every file system knows files that never have a name.
  std::string pattern = (folder / "rendara-script-XXXXXX").string();
  Descriptor file(mkostemp(pattern.data(), O_CLOEXEC));
  if (file) unlink(pattern.c_str());
  return file;
}

}  // namespace

ScriptBytes ScriptBytes::ofText(std::string text) {
  auto held = std::make_shared<const std::string>(std::move(text));
  const std::string_view bytes = *held;
  return {std::move(held), bytes};
}

bool ScriptSpool::append(std::string_view bytes) {
  if (!file_) file_ = namelessFile();
  if (!file_) return false;
  while (!bytes.empty()) {
    const ssize_t written = write(file_.get(), bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
    size_ += static_cast<std::size_t>(written);
  }
  return true;
}

ScriptBytes ScriptSpool::take() {
  const std::size_t size = std::exchange(size_, 0);
  const Descriptor file = std::move(file_);
  if (size == 0) return ScriptBytes::ofText({});
  void* const data = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file.get(), 0);
  if (data == MAP_FAILED) return {};
  return {std::shared_ptr<const void>(data, [size](const void* mapped) { munmap(const_cast<void*>(mapped), size); }),
          {static_cast<const char*>(data), size}};
}

}  // namespace standin
