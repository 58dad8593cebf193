// The program but for its main().
#pragma once

#include "standin/app/failure.h"

namespace standin {

// Runs what the command line says. Results go to standard output, one line on standard error says what failed.
ExitCode runProgram(int argumentCount, const char* const* arguments);

}  // namespace standin
