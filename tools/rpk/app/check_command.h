// rpk check: whether a package holds together.
#pragma once

#include "tools/rpk/app/program.h"

namespace rpk {

void addCheckCommand(CLI::App& program, Work& work);

}  // namespace rpk
