// rpk info: what a package holds.
#pragma once

#include "tools/rpk/app/program.h"

namespace rpk {

void addInfoCommand(CLI::App& program, Work& work);

}  // namespace rpk
