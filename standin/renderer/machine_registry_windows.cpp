#include "standin/renderer/machine_registry.h"

#include <stdexcept>
#include <system_error>
#include <vector>

#include "platform/windows_handles.h"

namespace standin {
namespace {

// Plug-in and renderer are programs of 32 bits and meet in their view.
constexpr REGSAM kView = KEY_WOW64_32KEY;

HKEY handleOf(Hive hive) { return hive == Hive::kCurrentUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE; }

std::wstring wideOf(const std::string& utf8) {
  const int size = static_cast<int>(utf8.size());
  std::wstring wide(utf8.size(), L'\0');
  wide.resize(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, wide.data(), size)));
  return wide;
}

std::string utf8Of(const std::wstring& wide) {
  const int size = static_cast<int>(wide.size());
  std::string utf8(wide.size() * 3, '\0');
  utf8.resize(static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, utf8.data(),
                                                           static_cast<int>(utf8.size()), nullptr, nullptr)));
  return utf8;
}

void check(LSTATUS status, const std::string& key) {
  if (status != ERROR_SUCCESS) throw std::system_error(static_cast<int>(status), std::system_category(), key);
}

// What is not there is removed.
void checkRemoved(LSTATUS status, const std::string& key) {
  if (status != ERROR_FILE_NOT_FOUND) check(status, key);
}

class SystemRegistry final : public MachineRegistry {
 public:
  void setText(Hive hive, const std::string& key, const std::string& name, const std::string& text) override {
    const std::wstring wide = wideOf(text);
    set(hive, key, name, REG_SZ, wide.c_str(), (wide.size() + 1) * sizeof(wchar_t));
  }
  void setNumber(Hive hive, const std::string& key, const std::string& name, std::uint32_t number) override {
    set(hive, key, name, REG_DWORD, &number, sizeof number);
  }
  void remove(Hive hive, const std::string& key, const std::string& name) override {
    const auto opened = rendara::RegistryKey::open(handleOf(hive), wideOf(key).c_str(), KEY_SET_VALUE | kView);
    if (opened) checkRemoved(RegDeleteValueW(opened.get(), wideOf(name).c_str()), key);
  }
  void removeKey(Hive hive, const std::string& key) override {
    constexpr REGSAM kAccess = DELETE | KEY_ENUMERATE_SUB_KEYS | KEY_QUERY_VALUE | KEY_SET_VALUE | kView;
    const auto opened = rendara::RegistryKey::open(handleOf(hive), wideOf(key).c_str(), kAccess);
    if (!opened) return;
    check(RegDeleteTreeW(opened.get(), nullptr), key);
    checkRemoved(RegDeleteKeyExW(handleOf(hive), wideOf(key).c_str(), kView, 0), key);
  }

 private:
  static void set(Hive hive, const std::string& key, const std::string& name, DWORD type, const void* data,
                  std::size_t size) {
    HKEY made = nullptr;
    check(RegCreateKeyExW(handleOf(hive), wideOf(key).c_str(), 0, nullptr, 0, KEY_SET_VALUE | kView, nullptr, &made,
                          nullptr),
          key);
    const LSTATUS status =
        RegSetValueExW(made, wideOf(name).c_str(), 0, type, static_cast<const BYTE*>(data), static_cast<DWORD>(size));
    RegCloseKey(made);
    check(status, key);
  }
};

}  // namespace

void changeMachineRegistry(const std::function<void(MachineRegistry&)>& change) {
  SystemRegistry registry;
  change(registry);
}

std::optional<std::string> machineRegistryText(Hive hive, const std::string& key, const std::string& name) {
  const std::wstring wideKey = wideOf(key);
  const std::wstring wideName = wideOf(name);
  const DWORD flags = RRF_RT_REG_SZ;
  const auto opened = rendara::RegistryKey::open(handleOf(hive), wideKey.c_str(), KEY_READ | kView);
  DWORD size = 0;
  if (!opened ||
      RegGetValueW(opened.get(), nullptr, wideName.c_str(), flags, nullptr, nullptr, &size) != ERROR_SUCCESS) {
    return std::nullopt;
  }
  std::vector<wchar_t> text(size / sizeof(wchar_t) + 1);
  if (RegGetValueW(opened.get(), nullptr, wideName.c_str(), flags, nullptr, text.data(), &size) != ERROR_SUCCESS) {
    return std::nullopt;
  }
  return utf8Of(text.data());
}

}  // namespace standin
