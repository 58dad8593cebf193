#include "standin/app/plugin_host.h"

#include <fmt/format.h>

#include <stdexcept>
#include <string>
#include <utility>

#include "standin/app/failure.h"

namespace standin {
namespace {

constexpr const char* kInitialize = "user_initialize_plus";
constexpr const char* kTerminate = "user_terminate_plus";

template <typename Function>
Function entry(const Library& library, const std::string& file, const char* name) {
  const Library::Address address = library.find(name);
  if (!address) {
    throw Failure(ExitCode::kOutput, fmt::format("{}: is not a plug-in: it has no entry {}", file, name));
  }
  return reinterpret_cast<Function>(address);
}

}  // namespace

PluginHost::~PluginHost() { close(); }

void PluginHost::load() {
  if (library_.loaded()) return;
  std::error_code error;
  const std::filesystem::path file = std::filesystem::absolute(file_, error);
  const std::string name = file.string();
  Library library;
  try {
    library = Library(file);
  } catch (const std::runtime_error& refused) {
    throw Failure(ExitCode::kOutput, fmt::format("{}: the plug-in cannot be loaded: {}", name, refused.what()));
  }
  const auto initialize = entry<int (*)()>(library, name, kInitialize);
  terminate_ = entry<void (*)()>(library, name, kTerminate);
  library_ = std::move(library);
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
  if (!library_.loaded()) return;
  terminate_();
  library_ = Library();
  terminate_ = nullptr;
}

}  // namespace standin
