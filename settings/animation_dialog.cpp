#include "settings/animation_dialog.h"

#include "settings/cad_text.h"
#include "settings/dialog_building.h"
#include "settings/file_choice.h"
#include "settings/messages.h"

namespace rendara {
namespace {

constexpr char kDialog[] = "Rendara_Animation";
constexpr char kLayout[] = "Rendara_Animation_Layout";
constexpr char kPanel[] = "Rendara_Animation_Inputpanel";
constexpr char kButtonLayout[] = "Rendara_Animation_OK_Layout";
constexpr char kExportButton[] = "Rendara_Animation_Export";

char* dialogName() { return toolkitText(kDialog); }

// The file in one row: what it is, its path, and the button that looks for it.
void addFileRow(const std::wstring& lastPath, const AnimationDialogActions& actions) {
  char* const layout = toolkitText(kLayout);
  ProUIGridopts layoutCell = cell(0, 0);
  ProUIDialogLayoutAdd(dialogName(), layout, &layoutCell);

  char* const label = toolkitText("Rendara_Animation_Label");
  ProUIGridopts labelCell = cell(0, 0);
  ProUILayoutLabelAdd(dialogName(), layout, label, &labelCell);
  ProUILabelTextSet(dialogName(), label, MessageText("rendaraAnimationLabel").text());

  ProUIGridopts panelCell = cell(1, 0);
  ProUILayoutInputpanelAdd(dialogName(), layout, toolkitText(kPanel), &panelCell);
  ProUIInputpanelValueSet(dialogName(), toolkitText(kPanel), toolkitText(lastPath.c_str()));

  char* const browse = toolkitText("Rendara_Animation_Browse");
  ProUIGridopts browseCell = cell(2, 0);
  ProUILayoutPushbuttonAdd(dialogName(), layout, browse, &browseCell);
  ProUIPushbuttonTextSet(dialogName(), browse, MessageText("rendaraBrowse").text());
  ProUIPushbuttonActivateActionSet(dialogName(), browse, actions.browse, actions.data);
}

void addButtonRow(const AnimationDialogActions& actions) {
  ProUIGridopts separatorCell = cell(0, 1);
  ProUIDialogSeparatorAdd(dialogName(), toolkitText("Rendara_OK_Separator"), &separatorCell);

  char* const layout = toolkitText(kButtonLayout);
  ProUIGridopts layoutCell = cell(0, 2);
  ProUIDialogLayoutAdd(dialogName(), layout, &layoutCell);

  char* const accept = toolkitText(kExportButton);
  ProUIGridopts acceptCell = cell(0, 0);
  ProUILayoutPushbuttonAdd(dialogName(), layout, accept, &acceptCell);
  ProUIPushbuttonTextSet(dialogName(), accept, MessageText("rendaraOk").text());
  ProUIPushbuttonHelptextSet(dialogName(), accept, MessageText("rendaraAnimationExportHelp").text());
  ProUIPushbuttonActivateActionSet(dialogName(), accept, actions.accept, actions.data);

  char* const cancel = toolkitText("Rendara_Animation_Cancel");
  ProUIGridopts cancelCell = cell(1, 0);
  ProUILayoutPushbuttonAdd(dialogName(), layout, cancel, &cancelCell);
  ProUIPushbuttonTextSet(dialogName(), cancel, MessageText("rendaraCancel").text());
  ProUIPushbuttonActivateActionSet(dialogName(), cancel, actions.cancel, actions.data);
}

}  // namespace

bool runAnimationDialog(const std::wstring& lastPath, const AnimationDialogActions& actions) {
  const CadDialog dialog(kDialog);
  addFileRow(lastPath, actions);
  addButtonRow(actions);
  ProUIDialogDisableResizing(dialog.name());
  return dialog.run();
}

void browseFrameFile(const std::wstring& lastPath) {
  const auto chosen = askFileToOpen(L"Locate .fra animation", L"*.fra", lastPath);
  if (chosen && !chosen->empty()) {
    ProUIInputpanelValueSet(dialogName(), toolkitText(kPanel), toolkitText(chosen->c_str()));
    ProUIPushbuttonEnable(dialogName(), toolkitText(kExportButton));
  }
}

std::wstring framePathInDialog() {
  CadText path;
  ProUIInputpanelWidestringGet(dialogName(), toolkitText(kPanel), path.receive());
  return path.text();
}

void exitAnimationDialog(int status) { ProUIDialogExit(dialogName(), status); }

}  // namespace rendara
