// The user's choices, and the two values that go with them without being saved.
#pragma once

#include <string>

namespace rendara {

enum SelectionMode : int { kAutomaticSelection = 0, kManualSelection = 1 };

struct PluginSettings {
  double tessellationQuality = 0.2;  // 0 coarse to 1 fine
  int upAxis = 1;                    // 0 to 5: x, y, z, -x, -y, -z; other values are kept and sent as they are
  int selectionMode = kAutomaticSelection;
  bool promptForMechanism = false;
  std::wstring exportPath;  // the last package
  std::wstring fraPath;     // the last mechanism frame file
  bool includeNURBS = true;
  bool separateMaterials = true;

  // Not saved:
  double previousTessellationQuality = 0.2;  // the quality before the last change through the setter
  bool savePackage = false;

  // A quality from a dialog has single precision; what was set before is remembered.
  void setTessellationQuality(float quality) {
    previousTessellationQuality = tessellationQuality;
    tessellationQuality = static_cast<double>(quality);
  }
  void setSelectionMode(bool manual) { selectionMode = manual ? kManualSelection : kAutomaticSelection; }
  void setUpAxis(int axis) { upAxis = axis; }
  void setIncludeNURBS(bool include) { includeNURBS = include; }
  void setSeparateMaterials(bool separate) { separateMaterials = separate; }
  void setPromptForMechanism(bool prompt) { promptForMechanism = prompt; }
  void setSavePackage(bool save) { savePackage = save; }
  void setExportPath(const std::wstring& path) { exportPath = path; }
  void setFraPath(const std::wstring& path) { fraPath = path; }
};

}  // namespace rendara
