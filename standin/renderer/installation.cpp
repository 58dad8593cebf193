#include "standin/renderer/installation.h"

#include <system_error>

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

}  // namespace

void install(const Installation& installation, Registry& registry) {
  uninstall(registry);
  registry.setText(Hive::kLocalMachine, kMaker, "RendaraVersion", kVersion);
  registry.setText(Hive::kLocalMachine, kProduct, "CurrentVersion", "5");
  registry.setText(Hive::kLocalMachine, kProduct, "BinName", installation.program.string());
  registry.setText(Hive::kLocalMachine, kProduct, "BinFolder", installation.binFolder.string());
  registry.setText(Hive::kCurrentUser, kMaker, "RendaraActivePath", installation.binFolder.string());
  for (const char* key : {kProduct, kPortKey}) {
    registry.setNumber(Hive::kCurrentUser, key, "LiveLinkPort", static_cast<std::uint32_t>(installation.port));
    registry.setNumber(Hive::kCurrentUser, key, "LiveLinkMaxPort", kMaxPort);
  }
  for (const auto& [name, value] : installation.options) registry.setText(Hive::kLocalMachine, kStandIn, name, value);
}

void uninstall(Registry& registry) {
  registry.remove(Hive::kLocalMachine, kMaker, "RendaraVersion");
  registry.removeKey(Hive::kLocalMachine, kProduct);
  registry.remove(Hive::kCurrentUser, kMaker, "RendaraActivePath");
  registry.removeKey(Hive::kCurrentUser, kProduct);
  registry.removeKey(Hive::kCurrentUser, kPortKey);
}

std::vector<std::string> installedArguments(const Registry& registry, const std::vector<std::string>& names) {
  std::vector<std::string> arguments;
  for (const std::string& name : names) {
    const RegistryValue* const value = registry.find(Hive::kLocalMachine, kStandIn, name);
    const auto text = value ? value->text() : std::nullopt;
    if (text) arguments.push_back("--" + name + "=" + *text);
  }
  return arguments;
}

std::optional<fs::path> findLibraryFolder(const fs::path& program) {
  const fs::path top = program.parent_path().parent_path();
  for (const fs::path& folder : {top / "lib", top / RENDARA_INSTALLED_LIBRARIES}) {
    std::error_code ignored;
    if (fs::exists(folder / "vntrendaralive64.so", ignored)) return folder;
  }
  return std::nullopt;
}

}  // namespace standin
