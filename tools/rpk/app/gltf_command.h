// rpk gltf: a package as binary glTF.
#pragma once

#include "tools/rpk/app/program.h"

namespace rpk {

void addGltfCommand(CLI::App& program, Work& work);

}  // namespace rpk
