#include "tools/rpk/app/program.h"

int main(int argumentCount, char** arguments) { return static_cast<int>(rpk::runProgram(argumentCount, arguments)); }
