// What the user sees of a package export: the choice of the file and the word that it is done.
#pragma once

#include <optional>
#include <string>

namespace rendara {

// Asks for the package file. Nothing when the user cancels; the empty text when the dialog fails otherwise.
std::optional<std::wstring> askPackagePath(const std::wstring& lastPath);

// The modal dialog "ExportFinished", until its button is pressed.
void showExportFinished();

}  // namespace rendara
