// On Windows itself: what the headers of this folder tell of the system. Nothing is replaced or watched there.
#include "platform/windows_api.h"
#include "standin/windows/code_page.h"
#include "standin/windows/handles.h"

namespace standin {

bool setSystemCodePage(unsigned codePage) { return codePage == GetACP(); }

unsigned systemCodePage() { return GetACP(); }

std::wstring wideFromUtf8(const std::string& text) {
  const int size = static_cast<int>(text.size());
  std::wstring wide(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0)), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), static_cast<int>(wide.size()));
  return wide;
}

std::string utf8FromWide(const std::wstring& text) {
  const int size = static_cast<int>(text.size());
  const int length = WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<std::size_t>(length), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), size, narrow.data(), length, nullptr, nullptr);
  return narrow;
}

std::optional<FileFailure> fileFailure() { return std::nullopt; }
void forgetFileFailures() {}

std::vector<std::string> openHandles() { return {}; }
std::vector<std::string> windowsMisuse() { return {}; }
void forgetWindowsMisuse() {}

}  // namespace standin
