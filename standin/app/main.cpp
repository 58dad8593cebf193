#include "standin/app/program.h"
#ifdef RENDARA_WINDOW
#include "standin/window/window_program.h"
#endif

int main(int argumentCount, char** arguments) {
  standin::WindowProgram window;
#ifdef RENDARA_WINDOW
  window = standin::runWindow;
#endif
  return static_cast<int>(standin::runProgram(argumentCount, arguments, window));
}
