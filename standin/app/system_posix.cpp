#include <dlfcn.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "standin/app/system.h"

namespace standin {

namespace fs = std::filesystem;

fs::path programFile() { return fs::read_symlink("/proc/self/exe"); }

fs::path makeTemporaryFolder() {
  std::string pattern = (fs::temp_directory_path() / "creo-standin-XXXXXX").string();
  if (!mkdtemp(pattern.data())) throw std::system_error(errno, std::generic_category());
  return pattern;
}

int writeRefused(const fs::path& fileOrFolder) {
  std::error_code ignored;
  const int wanted = fs::is_directory(fileOrFolder, ignored) ? W_OK | X_OK : W_OK;
  return access(fileOrFolder.c_str(), wanted) == 0 ? 0 : errno;
}

int makeNamelessBuffer() { return memfd_create("output", MFD_CLOEXEC); }

int duplicate(int descriptor) { return fcntl(descriptor, F_DUPFD_CLOEXEC, 0); }

bool inputIsTerminal() { return isatty(STDIN_FILENO) != 0; }

Library::Library(const fs::path& file) : handle_(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (handle_) return;
  // The loader's message begins with the file's name more often than not.
  const char* text = dlerror();
  std::string message = text ? text : "cannot be loaded";
  const std::string prefix = file.string() + ": ";
  if (message.starts_with(prefix)) message.erase(0, prefix.size());
  throw std::runtime_error(message);
}

Library::~Library() {
  if (handle_) dlclose(handle_);
}

Library::Library(Library&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}

Library& Library::operator=(Library&& other) noexcept {
  std::swap(handle_, other.handle_);
  return *this;
}

Library::Address Library::find(const char* name) const { return reinterpret_cast<Address>(dlsym(handle_, name)); }

}  // namespace standin
