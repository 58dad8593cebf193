// The program renderer-standin.
#pragma once

namespace standin {

// Gives the exit code.
int runRenderer(int argumentCount, const char* const* arguments);

}  // namespace standin
