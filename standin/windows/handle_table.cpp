#include "standin/windows/handle_table.h"

#include <utility>

#include "standin/windows/handles.h"
#include "standin/windows/modules.h"

namespace standin {

std::string keyDescription(const OpenKey& key) {
  return "the key " + std::string(hiveName(key.hive)) + (key.path.empty() ? "" : "\\") + key.path;
}

HandleTable& HandleTable::instance() {
  static HandleTable& table = *new HandleTable;  // modules may close handles when the process ends
  return table;
}

std::uintptr_t HandleTable::nextHandle() { return std::exchange(next_, next_ + kHandleStep); }

std::uintptr_t HandleTable::addKey(OpenKey key) {
  auto shared = std::make_shared<const OpenKey>(std::move(key));
  const std::lock_guard lock(mutex_);
  const std::uintptr_t handle = nextHandle();
  keys_.emplace(handle, std::move(shared));
  return handle;
}

std::uintptr_t HandleTable::addObject(std::string what) {
  const std::lock_guard lock(mutex_);
  const std::uintptr_t handle = nextHandle();
  objects_.emplace(handle, std::move(what));
  return handle;
}

std::shared_ptr<const OpenKey> HandleTable::key(const char* operation, std::uintptr_t handle) {
  const std::lock_guard lock(mutex_);
  const auto found = keys_.find(handle);
  if (found == keys_.end()) {
    noteUnknown(operation, handle, "a key");
    return nullptr;
  }
  return found->second;
}

bool HandleTable::closeKey(const char* operation, std::uintptr_t handle) {
  const std::lock_guard lock(mutex_);
  const bool wasOpen = keys_.erase(handle) != 0;
  if (!wasOpen) {
    noteUnknown(operation, handle, "a key");
  }
  return wasOpen;
}

bool HandleTable::closeObject(const char* operation, std::uintptr_t handle) {
  const std::lock_guard lock(mutex_);
  const bool wasOpen = objects_.erase(handle) != 0;
  if (!wasOpen) {
    noteUnknown(operation, handle, "an object");
  }
  return wasOpen;
}

void HandleTable::noteUnknown(const char* operation, std::uintptr_t handle, const char* kind) {
  const bool wasGivenOut = handle >= kFirstHandle && handle < next_ && (handle - kFirstHandle) % kHandleStep == 0;
  const bool isOther = keys_.count(handle) != 0 || objects_.count(handle) != 0;
  std::string what = std::string("the handle of ") + kind + " is ";
  if (handle == 0) {
    what += "null";
  } else if (isOther) {
    what += "that of something else";
  } else {
    what += wasGivenOut ? "closed already" : "unknown";
  }
  note(operation, what);
}

void HandleTable::noteMisuse(const char* operation, const std::string& what) {
  const std::lock_guard lock(mutex_);
  note(operation, what);
}

void HandleTable::note(const char* operation, const std::string& what) {
  std::string line = std::string(operation) + ": " + what;
  if (misuseSeen_.insert(line).second) {
    misuse_.push_back(std::move(line));
  }
}

std::vector<std::string> HandleTable::misuse() {
  const std::lock_guard lock(mutex_);
  return misuse_;
}

void HandleTable::forgetMisuse() {
  const std::lock_guard lock(mutex_);
  misuse_.clear();
  misuseSeen_.clear();
}

std::vector<std::string> HandleTable::open() {
  const std::lock_guard lock(mutex_);
  std::vector<std::string> lines;
  for (const auto& [handle, key] : keys_) {
    lines.push_back(keyDescription(*key));
  }
  for (const auto& [handle, what] : objects_) {
    lines.push_back(what);
  }
  return lines;
}

std::vector<std::string> openHandles() {
  std::vector<std::string> lines = HandleTable::instance().open();
  std::vector<std::string> modules = loadedModules();
  lines.insert(lines.end(), std::make_move_iterator(modules.begin()), std::make_move_iterator(modules.end()));
  return lines;
}

std::vector<std::string> windowsMisuse() { return HandleTable::instance().misuse(); }

void forgetWindowsMisuse() { HandleTable::instance().forgetMisuse(); }

}  // namespace standin
