// The operations of the registry, over the file of this machine's registry as it is at each call.
#include <sys/stat.h>

#include <array>
#include <bit>
#include <cstring>
#include <ctime>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "platform/windows_api.h"
#include "standin/windows/code_page.h"
#include "standin/windows/handle_table.h"
#include "standin/windows/registry.h"
#include "standin/windows/registry_text.h"

namespace {

using standin::Hive;
using standin::OpenKey;
using standin::Registry;
using standin::RegistryValue;

constexpr LSTATUS kFileNotFound = 2;
constexpr LSTATUS kAccessDenied = 5;
constexpr LSTATUS kInvalidHandle = 6;
constexpr LSTATUS kOutOfMemory = 14;
constexpr LSTATUS kInvalidParameter = 87;
constexpr LSTATUS kBadPathname = 161;
constexpr LSTATUS kMoreData = 234;
constexpr LSTATUS kKeyDeleted = 1018;

constexpr REGSAM kQueryValue = 0x0001;
constexpr REGSAM k64BitView = 0x0100;

// The registry as the file has it now. A file that cannot be read is as good as none.
class CurrentRegistry {
 public:
  static std::shared_ptr<const Registry> get() {
    static CurrentRegistry current;
    const std::lock_guard lock(current.mutex_);
    current.refresh();
    return current.registry_;
  }

 private:
  struct Stamp {
    std::filesystem::path file;
    dev_t device;
    ino_t number;
    off_t size;
    std::int64_t seconds, nanoseconds;
    bool operator==(const Stamp&) const = default;
  };

