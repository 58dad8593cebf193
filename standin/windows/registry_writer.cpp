// Writes a registry as Windows exports it: UTF-16LE with its mark, CR LF, bytes in lines of at most 80 characters.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <system_error>

#include "standin/windows/code_page.h"
#include "standin/windows/registry.h"
#include "standin/windows/registry_text.h"

namespace standin {
namespace {

constexpr std::size_t kLineLength = 80;

std::string quoted(const std::string& text) {
  std::string result = "\"";
  for (const char unit : text) {
    if (unit == '"' || unit == '\\') {
      result.push_back('\\');
    }
    result.push_back(unit);
  }
  return result + "\"";
}

// The text when it says all that the value holds: terminated once, well-formed, on one line.
std::optional<std::string> plainText(const RegistryValue& value) {
  const std::size_t size = value.data.size();
  if (value.type != kRegistryText || size < 2 || value.data[size - 1] != 0 || value.data[size - 2] != 0) {
    return std::nullopt;
  }
  std::string text = *value.text();
  std::vector<unsigned char> again = utf16Bytes(text);
  again.insert(again.end(), 2, 0);
  const bool hasControls =
      std::any_of(text.begin(), text.end(), [](char unit) { return static_cast<unsigned char>(unit) < 0x20; });
  return again == value.data && !hasControls ? std::optional(std::move(text)) : std::nullopt;
}

template <typename Number>
std::string formatted(const char* format, Number number) {
  char text[32] = {};
  const int length = std::snprintf(text, sizeof text, format, number);
  return {text, static_cast<std::size_t>(length)};
}

std::string valueLine(const RegistryValue& value) {
  std::string line = value.name.empty() ? "@=" : quoted(value.name) + "=";
  if (const std::optional<std::string> text = plainText(value)) {
    return line + quoted(*text) + "\r\n";
  }
  if (const std::optional<std::uint32_t> number = value.number()) {
    return line + formatted("dword:%08x", *number) + "\r\n";
  }
  line += value.type == kRegistryBytes ? "hex:" : formatted("hex(%x):", value.type);
  std::size_t column = line.size();
  for (std::size_t at = 0; at < value.data.size(); ++at) {
    const bool isLast = at + 1 == value.data.size();
    line += formatted("%02x", value.data[at]) + (isLast ? "" : ",");
    column += 3;
    if (!isLast && column + 4 > kLineLength) {
      line += "\\\r\n  ";
      column = 2;
    }
  }
  return line + "\r\n";
}

[[noreturn]] void fail(int error, const std::filesystem::path& file) {
  throw std::system_error(error, std::generic_category(), file.string());
}

// A new file beside another, gone again unless it takes the other's place.
class NewFile {
 public:
  explicit NewFile(const std::filesystem::path& place) : place_(place), name_(place.string() + ".XXXXXX") {
    descriptor_ = mkostemp(name_.data(), O_CLOEXEC);
    if (descriptor_ < 0) {
      fail(errno, place_);
    }
  }
  ~NewFile() {
    if (descriptor_ >= 0) {
      close(descriptor_);
    }
    if (!name_.empty()) {
      unlink(name_.c_str());
    }
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  void write(const std::vector<unsigned char>& bytes) {
    for (std::size_t done = 0; done < bytes.size();) {
      const ssize_t written = ::write(descriptor_, bytes.data() + done, bytes.size() - done);
      if (written >= 0) {
        done += static_cast<std::size_t>(written);
      } else if (errno != EINTR) {
        fail(errno, place_);
      }
    }
  }

  void takePlace() {
    const int result = close(descriptor_);
    descriptor_ = -1;
    if (result != 0 || std::rename(name_.c_str(), place_.c_str()) != 0) {
      fail(errno, place_);
    }
    name_.clear();
  }

 private:
  std::filesystem::path place_;
  std::string name_;
  int descriptor_ = -1;
};

}  // namespace

void Registry::save(const std::filesystem::path& file) const {
  std::string text = std::string(kRegistryHeading) + "\r\n";
  for (const auto& [folded, key] : keys_) {
    const bool isBareHive = key.values.empty() && key.path.find('\\') == std::string::npos;
    if (isBareHive) {
      continue;
    }
    text += "\r\n[" + key.path + "]\r\n";
    for (const auto& [foldedName, value] : key.values) {
      text += valueLine(value);
    }
  }
  text += "\r\n";
  std::vector<unsigned char> bytes = {0xFF, 0xFE};
  const std::vector<unsigned char> content = utf16Bytes(text);
  bytes.insert(bytes.end(), content.begin(), content.end());
  if (file.has_parent_path()) {
    std::filesystem::create_directories(file.parent_path());
  }
  NewFile fresh(file);
  fresh.write(bytes);
  fresh.takePlace();
}

}  // namespace standin
