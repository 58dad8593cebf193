// What the Windows operations handed out, and what the plug-in did wrong with it.
#pragma once

#include <string>
#include <vector>

namespace standin {

// A line for every key, process, thread and load of a module that was not given back: keys first, modules last.
std::vector<std::string> openHandles();

// A line for every misuse since the last call of forgetWindowsMisuse, "operation: what was wrong", without repeats.
std::vector<std::string> windowsMisuse();
void forgetWindowsMisuse();

}  // namespace standin
