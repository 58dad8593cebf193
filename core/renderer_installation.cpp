#include "core/renderer_installation.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "platform/windows_handles.h"
#include "scene/narrow_text.h"
#include "settings/number_reading.h"

namespace rendara {
namespace {

constexpr wchar_t kVendorKey[] = L"SOFTWARE\\Vantor";
constexpr char kNarrowVendorKey[] = "SOFTWARE\\Vantor";
constexpr char kDefaultPortKey[] = "SOFTWARE\\Vantor\\Rendara 4";
constexpr wchar_t kVersionValue[] = L"RendaraVersion";
constexpr REGSAM kReadIn32BitView = KEY_READ | KEY_WOW64_32KEY;

// Greatest sizes, in characters with the terminator.
constexpr std::size_t kVersionSize = 32;
constexpr std::size_t kActiveFolderSize = 256;
constexpr std::size_t kPathSize = 260;
constexpr std::size_t kPortVersionSize = 128;

// Reads a value into the array and gives the number of bytes; none when it is missing, larger, or of another type than
// the one asked for.
template <typename Unit, std::size_t size>
std::optional<std::size_t> readBytes(const RegistryKey& key, const wchar_t* name, std::optional<DWORD> type,
                                     std::array<Unit, size>& units) {
  DWORD byteCount = static_cast<DWORD>(size * sizeof(Unit));
  DWORD readType = 0;
  if (!key || RegQueryValueExW(key.get(), name, nullptr, &readType, reinterpret_cast<BYTE*>(units.data()),
                               &byteCount) != ERROR_SUCCESS) {
    return std::nullopt;
  }
  if (readType != type.value_or(readType) || byteCount > size * sizeof(Unit)) {
    return std::nullopt;
  }
  return byteCount;
}

// The text of a value; it may be stored without its terminator and even with half a character at its end.
template <std::size_t size>
std::optional<std::wstring> readText(const RegistryKey& key, const wchar_t* name) {
  std::array<wchar_t, size> text{};
  const auto byteCount = readBytes(key, name, REG_SZ, text);
  if (!byteCount) {
    return std::nullopt;
  }
  const std::wstring_view stored(text.data(), *byteCount / sizeof(wchar_t));
  return std::wstring(stored.substr(0, stored.find(L'\0')));
}

std::optional<int> readNumber(const RegistryKey& key, const wchar_t* name) {
  std::array<DWORD, 1> number{};
  return readBytes(key, name, REG_DWORD, number) == sizeof(DWORD) ? std::optional(static_cast<int>(number[0]))
                                                                  : std::nullopt;
}

std::wstring versionKey(const std::wstring& version) { return std::wstring(kVendorKey) + L"\\" + version; }

std::optional<std::wstring> installedVersion() {
  return readText<kVersionSize>(RegistryKey::open(HKEY_LOCAL_MACHINE, kVendorKey, kReadIn32BitView), kVersionValue);
}

}  // namespace

std::wstring rendererProgram(int minimumVersion) {
  const auto version = installedVersion();
  if (!version) {
    return {};
  }
  RegistryKey key = RegistryKey::open(HKEY_LOCAL_MACHINE, versionKey(*version).c_str(), KEY_READ);
  const auto current = readText<kVersionSize>(key, L"CurrentVersion");
  if (current && readInt(narrowText(*current).text) < minimumVersion) {
    const std::wstring minimum = versionKey(L"Rendara " + std::to_wstring(minimumVersion));
    key = RegistryKey::open(HKEY_LOCAL_MACHINE, minimum.c_str(), KEY_READ);
  }
  return readText<kPathSize>(key, L"BinName").value_or(std::wstring());
}

std::wstring liveLinkFolder() {
  auto folder = readText<kActiveFolderSize>(RegistryKey::open(HKEY_CURRENT_USER, kVendorKey, kReadIn32BitView),
                                            L"RendaraActivePath");
  if (!folder || folder->empty()) {
    if (const auto version = installedVersion()) {
      folder = readText<kPathSize>(
          RegistryKey::open(HKEY_LOCAL_MACHINE, versionKey(*version).c_str(), kReadIn32BitView), L"BinFolder");
    }
  }
  return folder && !folder->empty() ? *folder + L"\\" : std::wstring();
}

bool launchRenderer(int minimumVersion) {
  const std::wstring program = rendererProgram(minimumVersion);
  if (program.empty()) {
    return false;
  }
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  if (CreateProcessW(program.c_str(), nullptr, nullptr, nullptr, 0, 0, nullptr, nullptr, &startup, &process) == 0) {
    return false;
  }
  CloseHandle(process.hProcess);
  CloseHandle(process.hThread);
  return true;
}

PortLookup livePortInRegistry() {
  std::string path = kDefaultPortKey;
  std::array<wchar_t, kPortVersionSize> version{};
  const auto byteCount =
      readBytes(RegistryKey::open(HKEY_LOCAL_MACHINE, kVendorKey, KEY_READ), kVersionValue, std::nullopt, version);
  if (byteCount) {
    const auto* bytes = reinterpret_cast<const char*>(version.data());
    path = std::string(kNarrowVendorKey) + "\\" + std::string(bytes, std::find(bytes, bytes + *byteCount, '\0'));
  }
  PortLookup lookup;
  const RegistryKey key = RegistryKey::open(HKEY_CURRENT_USER, path.c_str(), KEY_READ);
  if (!key) {
    return lookup;
  }
  lookup.status = PortLookup::Status::kNoPort;
  if (const auto port = readNumber(key, L"LiveLinkPort")) {
    lookup.port = *port;
    const auto maximum = readNumber(key, L"LiveLinkMaxPort");
    lookup.maximum = maximum.value_or(0);
    lookup.status = maximum ? PortLookup::Status::kFound : PortLookup::Status::kNoMaximum;
  }
  return lookup;
}

}  // namespace rendara