  void refresh() {
    std::vector<standin::RegistryFault> damagedLines;  // what could be read counts, as with Windows
    try {
      const std::filesystem::path file = standin::registryFile();
      struct stat status = {};
      if (stat(file.c_str(), &status) != 0) {
        forget();
        return;
      }
      const Stamp stamp = {file,           status.st_dev,         status.st_ino,
                           status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
      if (stamp_ == stamp) {
        return;
      }
      registry_ = std::make_shared<const Registry>(Registry::load(file, damagedLines));
      // A file so new may be replaced by one of the same stamp.
      const bool isSettled = std::time(nullptr) - status.st_mtim.tv_sec > 2;
      stamp_ = isSettled ? std::optional(stamp) : std::nullopt;
    } catch (const std::runtime_error&) {
      forget();
    }
  }

  void forget() {
    registry_ = std::make_shared<const Registry>();
    stamp_.reset();
  }

  std::mutex mutex_;
  std::shared_ptr<const Registry> registry_;
  std::optional<Stamp> stamp_;
};

std::optional<Hive> predefinedHive(HKEY key) {
  constexpr std::array<std::pair<std::uint32_t, Hive>, 5> kHandles = {{{0x80000000, Hive::kClassesRoot},
                                                                       {0x80000001, Hive::kCurrentUser},
                                                                       {0x80000002, Hive::kLocalMachine},
                                                                       {0x80000003, Hive::kUsers},
                                                                       {0x80000005, Hive::kCurrentConfig}}};
  for (const auto& [number, hive] : kHandles) {
    if (std::bit_cast<std::intptr_t>(key) == static_cast<std::int32_t>(number)) {
      return hive;
    }
  }
  return std::nullopt;
}

// Null, with the misuse noted, when it is none.
std::shared_ptr<const OpenKey> openKey(const char* operation, HKEY key) {
  if (const std::optional<Hive> hive = predefinedHive(key)) {
    return std::make_shared<const OpenKey>(OpenKey{*hive, "", true});
  }
  return standin::HandleTable::instance().key(operation, std::bit_cast<std::uintptr_t>(key));
}

// Where the 32-bit view finds a key of the software: in the node of its own when that has the key. Windows would not
// look outside of the node; here a registry without one serves programs of both kinds.
std::string in32BitView(const Registry& registry, const std::string& path) {
  constexpr std::string_view kSoftware = "SOFTWARE";
  constexpr std::string_view kNode = "SOFTWARE\\WOW6432NODE";
  const std::string folded = standin::foldedCase(path);
  const auto isAtOrBelow = [&folded](std::string_view key) {
    return folded.compare(0, key.size(), key) == 0 && (folded.size() == key.size() || folded[key.size()] == '\\');
  };
  if (!isAtOrBelow(kSoftware) || isAtOrBelow(kNode)) {
    return path;
  }
  std::string inNode = "SOFTWARE\\WOW6432Node" + path.substr(kSoftware.size());
  return registry.hasKey(Hive::kLocalMachine, inNode) ? inNode : path;
}

LSTATUS openSubkey(const char* operation, HKEY key, std::string_view path, DWORD options, REGSAM access, HKEY* result) {
  if (result == nullptr) {
    return kInvalidParameter;
  }
  *result = nullptr;
  const std::shared_ptr<const OpenKey> parent = openKey(operation, key);
  if (parent == nullptr) {
    return kInvalidHandle;
  }
  const REGSAM views = k64BitView | KEY_WOW64_32KEY;
  if (options != 0 || (access & views) == views) {
    return kInvalidParameter;
  }
  if ((access & ~(KEY_READ | views)) != 0) {
    return kAccessDenied;
  }
  if (!path.empty() && path.front() == '\\') {
    return kBadPathname;
  }
  if (path.empty() && predefinedHive(key)) {
    *result = key;
    return ERROR_SUCCESS;
  }
  const std::shared_ptr<const Registry> registry = CurrentRegistry::get();
  std::string whole = standin::normalizedKey(parent->path + "\\" + std::string(path));
  if ((access & KEY_WOW64_32KEY) != 0 && parent->hive == Hive::kLocalMachine) {
    whole = in32BitView(*registry, whole);
  }
  if (!registry->hasKey(parent->hive, whole)) {
    return kFileNotFound;
  }
  OpenKey opened = {parent->hive, std::move(whole), (access & kQueryValue) != 0};
  *result = std::bit_cast<HKEY>(standin::HandleTable::instance().addKey(std::move(opened)));
  return ERROR_SUCCESS;
}

// The value as this process sees it: text in its own wide characters, an odd last byte as it is.
std::vector<unsigned char> deliveredBytes(const RegistryValue& value) {
  const bool isText = value.type == standin::kRegistryText || value.type == standin::kRegistryExpandedText ||
                      value.type == standin::kRegistryTexts;
  if (!isText) {
    return value.data;
  }
  const std::wstring wide = standin::wideFromUtf16Bytes(value.data.data(), value.data.size());
  std::vector<unsigned char> bytes(wide.size() * sizeof(wchar_t));
  if (!bytes.empty()) {
    std::memcpy(bytes.data(), wide.data(), bytes.size());
  }
  if (value.data.size() % 2 != 0) {
    bytes.push_back(value.data.back());
  }
  return bytes;
}

LSTATUS queryValue(HKEY key, const wchar_t* name, DWORD* type, BYTE* data, DWORD* size) {
  const std::shared_ptr<const OpenKey> opened = openKey("RegQueryValueExW", key);
  if (opened == nullptr) {
    return kInvalidHandle;
  }
  if (!opened->mayQuery) {
    return kAccessDenied;
  }
  const std::shared_ptr<const Registry> registry = CurrentRegistry::get();
  if (!registry->hasKey(opened->hive, opened->path)) {
    return kKeyDeleted;
  }
  const std::string narrowName = name != nullptr ? standin::utf8FromWide(name) : "";
  const RegistryValue* value = registry->find(opened->hive, opened->path, narrowName);
  if (value == nullptr) {
    return kFileNotFound;
  }
  const std::vector<unsigned char> bytes = deliveredBytes(*value);
  if (type != nullptr) {
    *type = value->type;
  }
  if (size == nullptr) {
    return ERROR_SUCCESS;
  }
  const DWORD room = std::exchange(*size, static_cast<DWORD>(bytes.size()));
  if (data == nullptr) {
    return ERROR_SUCCESS;
  }
  if (room < bytes.size()) {
    return kMoreData;
  }
  if (!bytes.empty()) {
    std::memcpy(data, bytes.data(), bytes.size());
  }
  return ERROR_SUCCESS;
}

// Text of the system code page.
std::string utf8FromNarrow(const char* narrow) {
  std::wstring wide(std::strlen(narrow) + 1, L'\0');
  const int length = MultiByteToWideChar(CP_ACP, 0, narrow, -1, wide.data(), static_cast<int>(wide.size()));
  wide.resize(length > 0 ? static_cast<std::size_t>(length) - 1 : 0);
  return standin::utf8FromWide(wide);
}

}  // namespace

extern "C" {

LSTATUS RegOpenKeyExW(HKEY key, const wchar_t* path, DWORD options, REGSAM access, HKEY* result) {
  return standin::guarded(kOutOfMemory, [&] {
    return openSubkey("RegOpenKeyExW", key, path != nullptr ? standin::utf8FromWide(path) : "", options, access,
                      result);
  });
}

LSTATUS RegOpenKeyExA(HKEY key, const char* path, DWORD options, REGSAM access, HKEY* result) {
  return standin::guarded(kOutOfMemory, [&] {
    return openSubkey("RegOpenKeyExA", key, path != nullptr ? utf8FromNarrow(path) : "", options, access, result);
  });
}

LSTATUS RegQueryValueExW(HKEY key, const wchar_t* name, DWORD* reserved, DWORD* type, BYTE* data, DWORD* size) {
  if (reserved != nullptr || (data != nullptr && size == nullptr)) {
    return kInvalidParameter;
  }
  return standin::guarded(kOutOfMemory, [&] { return queryValue(key, name, type, data, size); });
}

LSTATUS RegCloseKey(HKEY key) {
  if (predefinedHive(key)) {
    return ERROR_SUCCESS;
  }
  return standin::guarded(kOutOfMemory, [&] {
    return standin::HandleTable::instance().closeKey("RegCloseKey", std::bit_cast<std::uintptr_t>(key))
               ? ERROR_SUCCESS
               : kInvalidHandle;
  });
}
}
