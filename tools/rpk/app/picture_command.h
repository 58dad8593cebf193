#pragma once

#include "tools/rpk/app/program.h"

namespace rpk {

void addPictureCommand(CLI::App& program, Work& work);

}  // namespace rpk
