// The program: one command, whose options and work live in a file of its own.
#pragma once

#include <functional>
#include <iosfwd>

#include "tools/rpk/app/failure.h"

namespace CLI {
class App;
}

namespace rpk {

// What a command does once its options are known. Results go to `out`; it throws Failure for what it cannot do.
using Work = std::function<ExitCode(std::ostream& out)>;

// Each adds a command to the program and, when that command is the one called, sets `work`.
using AddCommand = void (*)(CLI::App& program, Work& work);

// Never throws. Everything that goes wrong is one line on standard error and the exit code.
ExitCode runProgram(int argumentCount, const char* const* arguments);

}  // namespace rpk
