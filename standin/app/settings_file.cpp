#include "standin/app/settings_file.h"

#include <fmt/format.h>
#include <tinyxml.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

#include "platform/windows_api.h"
#include "standin/app/failure.h"
#include "standin/windows/code_page.h"
#include "tools/terminal/suggestion.h"

namespace standin {
namespace {

constexpr const char* kSwitch = "on, off";
constexpr const char* kPath = "a path";

std::optional<std::string> qualityText(const std::string& value) {
  double quality = 0;
  const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), quality);
  const bool isNumber = error == std::errc() && end == value.data() + value.size();
  if (!isNumber || !(quality >= 0 && quality <= 1)) return std::nullopt;
  return fmt::format("{:f}", quality);
}

std::optional<std::string> axisText(const std::string& value) {
  static constexpr std::array kAxes = {"x", "y", "z", "-x", "-y", "-z"};
  const auto found = std::find(kAxes.begin(), kAxes.end(), value);
  if (found == kAxes.end()) return std::nullopt;
  return std::to_string(found - kAxes.begin());
}

std::optional<std::string> switchText(const std::string& value, bool whenOn) {
  if (value != "on" && value != "off") return std::nullopt;
  return (value == "on") == whenOn ? "true" : "false";
}

// The plug-in reads paths in the system code page.
std::optional<std::string> pathText(const std::string& value) {
  const std::wstring wide = wideFromUtf8(value);
  std::string narrow(4 * wide.size() + 1, '\0');
  const int size = WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, wide.c_str(), -1, narrow.data(),
                                       static_cast<int>(narrow.size()), nullptr, nullptr);
  if (size <= 0) return std::nullopt;
  narrow.resize(static_cast<std::size_t>(size) - 1);
  return narrow;
}

std::optional<std::string> elementText(const std::string& name, const std::string& value) {
  if (name == "quality") return qualityText(value);
  if (name == "up") return axisText(value);
  if (name == "selection") {
    return value == "automatic" || value == "manual" ? std::optional(value) : std::nullopt;
  }
  if (name == "shared-materials") return switchText(value, false);
  if (name == "nurbs" || name == "mechanism") return switchText(value, true);
  return pathText(value);
}

std::optional<std::size_t> settingIndex(const std::string& name) {
  const auto& settings = SettingsFile::settings();
  for (std::size_t i = 0; i < settings.size(); ++i) {
    if (settings[i].name == name) return i;
  }
  return std::nullopt;
}

}  // namespace

const std::vector<SettingsFile::Setting>& SettingsFile::settings() {
  static const std::vector<Setting> kSettings = {
      {"quality", "tessellationQuality", "a number from 0 to 1", "0.200000"},
      {"up", "upAxis", "x, y, z, -x, -y, -z", "1"},
      {"selection", "selectionMode", "automatic, manual", "automatic"},
      {"nurbs", "includeNURBS", kSwitch, "true"},
      {"shared-materials", "separateMaterials", kSwitch, "true"},
      {"mechanism", "promptForMechanism", kSwitch, "false"},
      {"export-path", "exportPath", kPath, ""},
      {"frame-path", "fraPath", kPath, ""},
  };
  return kSettings;
}

SettingsFile::SettingsFile(std::filesystem::path file) : file_(std::move(file)) {
  for (const Setting& setting : settings()) texts_.emplace_back(setting.initial);
  load();
}

void SettingsFile::load() {
  const bool condense = TiXmlBase::IsWhiteSpaceCondensed();
  TiXmlBase::SetCondenseWhiteSpace(false);
  TiXmlDocument document;
  // The texts are in a code page; taken for UTF-8, a byte above 127 would swallow what follows it.
  const bool loaded = document.LoadFile(file_.string(), TIXML_ENCODING_LEGACY);
  TiXmlBase::SetCondenseWhiteSpace(condense);
  if (!loaded || !document.RootElement()) return;
  for (std::size_t i = 0; i < texts_.size(); ++i) {
    const TiXmlElement* element = document.RootElement()->FirstChildElement(settings()[i].element);
    if (element && element->GetText()) texts_[i] = element->GetText();
  }
}

void SettingsFile::set(const std::string& name, const std::string& value) {
  const std::optional<std::size_t> index = settingIndex(name);
  if (!index) {
    std::vector<std::string> names;
    for (const Setting& setting : settings()) names.emplace_back(setting.name);
    throw Failure(ExitCode::kUsage, fmt::format("no setting \"{}\"{}", name, terminal::didYouMean(name, names)));
  }
  const std::optional<std::string> text = elementText(name, value);
  if (!text) {
    throw Failure(ExitCode::kUsage, fmt::format("{} cannot be \"{}\": {}", name, value, settings()[*index].values));
  }
  texts_[*index] = *text;
}

const std::string& SettingsFile::text(const std::string& name) const { return texts_.at(settingIndex(name).value()); }

void SettingsFile::save() const {
  TiXmlDocument document;
  document.LinkEndChild(new TiXmlDeclaration("1.0", "", ""));
  auto* root = new TiXmlElement("rendara_plugin_settings");
  document.LinkEndChild(root);
  for (std::size_t i = 0; i < texts_.size(); ++i) {
    auto* element = new TiXmlElement(settings()[i].element);
    element->LinkEndChild(new TiXmlText(texts_[i].c_str()));
    root->LinkEndChild(element);
  }
  if (!document.SaveFile(file_.string())) {
    throw Failure(ExitCode::kOutput, fmt::format("{}: the settings cannot be written", file_.string()));
  }
}

}  // namespace standin
