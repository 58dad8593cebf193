// `creo-standin run SCRIPT`, and the prompt.
#pragma once

#include <ostream>

#include "standin/app/failure.h"
#include "standin/app/program_options.h"

namespace standin {

// Throws Failure; an error of a line of a script is told by itself and gives the exit code.
ExitCode runScript(const CommonOptions& common, const ScriptOptions& options, std::ostream& output,
                   std::ostream& errors);

}  // namespace standin
