#include "settings/file_choice.h"

#include <algorithm>
#include <cstddef>

#include "platform/creo_handles.h"

namespace rendara {
namespace {

using FileDialog = decltype(ProFileSave);

template <std::size_t size>
void copyTerminated(const std::wstring& text, wchar_t (&buffer)[size]) {
  const std::size_t length = std::min(text.size(), size - 1);
  std::copy_n(text.begin(), length, buffer);
  buffer[length] = L'\0';
}

std::optional<std::wstring> ask(FileDialog& show, const wchar_t* title, const wchar_t* filter,
                                const std::wstring& lastPath) {
  const DialogPath last = splitForDialog(lastPath);
  ProPath directory{};
  ProFileName name{};
  ProPath chosen{};
  copyTerminated(last.directory, directory);
  copyTerminated(last.name, name);
  if (show(toolkitText(title), toolkitText(filter), nullptr, nullptr, directory, name, chosen) == PRO_TK_USER_ABORT) {
    return std::nullopt;
  }
  chosen[PRO_PATH_SIZE - 1] = L'\0';
  return chosen;
}

}  // namespace

DialogPath splitForDialog(const std::wstring& path) {
  const std::wstring whole = path.substr(0, PRO_PATH_SIZE - 1);
  const auto backslash = whole.rfind(L'\\');
  if (backslash == std::wstring::npos) {
    return {whole, L""};
  }
  return {whole.substr(0, backslash), whole.substr(backslash + 1, PRO_FILE_NAME_SIZE - 1)};
}

std::optional<std::wstring> askFileToSave(const wchar_t* title, const wchar_t* filter, const std::wstring& lastPath) {
  return ask(ProFileSave, title, filter, lastPath);
}

std::optional<std::wstring> askFileToOpen(const wchar_t* title, const wchar_t* filter, const std::wstring& lastPath) {
  return ask(ProFileOpen, title, filter, lastPath);
}

}  // namespace rendara
