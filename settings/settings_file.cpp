#include "settings/settings_file.h"

#include <tinyxml.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>

#include "platform/windows_api.h"
#include "scene/narrow_text.h"
#include "scene/number_text.h"
#include "settings/number_reading.h"

namespace rendara {
namespace {

constexpr std::size_t kPathBuffer = 1024;

// Far more than the settings ever need. The XML library goes down into nested elements by recursion and takes the
// square of their depth in time.
constexpr std::uintmax_t kMostBytes = 1 << 20;
constexpr std::ptrdiff_t kMostTags = 1000;

bool isFitForParsing(const char* path) {
  std::error_code error;
  const auto size = std::filesystem::file_size(path, error);
  std::ifstream file(path, std::ios::binary);
  return !error && size <= kMostBytes &&
         std::count(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>(), '<') <= kMostTags;
}

// Texts are kept as they stand while this lives: paths may hold runs of blanks.
class KeepWhiteSpace {
 public:
  KeepWhiteSpace() : before_(TiXmlBase::IsWhiteSpaceCondensed()) { TiXmlBase::SetCondenseWhiteSpace(false); }
  ~KeepWhiteSpace() { TiXmlBase::SetCondenseWhiteSpace(before_); }
  KeepWhiteSpace(const KeepWhiteSpace&) = delete;
  KeepWhiteSpace& operator=(const KeepWhiteSpace&) = delete;

 private:
  bool before_;
};

std::optional<std::string> elementText(const TiXmlElement& root, const char* key) {
  const TiXmlElement* element = root.FirstChildElement(key);
  const char* text = element != nullptr ? element->GetText() : nullptr;
  return text != nullptr ? std::optional<std::string>(text) : std::nullopt;
}

void readBool(const TiXmlElement& root, const char* key, bool& field) {
  if (const auto text = elementText(root, key)) {
    field = *text == "true";
  }
}

std::wstring wideText(const std::string& narrow) {
  std::wstring wide(narrow.size(), L'\0');
  const int length = narrow.empty() ? 0
                                    : MultiByteToWideChar(CP_ACP, 0, narrow.data(), static_cast<int>(narrow.size()),
                                                          wide.data(), static_cast<int>(wide.size()));
  wide.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
  return wide;
}

void readPath(const TiXmlElement& root, const char* key, std::wstring& field) {
  if (const auto text = elementText(root, key)) {
    field = wideText(*text);
  }
}

void readSelectionMode(const TiXmlElement& root, int& field) {
  const auto text = elementText(root, "selectionMode");
  if (text == "automatic") {
    field = kAutomaticSelection;
  } else if (text == "manual") {
    field = kManualSelection;
  }
}

// The path in the system code page, cut to the file's bound at a whole character. Best-fit replacement is wanted here.
std::string narrowPath(const std::wstring& path) {
  if (path.empty()) {
    return {};
  }
  std::string narrow(path.size() * 4, '\0');
  const int wideLength = static_cast<int>(path.size());
  const int size = static_cast<int>(narrow.size());
  int length =
      WideCharToMultiByte(CP_ACP, WC_COMPOSITECHECK, path.data(), wideLength, narrow.data(), size, nullptr, nullptr);
  if (length == 0) {
    // UTF-8 as the system code page takes no flags.
    length = WideCharToMultiByte(CP_ACP, 0, path.data(), wideLength, narrow.data(), size, nullptr, nullptr);
  }
  narrow.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
  truncateWhole(narrow, kPathBuffer - 1);
  return narrow;
}

void addElement(TiXmlElement& root, const char* key, const std::string& text) {
  auto element = std::make_unique<TiXmlElement>(key);
  element->LinkEndChild(new TiXmlText(text));
  root.LinkEndChild(element.release());
}

std::string qualityText(double quality) {
  std::array<char, kFixedCapacity> text{};
  return {text.data(), writeFixed(text.data(), text.data() + text.size(), quality)};
}

const char* boolText(bool value) { return value ? "true" : "false"; }

}  // namespace

void loadSettings(PluginSettings& settings) {
  const KeepWhiteSpace keepWhiteSpace;
  TiXmlDocument document(kSettingsFile);
  if (!isFitForParsing(kSettingsFile)) {
    return;
  }
  // The file holds bytes of the system code page. Taken for UTF-8, as a declaration without an encoding otherwise is,
  // an accented letter would swallow the bytes after it.
  if (!document.LoadFile(TIXML_ENCODING_LEGACY)) {
    return;
  }
  const TiXmlElement* root = document.FirstChildElement();
  if (root == nullptr) {
    return;
  }
  if (const auto text = elementText(*root, "tessellationQuality")) {
    settings.tessellationQuality = readDouble(*text);
  }
  if (const auto text = elementText(*root, "upAxis")) {
    settings.upAxis = readInt(*text);
  }
  readSelectionMode(*root, settings.selectionMode);
  readBool(*root, "includeNURBS", settings.includeNURBS);
  readBool(*root, "separateMaterials", settings.separateMaterials);
  readBool(*root, "promptForMechanism", settings.promptForMechanism);
  readPath(*root, "exportPath", settings.exportPath);
  readPath(*root, "fraPath", settings.fraPath);
}

void saveSettings(const PluginSettings& settings) {
  TiXmlDocument document;
  document.LinkEndChild(new TiXmlDeclaration("1.0", "", ""));
  auto* root = new TiXmlElement("rendara_plugin_settings");
  document.LinkEndChild(root);
  addElement(*root, "tessellationQuality", qualityText(settings.tessellationQuality));
  addElement(*root, "upAxis", std::to_string(settings.upAxis));
  addElement(*root, "selectionMode", settings.selectionMode != kAutomaticSelection ? "manual" : "automatic");
  addElement(*root, "includeNURBS", boolText(settings.includeNURBS));
  addElement(*root, "separateMaterials", boolText(settings.separateMaterials));
  addElement(*root, "promptForMechanism", boolText(settings.promptForMechanism));
  addElement(*root, "exportPath", narrowPath(settings.exportPath));
  addElement(*root, "fraPath", narrowPath(settings.fraPath));
  document.SaveFile(kSettingsFile);
}

}  // namespace rendara
