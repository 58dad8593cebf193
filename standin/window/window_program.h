// `creo-standin --window`
#pragma once

#include "standin/app/program_options.h"

namespace standin {

// Opens the window, with the model when one is given, and returns when it is closed. Throws Failure, also when there is
// no display or the plug-in misused the session.
void runWindow(const CommonOptions& common, const WindowOptions& options);

}  // namespace standin
