#include <cstdio>
#include <system_error>

#include "platform/windows_api.h"
#include "standin/renderer/process.h"
#include "standin/renderer/wake_up.h"

namespace standin {
namespace {

[[noreturn]] void fail(const char* what) {
  throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), what);
}

// Never freed: the system calls the handler from a thread of its own until the process is gone.
const WakeUp* stopWakeUp = nullptr;

BOOL WINAPI onConsoleEvent(DWORD) {
  stopWakeUp->wake();
  return TRUE;
}

}  // namespace

long processId() { return static_cast<long>(GetCurrentProcessId()); }

std::filesystem::path programPath() {
  // Paths have at most 32767 characters.
  std::wstring path(32768, L'\0');
  const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
  if (length == 0) fail("the program's file");
  path.resize(length);
  return path;
}

void leaveTerminal() {
  for (std::FILE* stream : {stdin, stdout, stderr}) {
    if (!std::freopen("NUL", "r+", stream)) throw std::runtime_error("NUL cannot be opened");
  }
  FreeConsole();  // none is no harm
}

SocketNumber stopRequest() {
  if (!stopWakeUp) {
    stopWakeUp = new WakeUp;
    if (SetConsoleCtrlHandler(onConsoleEvent, TRUE) == 0) fail("the console's handler");
  }
  return stopWakeUp->number();
}

}  // namespace standin
