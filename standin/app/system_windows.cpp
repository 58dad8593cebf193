#include <fcntl.h>
#include <io.h>

#include <cerrno>
#include <random>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "platform/windows_api.h"
#include "standin/app/system.h"

namespace standin {
namespace {

namespace fs = std::filesystem;

constexpr int kMayWrite = 2;  // of _waccess

}  // namespace

fs::path programFile() {
  std::wstring name(MAX_PATH, L'\0');
  DWORD length = 0;
  // A name that does not fit is cut to the whole room.
  while ((length = GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size()))) == name.size()) {
    name.resize(name.size() * 2);
  }
  name.resize(length);
  return name;
}

fs::path makeTemporaryFolder() {
  std::random_device random;
  for (;;) {
    const fs::path folder = fs::temp_directory_path() / ("creo-standin-" + std::to_string(random()));
    if (fs::create_directory(folder)) return folder;
  }
}

int writeRefused(const fs::path& fileOrFolder) { return _waccess(fileOrFolder.c_str(), kMayWrite) == 0 ? 0 : errno; }

int makeNamelessBuffer() {
  std::error_code error;
  const fs::path folder = fs::temp_directory_path(error);
  const std::string name = "creo-standin-output-" + std::to_string(std::random_device{}());
  return _wopen((folder / name).c_str(), _O_CREAT | _O_EXCL | _O_RDWR | _O_BINARY | _O_TEMPORARY | _O_NOINHERIT, 0600);
}

int duplicate(int descriptor) { return _dup(descriptor); }

bool inputIsTerminal() { return _isatty(_fileno(stdin)) != 0; }

Library::Library(const fs::path& file) : handle_(LoadLibraryW(file.c_str())) {
  if (!handle_) throw std::runtime_error(std::system_category().message(static_cast<int>(GetLastError())));
}

Library::~Library() {
  if (handle_) FreeLibrary(static_cast<HMODULE>(handle_));
}

Library::Library(Library&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}

Library& Library::operator=(Library&& other) noexcept {
  std::swap(handle_, other.handle_);
  return *this;
}

Library::Address Library::find(const char* name) const {
  return reinterpret_cast<Address>(GetProcAddress(static_cast<HMODULE>(handle_), name));
}

}  // namespace standin
