// The folder that stands for one Windows machine: its registry, and what the programs on it know of each other.
#pragma once

#include <filesystem>

namespace standin {

// $RENDARA_MACHINE; without it rendara-standin in $XDG_STATE_HOME, without that in ~/.local/state. Nothing is made by
// asking. Throws std::runtime_error when RENDARA_MACHINE is not an absolute path, since programs that work in other
// folders would not meet, or when there is no home folder.
std::filesystem::path machineFolder();

}  // namespace standin
