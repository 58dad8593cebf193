// The handles of keys, processes and threads that are open, and the notes of misuse.
#pragma once

#include <bit>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "standin/windows/registry.h"

namespace standin {

struct OpenKey {
  Hive hive;
  std::string path;  // below the hive; of the 64-bit view
  bool mayQuery;
};

// Safe to use from several threads.
class HandleTable {
 public:
  static HandleTable& instance();

  // The new handle is no address, so that nobody reads through it, and is never given out again. `what` names what it
  // stands for, as in "the process 17".
  std::uintptr_t addKey(OpenKey key);
  std::uintptr_t addObject(std::string what);
  // Null, with the misuse noted, when it is not open.
  std::shared_ptr<const OpenKey> key(const char* operation, std::uintptr_t handle);
  // False, with the misuse noted, when it is not open.
  bool closeKey(const char* operation, std::uintptr_t handle);
  bool closeObject(const char* operation, std::uintptr_t handle);

  void noteMisuse(const char* operation, const std::string& what);
  std::vector<std::string> misuse();
  void forgetMisuse();
  std::vector<std::string> open();

 private:
  std::uintptr_t nextHandle();
  // Both with the table locked.
  void note(const char* operation, const std::string& what);
  void noteUnknown(const char* operation, std::uintptr_t handle, const char* kind);

  std::mutex mutex_;
  std::uintptr_t next_ = kFirstHandle;
  std::map<std::uintptr_t, std::shared_ptr<const OpenKey>> keys_;
  std::map<std::uintptr_t, std::string> objects_;
  std::vector<std::string> misuse_;
  std::set<std::string> misuseSeen_;

  static constexpr std::uintptr_t kFirstHandle = 0x104;
  static constexpr std::uintptr_t kHandleStep = 4;
};

// As in "the key HKEY_CURRENT_USER\SOFTWARE".
std::string keyDescription(const OpenKey& key);

// Runs an operation; the result `failure` when it throws, out of memory above all.
template <typename Result, typename Run>
Result guarded(Result failure, const Run& run) noexcept {
  try {
    return run();
  } catch (...) {
    return failure;
  }
}

}  // namespace standin
