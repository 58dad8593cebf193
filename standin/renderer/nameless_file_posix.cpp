#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

#include "standin/renderer/nameless_file.h"

namespace standin {

Descriptor makeNamelessFile() {
  std::error_code error;
  const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
  if (Descriptor file(open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600)); file) return file;
  // Not every file system knows files that never have a name.
  std::string pattern = (folder / "rendara-script-XXXXXX").string();
  Descriptor file(mkostemp(pattern.data(), O_CLOEXEC));
  if (file) unlink(pattern.c_str());
  return file;
}

std::shared_ptr<const void> mapFile(Descriptor file, std::size_t size) {
  void* const data = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file.get(), 0);
  if (data == MAP_FAILED) return nullptr;
  return {data, [size](const void* mapped) { munmap(const_cast<void*>(mapped), size); }};
}

}  // namespace standin
