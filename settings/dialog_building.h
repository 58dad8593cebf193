// What every dialog of the plug-in is built with.
#pragma once

#include "platform/creo_handles.h"

namespace rendara {

inline constexpr int kAccepted = 0;
inline constexpr int kCancelled = -3;

// A dialog without a resource file, from its creation to its end. Results of the host are not looked at: a component
// that could not be made is missing, nothing more.
class CadDialog {
 public:
  explicit CadDialog(const char* name) : name_(toolkitText(name)) { ProUIDialogCreate(name_, nullptr); }
  CadDialog(const CadDialog&) = delete;
  CadDialog& operator=(const CadDialog&) = delete;
  ~CadDialog() { ProUIDialogDestroy(name_); }

  char* name() const { return name_; }
  // Shows it until it is exited; true when it was accepted.
  bool run() const {
    int status = kCancelled;
    ProUIDialogActivate(name_, &status);
    return status == kAccepted;
  }

 private:
  char* name_;
};

// Cells of the grid, counted from 0.
inline ProUIGridopts cell(int column, int row, int columns = 1) {
  ProUIGridopts options{};
  options.column = column;
  options.row = row;
  options.horz_cells = columns;
  options.vert_cells = 1;
  return options;
}

}  // namespace rendara
