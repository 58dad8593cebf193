// The dialog "Rendara_Animation": which mechanism frame file goes with an export.
#pragma once

#include <string>

#include "platform/creo_toolkit.h"

namespace rendara {

// What the buttons call; all get the same data.
struct AnimationDialogActions {
  ProUIAction browse = nullptr;
  ProUIAction accept = nullptr;
  ProUIAction cancel = nullptr;
  ProAppData data = nullptr;
};

// Shows the dialog, with the path of the last file in it, until it is exited; true when it was accepted.
bool runAnimationDialog(const std::wstring& lastPath, const AnimationDialogActions& actions);

// The rest is for the actions, while the dialog runs.

// Lets the user choose a file, which then stands in the input panel. A cancelled choice changes nothing.
void browseFrameFile(const std::wstring& lastPath);

std::wstring framePathInDialog();

void exitAnimationDialog(int status);

}  // namespace rendara
