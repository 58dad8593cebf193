#include "standin/windows/registry.h"

#include <fcntl.h>
#include <locale.h>
#include <sys/file.h>
#include <unistd.h>
#include <wctype.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "standin/windows/code_page.h"
#include "standin/windows/machine_folder.h"
#include "standin/windows/registry_text.h"

namespace standin {
namespace {

constexpr std::array<std::string_view, 5> kHiveNames = {"HKEY_CLASSES_ROOT", "HKEY_CURRENT_USER", "HKEY_LOCAL_MACHINE",
                                                        "HKEY_USERS", "HKEY_CURRENT_CONFIG"};

std::string fullPath(Hive hive, std::string_view key) {
  const std::string below = normalizedKey(key);
  return std::string(hiveName(hive)) + (below.empty() ? "" : "\\") + below;
}

void refuseControlCharacters(std::string_view text, const char* what) {
  if (std::any_of(text.begin(), text.end(), [](char unit) { return static_cast<unsigned char>(unit) < 0x20; })) {
    throw std::invalid_argument(std::string("the ") + what + " has a control character");
  }
}

class LockedFile {
 public:
  explicit LockedFile(const std::filesystem::path& file)
      : descriptor_(open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666)) {
    while (descriptor_ >= 0 && flock(descriptor_, LOCK_EX) != 0) {
      if (errno != EINTR) {
        fail(file);
      }
    }
    if (descriptor_ < 0) {
      fail(file);
    }
  }
  ~LockedFile() { close(descriptor_); }
  LockedFile(const LockedFile&) = delete;
  LockedFile& operator=(const LockedFile&) = delete;

 private:
  void fail(const std::filesystem::path& file) const {
    const int error = errno;
    if (descriptor_ >= 0) {
      close(descriptor_);
    }
    throw std::system_error(error, std::generic_category(), file.string());
  }

  int descriptor_;
};

}  // namespace

std::string_view hiveName(Hive hive) { return kHiveNames.at(static_cast<std::size_t>(hive)); }

std::string normalizedKey(std::string_view key) {
  std::string path;
  bool stepBegins = false;
  for (const char unit : key) {
    if (unit == '\\') {
      stepBegins = !path.empty();
      continue;
    }
    if (std::exchange(stepBegins, false)) {
      path.push_back('\\');
    }
    path.push_back(unit);
  }
  return path;
}

std::vector<unsigned char> utf16Bytes(const std::string& utf8) {
  std::vector<unsigned char> bytes;
  const auto append = [&bytes](char32_t unit) {
    bytes.push_back(static_cast<unsigned char>(unit & 0xFF));
    bytes.push_back(static_cast<unsigned char>(unit >> 8 & 0xFF));
  };
  for (const wchar_t wide : wideFromUtf8(utf8)) {
    const auto character = static_cast<char32_t>(wide);
    if (character > 0xFFFF) {
      append(0xD800 + ((character - 0x10000) >> 10));
      append(0xDC00 + ((character - 0x10000) & 0x3FF));
    } else {
      append(character);
    }
  }
  return bytes;
}

std::wstring wideFromUtf16Bytes(const unsigned char* bytes, std::size_t size) {
  std::wstring text;
  for (std::size_t at = 0; at + 1 < size; at += 2) {
    const auto unit = static_cast<char32_t>(bytes[at] | bytes[at + 1] << 8);
    const bool endsPair = unit >= 0xDC00 && unit <= 0xDFFF && !text.empty() && text.back() >= wchar_t{0xD800} &&
                          text.back() <= wchar_t{0xDBFF};
    if (endsPair) {
      const auto first = static_cast<char32_t>(text.back());
      text.back() = static_cast<wchar_t>(0x10000 + ((first - 0xD800) << 10) + (unit - 0xDC00));
    } else {
      text.push_back(static_cast<wchar_t>(unit));
    }
  }
  return text;
}

std::string foldedCase(std::string_view utf8) {
  static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  std::wstring wide = wideFromUtf8(std::string(utf8));
  for (wchar_t& unit : wide) {
    if (unit >= L'a' && unit <= L'z') {
      unit -= L'a' - L'A';
    } else if (unit > wchar_t{0x7F} && unicode != nullptr) {
      const auto upper = static_cast<wchar_t>(towupper_l(static_cast<wint_t>(unit), unicode));
      unit = upper > wchar_t{0x7F} ? upper : unit;  // Windows keeps look-alikes of ASCII apart
    }
  }
  return utf8FromWide(wide);
}

