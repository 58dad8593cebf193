// Owning handles over what Windows hands out.
#pragma once

#include <utility>

#include "platform/windows_api.h"

namespace rendara {

// An open key of the registry, or none.
class RegistryKey {
 public:
  RegistryKey() = default;
  static RegistryKey open(HKEY hive, const wchar_t* path, REGSAM access) {
    RegistryKey key;
    if (RegOpenKeyExW(hive, path, 0, access, &key.key_) != ERROR_SUCCESS) {
      key.key_ = nullptr;
    }
    return key;
  }
  // The path is in the system code page.
  static RegistryKey open(HKEY hive, const char* path, REGSAM access) {
    RegistryKey key;
    if (RegOpenKeyExA(hive, path, 0, access, &key.key_) != ERROR_SUCCESS) {
      key.key_ = nullptr;
    }
    return key;
  }
  RegistryKey(RegistryKey&& other) noexcept : key_(std::exchange(other.key_, nullptr)) {}
  RegistryKey& operator=(RegistryKey&& other) noexcept {
    std::swap(key_, other.key_);
    return *this;
  }
  ~RegistryKey() {
    if (key_ != nullptr) {
      RegCloseKey(key_);
    }
  }

  explicit operator bool() const { return key_ != nullptr; }
  HKEY get() const { return key_; }

 private:
  HKEY key_ = nullptr;
};

// A library loaded at run time, or none.
class Module {
 public:
  Module() = default;
  static Module load(const wchar_t* file) {
    Module module;
    module.module_ = LoadLibraryW(file);
    return module;
  }
  Module(Module&& other) noexcept : module_(std::exchange(other.module_, nullptr)) {}
  Module& operator=(Module&& other) noexcept {
    std::swap(module_, other.module_);
    return *this;
  }
  ~Module() { unload(); }

  explicit operator bool() const { return module_ != nullptr; }
  // The entry of that name, or null.
  template <typename Function>
  Function entry(const char* name) const {
    // By way of a plain pointer: compilers warn of a cast from one type of function to another.
    return module_ != nullptr ? reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module_, name)))
                              : nullptr;
  }
  void unload() {
    if (module_ != nullptr) {
      FreeLibrary(std::exchange(module_, nullptr));
    }
  }

 private:
  HMODULE module_ = nullptr;
};

}  // namespace rendara
