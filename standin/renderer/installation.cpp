#include "standin/renderer/installation.h"

#include <cstdint>
#include <system_error>

#include "standin/renderer/machine_registry.h"

namespace standin {
namespace {

namespace fs = std::filesystem;

constexpr const char* kMaker = "SOFTWARE\\Vantor";
constexpr const char* kVersion = "Rendara 5";
constexpr const char* kProduct = "SOFTWARE\\Vantor\\Rendara 5";
// Where plug-ins look for the port: of the version's name they take the first byte only.
constexpr const char* kPortKey = "SOFTWARE\\Vantor\\R";
constexpr const char* kStandIn = "SOFTWARE\\Vantor\\Rendara 5\\StandIn";
constexpr std::uint32_t kMaxPort = 65535;

constexpr const char* kLibrary = sizeof(void*) == 4 ? "vntrendaralive32.so" : "vntrendaralive64.so";

void removeAll(MachineRegistry& registry) {
  registry.remove(Hive::kLocalMachine, kMaker, "RendaraVersion");
  registry.removeKey(Hive::kLocalMachine, kProduct);
  registry.remove(Hive::kCurrentUser, kMaker, "RendaraActivePath");
  registry.removeKey(Hive::kCurrentUser, kProduct);
  registry.removeKey(Hive::kCurrentUser, kPortKey);
}

std::string utf8Path(const fs::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

}  // namespace

void install(const Installation& installation) {
  changeMachineRegistry([&](MachineRegistry& registry) {
    removeAll(registry);
    registry.setText(Hive::kLocalMachine, kMaker, "RendaraVersion", kVersion);
    registry.setText(Hive::kLocalMachine, kProduct, "CurrentVersion", "5");
    registry.setText(Hive::kLocalMachine, kProduct, "BinName", utf8Path(installation.program));
    registry.setText(Hive::kLocalMachine, kProduct, "BinFolder", utf8Path(installation.binFolder));
    registry.setText(Hive::kCurrentUser, kMaker, "RendaraActivePath", utf8Path(installation.binFolder));
    for (const char* key : {kProduct, kPortKey}) {
      registry.setNumber(Hive::kCurrentUser, key, "LiveLinkPort", static_cast<std::uint32_t>(installation.port));
      registry.setNumber(Hive::kCurrentUser, key, "LiveLinkMaxPort", kMaxPort);
    }
    for (const auto& [name, value] : installation.options) registry.setText(Hive::kLocalMachine, kStandIn, name, value);
  });
}

void uninstall() { changeMachineRegistry(removeAll); }

std::vector<std::string> installedArguments(const std::vector<std::string>& names) {
  std::vector<std::string> arguments;
  for (const std::string& name : names) {
    if (const auto text = machineRegistryText(Hive::kLocalMachine, kStandIn, name)) {
      arguments.push_back("--" + name + "=" + *text);
    }
  }
  return arguments;
}

std::optional<fs::path> findLibraryFolder(const fs::path& program) {
  const fs::path top = program.parent_path().parent_path();
  for (const fs::path& folder : {top / "lib", top / RENDARA_INSTALLED_LIBRARIES}) {
    std::error_code ignored;
    if (fs::exists(folder / kLibrary, ignored)) return fs::path(folder).make_preferred();
  }
  return std::nullopt;
}

}  // namespace standin
