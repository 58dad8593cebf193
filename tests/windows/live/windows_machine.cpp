#include "tests/windows/live/windows_machine.h"

#include <chrono>
#include <cstdlib>
#include <functional>
#include <set>
#include <stdexcept>
#include <thread>

#include "core/instance_list.h"
#include "standin/renderer/client.h"
#include "standin/renderer/installation.h"
#include "standin/renderer/instance_list.h"

namespace rendara::testing {
namespace {

namespace fs = std::filesystem;

void waitFor(const std::string& what, const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) {
      throw std::runtime_error("waited in vain for " + what);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}

void installThese(const fs::path& program, const fs::path& library) {
  standin::Installation installation;
  installation.program = program;
  installation.binFolder = library;
  // None outlives a test that is ended.
  installation.options["idle"] = "120";
  standin::install(installation);
}

// Port and process of each renderer on the list in the folder.
std::map<int, DWORD> renderersIn(const fs::path& folder) {
  std::map<int, DWORD> found;
  const std::string text = standin::InstanceList(folder).text();
  constexpr std::string_view kTag = "<rendara_instance>";
  for (std::size_t at = text.find(kTag); at != std::string::npos; at = text.find(kTag, at + 1)) {
    const std::string one = text.substr(at, text.find("</rendara_instance>", at) - at);
    const std::set<int> ports = parseInstanceList(one, 5);
    const std::size_t process = one.find("<pid>");
    if (!ports.empty() && process != std::string::npos) {
      found.emplace(*ports.begin(), static_cast<DWORD>(std::stoul(one.substr(process + 5))));
    }
  }
  return found;
}

void endProcess(DWORD id) {
  const HANDLE process = OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, id);
  if (process == nullptr) {
    return;
  }
  TerminateProcess(process, 1);
  WaitForSingleObject(process, 10000);
  CloseHandle(process);
}

void check(LSTATUS status) {
  if (status != ERROR_SUCCESS) {
    throw std::runtime_error("the registry refuses, error " + std::to_string(status));
  }
}

}  // namespace

bool isUnderWine() {
  return reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version")) != nullptr;
}

std::wstring wideText(const std::string& utf8) { return fs::path(std::u8string(utf8.begin(), utf8.end())).wstring(); }

std::vector<BYTE> textBytes(std::wstring_view text) {
  const auto* bytes = reinterpret_cast<const BYTE*>(text.data());
  return {bytes, bytes + text.size() * sizeof(wchar_t)};
}

WindowsMachine::WindowsMachine() {
  install();
  enter(path());
}

WindowsMachine::~WindowsMachine() {
  for (const fs::path& folder : {path(), path() / "elsewhere"}) {
    for (const auto& [port, process] : renderersIn(folder)) {
      endProcess(process);
    }
  }
  standin::uninstall();
}

void WindowsMachine::install() {
  removeKey(HKEY_LOCAL_MACHINE, kVendorKey);
  removeKey(HKEY_CURRENT_USER, kVendorKey);
  installThese(builtProgram(), builtLibrary().parent_path());
}

void WindowsMachine::installIn(const fs::path& folder) {
  fs::create_directories(folder);
  fs::copy_file(builtProgram(), folder / builtProgram().filename());
  fs::copy_file(builtLibrary(), folder / builtLibrary().filename());
  installThese(folder / builtProgram().filename(), folder);
}

void WindowsMachine::set(HKEY hive, const std::wstring& key, const wchar_t* name, DWORD type,
                         const std::vector<BYTE>& data) {
  HKEY made = nullptr;
  check(RegCreateKeyExW(hive, key.c_str(), 0, nullptr, 0, KEY_SET_VALUE | KEY_WOW64_32KEY, nullptr, &made, nullptr));
  // The registry looks at the character behind a text and takes a terminator found there into the value.
  std::vector<BYTE> followed = data;
  followed.insert(followed.end(), sizeof(wchar_t), 0xFF);
  const LSTATUS status = RegSetValueExW(made, name, 0, type, followed.data(), static_cast<DWORD>(data.size()));
  RegCloseKey(made);
  check(status);
}

void WindowsMachine::setText(HKEY hive, const std::wstring& key, const wchar_t* name, std::wstring_view text) {
  set(hive, key, name, REG_SZ, textBytes(std::wstring(text) + L'\0'));
}

void WindowsMachine::setNumber(HKEY hive, const std::wstring& key, const wchar_t* name, DWORD number) {
  const auto* bytes = reinterpret_cast<const BYTE*>(&number);
  set(hive, key, name, REG_DWORD, {bytes, bytes + sizeof number});
}

void WindowsMachine::remove(HKEY hive, const std::wstring& key, const wchar_t* name) {
  check(RegDeleteKeyValueW(hive, key.c_str(), name));
}

void WindowsMachine::removeKey(HKEY hive, const std::wstring& key) {
  const LSTATUS status = RegDeleteTreeW(hive, key.c_str());
  if (status != ERROR_FILE_NOT_FOUND) {
    check(status);
  }
}

void WindowsMachine::enter(const fs::path& folder) { _wputenv_s(L"RENDARA_MACHINE", folder.c_str()); }

std::map<int, DWORD> WindowsMachine::renderers() const { return renderersIn(path()); }

int WindowsMachine::startRenderer(const fs::path& folder) const {
  const auto before = renderersIn(folder);
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  enter(folder);
  const BOOL started =
      CreateProcessW(builtProgram().c_str(), nullptr, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process);
  enter(path());
  if (started == 0) {
    throw std::runtime_error("no renderer can be started");
  }
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  waitFor("a renderer", [&] { return renderersIn(folder).size() > before.size(); });
  for (const auto& [port, id] : renderersIn(folder)) {
    if (!before.contains(port)) {
      return port;
    }
  }
  return 0;
}

void WindowsMachine::killRenderer(int port) const {
  endProcess(renderers().at(port));
  waitFor("the end of a renderer", [&] { return !renderers().contains(port); });
}

nlohmann::json WindowsMachine::status(int port) { return nlohmann::json::parse(standin::askStatus(port)); }

}  // namespace rendara::testing
