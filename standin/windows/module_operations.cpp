// Loading of modules. A bare name is looked for in the program's folder and then where the system's loader looks; a
// relative path with folders in the program's folder only. Neither ever means the working folder.
#include <dlfcn.h>
#include <link.h>

#include <bit>
#include <filesystem>
#include <map>
#include <mutex>
#include <string>
#include <system_error>

#include "platform/windows_api.h"
#include "standin/windows/code_page.h"
#include "standin/windows/handle_table.h"
#include "standin/windows/modules.h"
#include "standin/windows/native_path.h"

namespace standin {
namespace {

struct LoadedModule {
  std::string path;  // as it was asked for
  unsigned loads = 0;
};

class ModuleTable {
 public:
  static ModuleTable& instance() {
    static ModuleTable& table = *new ModuleTable;  // modules may free others when the process ends
    return table;
  }

  void add(void* module, const std::string& path) {
    const std::lock_guard lock(mutex_);
    LoadedModule& entry = modules_.try_emplace(module, LoadedModule{path, 0}).first->second;
    ++entry.loads;
  }

  bool contains(void* module) {
    const std::lock_guard lock(mutex_);
    return modules_.count(module) != 0;
  }

  bool remove(void* module) {
    const std::lock_guard lock(mutex_);
    const auto found = modules_.find(module);
    if (found == modules_.end()) {
      return false;
    }
    if (--found->second.loads == 0) {
      modules_.erase(found);
    }
    return true;
  }

  std::vector<std::string> lines() {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> lines;
    for (const auto& [module, entry] : modules_) {
      lines.insert(lines.end(), entry.loads, "the module " + entry.path);
    }
    return lines;
  }

 private:
  std::mutex mutex_;
  std::map<void*, LoadedModule> modules_;
};

std::filesystem::path programFolder() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
}

void* openModule(const std::string& file) {
  constexpr int kFlags = RTLD_NOW | RTLD_LOCAL;
  if (file.empty()) {
    return nullptr;  // would be the program itself
  }
  if (file.front() == '/') {
    return dlopen(file.c_str(), kFlags);
  }
  const std::filesystem::path besideProgram = programFolder() / file;
  std::error_code error;
  // As on Windows, one that is there and cannot be loaded ends the search.
  if (file.find('/') != std::string::npos || std::filesystem::exists(besideProgram, error)) {
    return dlopen(besideProgram.c_str(), kFlags);
  }
  return dlopen(file.c_str(), kFlags);
}

// The symbol when the module itself has it; dlsym would also take those of the libraries that it needs.
void* ownSymbol(void* module, const char* name) {
  void* symbol = dlsym(module, name);
  const link_map* asked = nullptr;
  link_map* owner = nullptr;
  Dl_info info = {};
  const bool isOwn = symbol != nullptr && dlinfo(module, RTLD_DI_LINKMAP, &asked) == 0 &&
                     dladdr1(symbol, &info, reinterpret_cast<void**>(&owner), RTLD_DL_LINKMAP) != 0 && asked == owner;
  return isOwn ? symbol : nullptr;
}

}  // namespace

std::vector<std::string> loadedModules() { return ModuleTable::instance().lines(); }

}  // namespace standin

extern "C" {

HMODULE LoadLibraryW(const wchar_t* file) {
  using namespace standin;
  return guarded(HMODULE{}, [&]() -> HMODULE {
    if (file == nullptr) {
      HandleTable::instance().noteMisuse("LoadLibraryW", "the name of the module is null");
      return nullptr;
    }
    const std::string path = nativePath(file);
    void* module = openModule(path);
    if (module == nullptr) {
      return nullptr;
    }
    try {
      ModuleTable::instance().add(module, path);
    } catch (...) {
      dlclose(module);
      throw;
    }
    return static_cast<HMODULE>(module);
  });
}

FARPROC GetProcAddress(HMODULE module, const char* name) {
  using namespace standin;
  return guarded(FARPROC{}, [&]() -> FARPROC {
    if (!ModuleTable::instance().contains(module)) {
      HandleTable::instance().noteMisuse("GetProcAddress", "the module is not loaded");
      return nullptr;
    }
    if (std::bit_cast<std::uintptr_t>(name) <= 0xFFFF) {
      HandleTable::instance().noteMisuse("GetProcAddress", "entries are found by name only");
      return nullptr;
    }
    return std::bit_cast<FARPROC>(ownSymbol(module, name));
  });
}

BOOL FreeLibrary(HMODULE module) {
  using namespace standin;
  return guarded(BOOL{0}, [&]() -> BOOL {
    if (!ModuleTable::instance().remove(module)) {
      HandleTable::instance().noteMisuse("FreeLibrary", "the module is not loaded");
      return 0;
    }
    return dlclose(module) == 0 ? 1 : 0;
  });
}
}
