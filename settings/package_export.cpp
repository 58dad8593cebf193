#include "settings/package_export.h"

#include <algorithm>
#include <cstddef>

#include "platform/creo_handles.h"
#include "settings/messages.h"

namespace rendara {
namespace {

constexpr char kDialog[] = "ExportFinished";
constexpr char kLabel[] = "ExportFinishedLabel";
constexpr char kButton[] = "ExportOk";

template <std::size_t size>
void copyTerminated(const std::wstring& text, wchar_t (&buffer)[size]) {
  const std::size_t length = std::min(text.size(), size - 1);
  std::copy_n(text.begin(), length, buffer);
  buffer[length] = L'\0';
}

void exitDialog(char*, char*, ProAppData) { ProUIDialogExit(toolkitText(kDialog), 0); }

ProUIGridopts cell(int column, int row) {
  ProUIGridopts options{};
  options.column = column;
  options.row = row;
  options.horz_cells = 1;
  options.vert_cells = 1;
  return options;
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

std::optional<std::wstring> askPackagePath(const std::wstring& lastPath) {
  const DialogPath last = splitForDialog(lastPath);
  ProPath directory{};
  ProFileName name{};
  ProPath chosen{};
  copyTerminated(last.directory, directory);
  copyTerminated(last.name, name);
  const ProError status =
      ProFileSave(toolkitText(L"Save as rpk"), toolkitText(L"*.rpk"), nullptr, nullptr, directory, name, chosen);
  if (status == PRO_TK_USER_ABORT) {
    return std::nullopt;
  }
  chosen[PRO_PATH_SIZE - 1] = L'\0';
  return chosen;
}

void showExportFinished() {
  char* const dialog = toolkitText(kDialog);
  char* const label = toolkitText(kLabel);
  char* const button = toolkitText(kButton);
  ProUIDialogCreate(dialog, nullptr);
  ProUIGridopts labelCell = cell(0, 0);
  ProUIDialogLabelAdd(dialog, label, &labelCell);
  ProUILabelTextSet(dialog, label, MessageText("rendaraExportFinishedLabel").text());
  ProUIGridopts buttonCell = cell(0, 1);
  ProUIDialogPushbuttonAdd(dialog, button, &buttonCell);
  ProUIPushbuttonTextSet(dialog, button, MessageText("rendaraOK").text());
  ProUIPushbuttonActivateActionSet(dialog, button, exitDialog, nullptr);
  int status = 0;
  ProUIDialogActivate(dialog, &status);
  ProUIDialogDestroy(dialog);
}

}  // namespace rendara
