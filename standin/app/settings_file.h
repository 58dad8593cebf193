// The settings that the plug-in reads when it starts, by the names that the program's user gives them.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace standin {

class SettingsFile {
 public:
  // The file's name in the working directory of the plug-in.
  static constexpr const char* kName = "rendara_plugin_settings.xml";

  struct Setting {
    const char* name;     // "quality"
    const char* element;  // "tessellationQuality"
    const char* values;   // "0 to 1", for help and errors
    const char* initial;  // the element's text unless told otherwise
  };
  static const std::vector<Setting>& settings();

  // Reads the file when it is there; what it does not have stands at its default.
  explicit SettingsFile(std::filesystem::path file);

  // Sets one setting from what the user typed. Throws Failure for an unknown name and for a value out of range.
  void set(const std::string& name, const std::string& value);
  // The text of the element behind a name of the table.
  const std::string& text(const std::string& name) const;
  // Throws Failure when the file cannot be written.
  void save() const;

 private:
  void load();

  std::filesystem::path file_;
  std::vector<std::string> texts_;  // in the order of settings()
};

}  // namespace standin
