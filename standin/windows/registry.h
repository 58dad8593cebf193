// A registry of Windows, kept in a file in the text form that Windows' own export writes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace standin {

enum class Hive { kClassesRoot, kCurrentUser, kLocalMachine, kUsers, kCurrentConfig };

// As in "HKEY_LOCAL_MACHINE".
std::string_view hiveName(Hive hive);

inline constexpr std::uint32_t kRegistryText = 1;
inline constexpr std::uint32_t kRegistryExpandedText = 2;
inline constexpr std::uint32_t kRegistryBytes = 3;
inline constexpr std::uint32_t kRegistryNumber = 4;
inline constexpr std::uint32_t kRegistryTexts = 7;

struct RegistryValue {
  std::string name;  // as it was first written
  std::uint32_t type = kRegistryBytes;
  // As Windows holds them: text is UTF-16LE and is terminated unless it was written otherwise.
  std::vector<unsigned char> data;

  // The text up to its first zero; none when this is no text.
  std::optional<std::string> text() const;
  // None when this is not a number of 32 bits.
  std::optional<std::uint32_t> number() const;
};

struct RegistryFault {
  std::size_t line;  // counted from 1
  std::string text;
};

// Texts, keys and names are UTF-8. A key is a path below its hive with backslashes between its steps, "" for the hive
// itself; a name of "" is the key's default value. Keys and names compare without regard to case and keep the case that
// they were first written in.
class Registry {
 public:
  // A file that is not there is an empty registry. Throws std::runtime_error that names the file, and the line when one
  // is damaged.
  static Registry load(const std::filesystem::path& file);
  // The same, but goes on after a damaged line and adds what was wrong.
  static Registry load(const std::filesystem::path& file, std::vector<RegistryFault>& faults);

  // Setting makes the keys that are missing. Throws std::invalid_argument for a key or a name with a control character.
  void setText(Hive hive, std::string_view key, std::string_view name, const std::string& text);
  void setNumber(Hive hive, std::string_view key, std::string_view name, std::uint32_t number);
  void setBytes(Hive hive, std::string_view key, std::string_view name, std::uint32_t type,
                std::vector<unsigned char> data);
  void addKey(Hive hive, std::string_view key);
  // False when it was not there.
  bool remove(Hive hive, std::string_view key, std::string_view name);
  // The key with all that is below it; a hive loses all it has and stays.
  bool removeKey(Hive hive, std::string_view key);

  bool hasKey(Hive hive, std::string_view key) const;
  // Null when it is not there; valid until the registry is changed.
  const RegistryValue* find(Hive hive, std::string_view key, std::string_view name) const;

  // Writes what Windows can import, makes the file's folder, and takes the place of the old file only when all is
  // written. Throws std::system_error.
  void save(const std::filesystem::path& file) const;

 private:
  struct Key {
    std::string path;  // with its hive, as first written
    std::map<std::string, RegistryValue> values;
  };

  Key& keyToChange(Hive hive, std::string_view key);

  std::map<std::string, Key> keys_;  // by the folded path with its hive
};

// Where the registry of this machine is.
std::filesystem::path registryFile();

// Loads, changes and saves while no other process does the same. Throws as load and save do, and what `change` throws;
// then the file stays as it was.
void changeRegistry(const std::filesystem::path& file, const std::function<void(Registry&)>& change);

}  // namespace standin
