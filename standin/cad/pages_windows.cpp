#include "platform/windows_api.h"
#include "standin/cad/pages.h"

namespace standin {
namespace {

bool (*repeatAccess)(const void* address) = nullptr;

LONG WINAPI handleFault(EXCEPTION_POINTERS* exception) {
  const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
  if (record.ExceptionCode != EXCEPTION_ACCESS_VIOLATION || record.NumberParameters < 2) {
    return EXCEPTION_CONTINUE_SEARCH;
  }
  const auto* address = reinterpret_cast<const void*>(record.ExceptionInformation[1]);
  return repeatAccess(address) ? EXCEPTION_CONTINUE_EXECUTION : EXCEPTION_CONTINUE_SEARCH;
}

}  // namespace

std::size_t pageSize() {
  static const std::size_t size = [] {
    SYSTEM_INFO system = {};
    GetSystemInfo(&system);
    return static_cast<std::size_t>(system.dwPageSize);
  }();
  return size;
}

char* reservePages(std::size_t size) {
  return static_cast<char*>(VirtualAlloc(nullptr, size, MEM_RESERVE, PAGE_NOACCESS));
}

void releasePages(char* begin, std::size_t) { VirtualFree(begin, 0, MEM_RELEASE); }

bool openPages(char* begin, std::size_t size) {
  DWORD before = 0;
  return VirtualAlloc(begin, size, MEM_COMMIT, PAGE_READWRITE) != nullptr &&
         VirtualProtect(begin, size, PAGE_READWRITE, &before) != 0;
}

void closePages(char* begin, std::size_t size) {
  // Pages that were never opened cannot be touched anyway, and the call then fails.
  DWORD before = 0;
  VirtualProtect(begin, size, PAGE_NOACCESS, &before);
}

void discardPages(char* begin, std::size_t size) { VirtualFree(begin, size, MEM_DECOMMIT); }

bool watchFaults(bool (*repeat)(const void* address)) {
  repeatAccess = repeat;
  return AddVectoredExceptionHandler(1, handleFault) != nullptr;
}

}  // namespace standin
