// This machine as a test needs it: the real registry without or with an installed renderer, a list of renderers of its
// own, and the renderers that run.
#pragma once

#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "platform/windows_api.h"
#include "standin/renderer/process.h"
#include "tests/support/temporary_folder.h"

namespace rendara::testing {

// The registry of a machine that somebody works with must not be changed: there the tests are to be skipped.
bool isUnderWine();

std::wstring wideText(const std::string& utf8);

// The bytes of a text as the registry holds it, without its terminator.
std::vector<BYTE> textBytes(std::wstring_view text);

class WindowsMachine {
 public:
  // Installs, and starts with an empty list.
  WindowsMachine();
  // Ends the renderers of this machine, and uninstalls.
  ~WindowsMachine();
  WindowsMachine(const WindowsMachine&) = delete;
  WindowsMachine& operator=(const WindowsMachine&) = delete;

  const std::filesystem::path& path() const { return folder_.path(); }
  // What was built with this program.
  static std::filesystem::path builtProgram() { return builtFolder() / "renderer-standin.exe"; }
  static std::filesystem::path builtPlugin() { return builtFolder() / "rendara_creo.dll"; }
  static std::filesystem::path builtLibrary() { return builtFolder().parent_path() / "lib" / "vntrendaralive32.so"; }

  // Empties the registry of everything of the renderer's, and installs the one that was built.
  static void install();
  // Copies program and library into the folder, which it makes, and tells the registry of these.
  static void installIn(const std::filesystem::path& folder);

  // Values in the view of programs of 32 bits. Setting makes the key.
  static void set(HKEY hive, const std::wstring& key, const wchar_t* name, DWORD type, const std::vector<BYTE>& data);
  static void setText(HKEY hive, const std::wstring& key, const wchar_t* name, std::wstring_view text);
  static void setNumber(HKEY hive, const std::wstring& key, const wchar_t* name, DWORD number);
  static void remove(HKEY hive, const std::wstring& key, const wchar_t* name);
  static void removeKey(HKEY hive, const std::wstring& key);

  // What runs from now on runs with the list in this folder.
  static void enter(const std::filesystem::path& folder);
  // Port and process of each renderer on the list of this machine.
  std::map<int, DWORD> renderers() const;
  // Starts a renderer that is on the list in that folder, and gives its port.
  int startRenderer(const std::filesystem::path& folder) const;
  // Ends it as a crash does.
  void killRenderer(int port) const;
  static nlohmann::json status(int port);

 private:
  static std::filesystem::path builtFolder() { return standin::programPath().parent_path(); }

  TemporaryFolder folder_;
};

inline const std::wstring kVendorKey = L"SOFTWARE\\Vantor";
inline const std::wstring kVersionKey = L"SOFTWARE\\Vantor\\Rendara 5";
// The port is looked for under the version's first byte.
inline const std::wstring kPortKey = L"SOFTWARE\\Vantor\\R";

}  // namespace rendara::testing
