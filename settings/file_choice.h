// The host's file dialogs, opened where the last file was.
#pragma once

#include <optional>
#include <string>

namespace rendara {

// The last path taken apart for a file dialog, each part cut to the host's size (259 and 39 characters).
struct DialogPath {
  std::wstring directory;
  std::wstring name;
};

// Split at the last backslash; without one the whole path is the directory.
DialogPath splitForDialog(const std::wstring& path);

// The chosen path, at most 259 characters. Nothing when the user cancels; the empty text when the dialog fails
// otherwise.
std::optional<std::wstring> askFileToSave(const wchar_t* title, const wchar_t* filter, const std::wstring& lastPath);
std::optional<std::wstring> askFileToOpen(const wchar_t* title, const wchar_t* filter, const std::wstring& lastPath);

}  // namespace rendara
