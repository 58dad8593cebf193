// The program but for its main().
#pragma once

#include <functional>

#include "standin/app/failure.h"
#include "standin/app/program_options.h"

namespace standin {

// Opens the session in a window and returns when that is closed. May throw Failure.
using WindowProgram = std::function<void(const CommonOptions&, const WindowOptions&)>;

// Runs what the command line says. Results go to standard output, one line on standard error says what failed.
// `window` is empty in a build that has none.
ExitCode runProgram(int argumentCount, const char* const* arguments, const WindowProgram& window = {});

}  // namespace standin
