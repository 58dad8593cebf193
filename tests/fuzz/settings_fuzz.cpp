// Random bytes, led by what they reach, as the settings file: each field is what the file says or stays as it was.
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "settings/settings_file.h"
#include "tests/support/temporary_folder.h"

namespace {

using rendara::PluginSettings;

PluginSettings someSettings() {
  PluginSettings settings;
  settings.tessellationQuality = 0.75;
  settings.upAxis = 3;
  settings.selectionMode = rendara::kManualSelection;
  settings.promptForMechanism = true;
  settings.exportPath = L"C:\\models\\pump.rpk";
  settings.fraPath = L"C:\\models\\pump.fra";
  settings.previousTessellationQuality = 0.625;
  settings.savePackage = true;
  return settings;
}

PluginSettings otherSettings() {
  PluginSettings settings;
  settings.tessellationQuality = 0.25;
  settings.upAxis = 2;
  settings.includeNURBS = false;
  settings.separateMaterials = false;
  return settings;
}

PluginSettings loadedOver(PluginSettings settings) {
  rendara::loadSettings(settings);
  return settings;
}

// Equality by bits, which holds for what is not a number too.
bool same(double first, double second) {
  return std::bit_cast<std::uint64_t>(first) == std::bit_cast<std::uint64_t>(second);
}
template <typename Value>
bool same(const Value& first, const Value& second) {
  return first == second;
}

// One file read over two different records.
class Reading {
 public:
  explicit Reading(const std::string& bytes) : bytes_(bytes) {}

  // Either the file decides, then it does so whatever was there before, or the field stays; and it stays for sure when
  // the file does not even name it.
  template <typename Value>
  void expect(const char* key, Value PluginSettings::*field) const {
    const bool decided = same(read_.*field, otherRead_.*field);
    const bool kept = same(read_.*field, start_.*field) && same(otherRead_.*field, otherStart_.*field);
    const bool named = bytes_.find(key) != std::string::npos;
    if (!kept && !(decided && named)) {
      std::abort();
    }
  }

  const PluginSettings& result() const { return read_; }

 private:
  const std::string& bytes_;
  const PluginSettings start_ = someSettings();
  const PluginSettings otherStart_ = otherSettings();
  const PluginSettings read_ = loadedOver(start_);
  const PluginSettings otherRead_ = loadedOver(otherStart_);
};

void checkReading(const std::string& bytes) {
  const Reading reading(bytes);
  reading.expect("tessellationQuality", &PluginSettings::tessellationQuality);
  reading.expect("upAxis", &PluginSettings::upAxis);
  reading.expect("selectionMode", &PluginSettings::selectionMode);
  reading.expect("includeNURBS", &PluginSettings::includeNURBS);
  reading.expect("separateMaterials", &PluginSettings::separateMaterials);
  reading.expect("promptForMechanism", &PluginSettings::promptForMechanism);
  reading.expect("exportPath", &PluginSettings::exportPath);
  reading.expect("fraPath", &PluginSettings::fraPath);
  reading.expect("(not saved)", &PluginSettings::previousTessellationQuality);
  reading.expect("(not saved)", &PluginSettings::savePackage);

  rendara::saveSettings(reading.result());
  const PluginSettings again = loadedOver(otherSettings());
  const PluginSettings& saved = reading.result();
  if (again.upAxis != saved.upAxis || again.includeNURBS != saved.includeNURBS ||
      again.separateMaterials != saved.separateMaterials || again.promptForMechanism != saved.promptForMechanism ||
      again.selectionMode != saved.selectionMode) {
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const rendara::testing::WorkingFolder folder;
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  rendara::testing::writeFile(rendara::kSettingsFile, bytes);
  checkReading(bytes);
  return 0;
}
