// Modules that LoadLibraryW loaded.
#pragma once

#include <string>
#include <vector>

namespace standin {

// A line for every load that was not undone, as in "the module /path/of/library.so".
std::vector<std::string> loadedModules();

}  // namespace standin
