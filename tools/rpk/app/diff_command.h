// rpk diff: what two packages differ in.
#pragma once

#include "tools/rpk/app/program.h"

namespace rpk {

void addDiffCommand(CLI::App& program, Work& work);

}  // namespace rpk
