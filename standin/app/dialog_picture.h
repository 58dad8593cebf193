// A dialog as text.
#pragma once

#include <string>

#include "standin/cad/dialog.h"

namespace standin {

// The dialog's grid in a frame, columns that would make it too wide in bands below each other; then a line for each
// component that can be set or pressed: name, kind, value, what it can be, help. UTF-8, ends with a line break.
std::string dialogPicture(const Dialog& dialog);

}  // namespace standin
