#include "settings/animation_dialog.h"

#include "settings/cad_text.h"
#include "settings/dialog_building.h"
#include "settings/file_choice.h"
#include "settings/messages.h"

namespace rendara {
namespace {

constexpr char kAnimationDialog[] = "Rendara_Animation";
constexpr char kLayout[] = "Rendara_Animation_Layout";
constexpr char kPanel[] = "Rendara_Animation_Inputpanel";
constexpr char kAcceptLayout[] = "Rendara_Animation_OK_Layout";
constexpr char kExportButton[] = "Rendara_Animation_Export";

char* animationDialog() { return toolkitText(kAnimationDialog); }

// The file in one row: what it is, its path, and the button that looks for it.
void addFileRow(const std::wstring& lastPath, const AnimationDialogActions& actions) {
  char* const layout = toolkitText(kLayout);
  ProUIGridopts layoutCell = cell(0, 0);
  ProUIDialogLayoutAdd(animationDialog(), layout, &layoutCell);

  char* const label = toolkitText("Rendara_Animation_Label");
  ProUIGridopts labelCell = cell(0, 0);
  ProUILayoutLabelAdd(animationDialog(), layout, label, &labelCell);
  ProUILabelTextSet(animationDialog(), label, MessageText("rendaraAnimationLabel").text());

  ProUIGridopts panelCell = cell(1, 0);
  ProUILayoutInputpanelAdd(animationDialog(), layout, toolkitText(kPanel), &panelCell);
  ProUIInputpanelValueSet(animationDialog(), toolkitText(kPanel), toolkitText(lastPath.c_str()));

  char* const browse = toolkitText("Rendara_Animation_Browse");
  ProUIGridopts browseCell = cell(2, 0);
  ProUILayoutPushbuttonAdd(animationDialog(), layout, browse, &browseCell);
  ProUIPushbuttonTextSet(animationDialog(), browse, MessageText("rendaraBrowse").text());
  ProUIPushbuttonActivateActionSet(animationDialog(), browse, actions.browse, actions.data);
}

void addButtonRow(const AnimationDialogActions& actions) {
  ProUIGridopts separatorCell = cell(0, 1);
  ProUIDialogSeparatorAdd(animationDialog(), toolkitText("Rendara_OK_Separator"), &separatorCell);

  char* const layout = toolkitText(kAcceptLayout);
  ProUIGridopts layoutCell = cell(0, 2);
  ProUIDialogLayoutAdd(animationDialog(), layout, &layoutCell);

  char* const accept = toolkitText(kExportButton);
  ProUIGridopts acceptCell = cell(0, 0);
  ProUILayoutPushbuttonAdd(animationDialog(), layout, accept, &acceptCell);
  ProUIPushbuttonTextSet(animationDialog(), accept, MessageText("rendaraOk").text());
  ProUIPushbuttonHelptextSet(animationDialog(), accept, MessageText("rendaraAnimationExportHelp").text());
  ProUIPushbuttonActivateActionSet(animationDialog(), accept, actions.accept, actions.data);

  char* const cancel = toolkitText("Rendara_Animation_Cancel");
  ProUIGridopts cancelCell = cell(1, 0);
  ProUILayoutPushbuttonAdd(animationDialog(), layout, cancel, &cancelCell);
  ProUIPushbuttonTextSet(animationDialog(), cancel, MessageText("rendaraCancel").text());
  ProUIPushbuttonActivateActionSet(animationDialog(), cancel, actions.cancel, actions.data);
}

}  // namespace

bool runAnimationDialog(const std::wstring& lastPath, const AnimationDialogActions& actions) {
  const CadDialog dialog(kAnimationDialog);
  addFileRow(lastPath, actions);
  addButtonRow(actions);
  ProUIDialogDisableResizing(dialog.name());
  return dialog.run();
}

void browseFrameFile(const std::wstring& lastPath) {
  const auto chosen = askFileToOpen(L"Locate .fra animation", L"*.fra", lastPath);
  if (chosen && !chosen->empty()) {
    ProUIInputpanelValueSet(animationDialog(), toolkitText(kPanel), toolkitText(chosen->c_str()));
    ProUIPushbuttonEnable(animationDialog(), toolkitText(kExportButton));
  }
}

std::wstring framePathInDialog() {
  CadText path;
  ProUIInputpanelWidestringGet(animationDialog(), toolkitText(kPanel), path.receive());
  return path.text();
}

void exitAnimationDialog(int status) { ProUIDialogExit(animationDialog(), status); }

}  // namespace rendara
