#include "settings/package_export.h"

#include "settings/dialog_building.h"
#include "settings/file_choice.h"
#include "settings/messages.h"

namespace rendara {
namespace {

constexpr char kFinishedDialog[] = "ExportFinished";

void exitDialog(char*, char*, ProAppData) { ProUIDialogExit(toolkitText(kFinishedDialog), kAccepted); }

}  // namespace

std::optional<std::wstring> askPackagePath(const std::wstring& lastPath) {
  return askFileToSave(L"Save as rpk", L"*.rpk", lastPath);
}

void showExportFinished() {
  const CadDialog dialog(kFinishedDialog);
  char* const label = toolkitText("ExportFinishedLabel");
  char* const button = toolkitText("ExportOk");
  ProUIGridopts labelCell = cell(0, 0);
  ProUIDialogLabelAdd(dialog.name(), label, &labelCell);
  ProUILabelTextSet(dialog.name(), label, MessageText("rendaraExportFinishedLabel").text());
  ProUIGridopts buttonCell = cell(0, 1);
  ProUIDialogPushbuttonAdd(dialog.name(), button, &buttonCell);
  ProUIPushbuttonTextSet(dialog.name(), button, MessageText("rendaraOK").text());
  ProUIPushbuttonActivateActionSet(dialog.name(), button, exitDialog, nullptr);
  dialog.run();
}

}  // namespace rendara
