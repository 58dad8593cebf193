#include "standin/app/plugin_host.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <memory>
#include <string>

#include "standin/app/failure.h"

namespace standin {
namespace {

constexpr const char* kInitialize = "user_initialize_plus";
constexpr const char* kTerminate = "user_terminate_plus";

struct LibraryCloser {
  void operator()(void* library) const { dlclose(library); }
};

// The loader's message begins with the file's name more often than not; ours always does.
std::string loaderMessage(const std::string& file) {
  const char* text = dlerror();
  std::string message = text ? text : "cannot be loaded";
  const std::string prefix = file + ": ";
  if (message.rfind(prefix, 0) == 0) message.erase(0, prefix.size());
  return message;
}

template <typename Function>
Function entry(void* library, const std::string& file, const char* name) {
  void* address = dlsym(library, name);
  if (!address) {
    throw Failure(ExitCode::kOutput, fmt::format("{}: is not a plug-in: it has no entry {}", file, name));
  }
  return reinterpret_cast<Function>(address);
}

}  // namespace

PluginHost::~PluginHost() { close(); }

void PluginHost::load() {
  if (library_) return;
  std::error_code error;
  const std::string name = std::filesystem::absolute(file_, error).string();
  std::unique_ptr<void, LibraryCloser> library(dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL));
  if (!library) {
    throw Failure(ExitCode::kOutput, fmt::format("{}: the plug-in cannot be loaded: {}", name, loaderMessage(name)));
  }
  const auto initialize = entry<int (*)()>(library.get(), name, kInitialize);
  terminate_ = entry<void (*)()>(library.get(), name, kTerminate);
  library_ = library.release();
  const int result = initialize();
  if (result != 0) {
    close();
    throw Failure(ExitCode::kOutput,
                  fmt::format("{}: the plug-in refused to start: {} gave {}", name, kInitialize, result));
  }
}

void PluginHost::unload(Session& session) {
  close();
  session.commands().clear();
}

void PluginHost::close() {
  if (!library_) return;
  terminate_();
  dlclose(library_);
  library_ = nullptr;
  terminate_ = nullptr;
}

}  // namespace standin
