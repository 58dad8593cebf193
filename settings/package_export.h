// What the user sees of a package export: the choice of the file and the word that it is done.
#pragma once

#include <optional>
#include <string>

namespace rendara {

// The last path taken apart for the file dialog, each part cut to the host's size (259 and 39 characters).
struct DialogPath {
  std::wstring directory;
  std::wstring name;
};

// Split at the last backslash; without one the whole path is the directory.
DialogPath splitForDialog(const std::wstring& path);

// Asks for the package file. Nothing when the user cancels; the empty text when the dialog fails otherwise.
std::optional<std::wstring> askPackagePath(const std::wstring& lastPath);

// The modal dialog "ExportFinished", until its button is pressed.
void showExportFinished();

}  // namespace rendara
