// The registry of this machine, as far as an installation needs it: on Windows the system's own, elsewhere that of the
// machine folder.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "standin/windows/registry.h"

namespace standin {

// Texts are UTF-8, keys are paths below their hive. Setting makes the keys that are missing; what is not there need not
// be removed. All throw std::runtime_error.
class MachineRegistry {
 public:
  virtual void setText(Hive hive, const std::string& key, const std::string& name, const std::string& text) = 0;
  virtual void setNumber(Hive hive, const std::string& key, const std::string& name, std::uint32_t number) = 0;
  virtual void remove(Hive hive, const std::string& key, const std::string& name) = 0;
  // With all that is below it.
  virtual void removeKey(Hive hive, const std::string& key) = 0;

 protected:
  ~MachineRegistry() = default;
};

void changeMachineRegistry(const std::function<void(MachineRegistry&)>& change);

// Nothing when there is no such value, or it is no text.
std::optional<std::string> machineRegistryText(Hive hive, const std::string& key, const std::string& name);

}  // namespace standin