std::optional<std::string> RegistryValue::text() const {
  if (type != kRegistryText && type != kRegistryExpandedText) {
    return std::nullopt;
  }
  const std::wstring wide = wideFromUtf16Bytes(data.data(), data.size());
  return utf8FromWide(wide.substr(0, wide.find(L'\0')));
}

std::optional<std::uint32_t> RegistryValue::number() const {
  if (type != kRegistryNumber || data.size() != 4) {
    return std::nullopt;
  }
  return static_cast<std::uint32_t>(data[0]) | static_cast<std::uint32_t>(data[1]) << 8 |
         static_cast<std::uint32_t>(data[2]) << 16 | static_cast<std::uint32_t>(data[3]) << 24;
}

Registry::Key& Registry::keyToChange(Hive hive, std::string_view key) {
  refuseControlCharacters(key, "key");
  const std::string path = fullPath(hive, key);
  for (std::size_t end = path.find('\\');; end = path.find('\\', end + 1)) {
    const std::string step = path.substr(0, end);
    Key& made = keys_[foldedCase(step)];
    if (made.path.empty()) {
      made.path = step;
    }
    if (end == std::string::npos) {
      return made;
    }
  }
}

void Registry::setText(Hive hive, std::string_view key, std::string_view name, const std::string& text) {
  std::vector<unsigned char> data = utf16Bytes(text);
  data.insert(data.end(), 2, 0);
  setBytes(hive, key, name, kRegistryText, std::move(data));
}

void Registry::setNumber(Hive hive, std::string_view key, std::string_view name, std::uint32_t number) {
  std::vector<unsigned char> data;
  for (unsigned shift = 0; shift < 32; shift += 8) {
    data.push_back(static_cast<unsigned char>(number >> shift & 0xFF));
  }
  setBytes(hive, key, name, kRegistryNumber, std::move(data));
}

void Registry::setBytes(Hive hive, std::string_view key, std::string_view name, std::uint32_t type,
                        std::vector<unsigned char> data) {
  refuseControlCharacters(name, "name of the value");
  RegistryValue& value = keyToChange(hive, key).values.try_emplace(foldedCase(name)).first->second;
  if (value.name.empty()) {
    value.name = name;
  }
  value.type = type;
  value.data = std::move(data);
}

void Registry::addKey(Hive hive, std::string_view key) { keyToChange(hive, key); }

bool Registry::remove(Hive hive, std::string_view key, std::string_view name) {
  const auto found = keys_.find(foldedCase(fullPath(hive, key)));
  return found != keys_.end() && found->second.values.erase(foldedCase(name)) != 0;
}

bool Registry::removeKey(Hive hive, std::string_view key) {
  const std::string folded = foldedCase(fullPath(hive, key));
  const std::string below = folded + "\\";
  const bool wasThere = keys_.erase(folded) != 0;
  auto last = keys_.lower_bound(below);
  const auto first = last;
  while (last != keys_.end() && last->first.compare(0, below.size(), below) == 0) {
    ++last;
  }
  keys_.erase(first, last);
  return wasThere;
}

bool Registry::hasKey(Hive hive, std::string_view key) const {
  const std::string path = fullPath(hive, key);
  return path == hiveName(hive) || keys_.count(foldedCase(path)) != 0;
}

const RegistryValue* Registry::find(Hive hive, std::string_view key, std::string_view name) const {
  const auto foundKey = keys_.find(foldedCase(fullPath(hive, key)));
  if (foundKey == keys_.end()) {
    return nullptr;
  }
  const auto found = foundKey->second.values.find(foldedCase(name));
  return found != foundKey->second.values.end() ? &found->second : nullptr;
}

std::filesystem::path registryFile() { return machineFolder() / "registry.reg"; }

void changeRegistry(const std::filesystem::path& file, const std::function<void(Registry&)>& change) {
  if (file.has_parent_path()) {
    std::filesystem::create_directories(file.parent_path());
  }
  const LockedFile lock(file.string() + ".lock");
  Registry registry = Registry::load(file);
  change(registry);
  registry.save(file);
}

}  // namespace standin
