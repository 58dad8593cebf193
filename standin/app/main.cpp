#include "standin/app/program.h"

int main(int argumentCount, char** arguments) {
  return static_cast<int>(standin::runProgram(argumentCount, arguments));
}
