#include <fcntl.h>
#include <io.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <system_error>

#include "platform/windows_api.h"
#include "standin/renderer/nameless_file.h"

namespace standin {

// It has a name after all, and the system deletes it.
Descriptor makeNamelessFile() {
  static std::atomic<unsigned> made = 0;
  std::error_code error;
  const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
  const std::wstring stem = L"rendara-" + std::to_wstring(GetCurrentProcessId()) + L"-";
  HANDLE handle = INVALID_HANDLE_VALUE;
  // A process of the same number may have been killed with the machine.
  for (int attempt = 0; attempt < 100 && handle == INVALID_HANDLE_VALUE; ++attempt) {
    const std::wstring path = folder / (stem + std::to_wstring(GetTickCount()) + L"-" + std::to_wstring(++made));
    handle = CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, FILE_SHARE_DELETE, nullptr, CREATE_NEW,
                         FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (handle == INVALID_HANDLE_VALUE && GetLastError() != ERROR_FILE_EXISTS) return {};
  }
  if (handle == INVALID_HANDLE_VALUE) return {};
  Descriptor file(_open_osfhandle(reinterpret_cast<intptr_t>(handle), _O_BINARY | _O_RDWR));
  if (!file) CloseHandle(handle);
  return file;
}

std::shared_ptr<const void> mapFile(Descriptor file, std::size_t size) {
  const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(file.get()));  // NOLINT(performance-no-int-to-ptr)
  const HANDLE mapping = CreateFileMappingW(handle, nullptr, PAGE_READONLY, 0, 0, nullptr);
  if (mapping == nullptr) return nullptr;
  const void* const data = MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, size);
  CloseHandle(mapping);
  if (data == nullptr) return nullptr;
  // A file that is looked at cannot be deleted, so it is closed last.
  const auto held = std::make_shared<Descriptor>(std::move(file));
  return {data, [held](const void* view) { UnmapViewOfFile(view); }};
}

}  // namespace standin
