#include "standin/renderer/machine_registry.h"

namespace standin {
namespace {

class FileRegistry final : public MachineRegistry {
 public:
  explicit FileRegistry(Registry& registry) : registry_(registry) {}

  void setText(Hive hive, const std::string& key, const std::string& name, const std::string& text) override {
    registry_.setText(hive, key, name, text);
  }
  void setNumber(Hive hive, const std::string& key, const std::string& name, std::uint32_t number) override {
    registry_.setNumber(hive, key, name, number);
  }
  void remove(Hive hive, const std::string& key, const std::string& name) override {
    registry_.remove(hive, key, name);
  }
  void removeKey(Hive hive, const std::string& key) override { registry_.removeKey(hive, key); }

 private:
  Registry& registry_;
};

}  // namespace

void changeMachineRegistry(const std::function<void(MachineRegistry&)>& change) {
  changeRegistry(registryFile(), [&](Registry& registry) {
    FileRegistry changed(registry);
    change(changed);
  });
}

std::optional<std::string> machineRegistryText(Hive hive, const std::string& key, const std::string& name) {
  const Registry registry = Registry::load(registryFile());
  const RegistryValue* const value = registry.find(hive, key, name);
  return value ? value->text() : std::nullopt;
}

}  // namespace standin
