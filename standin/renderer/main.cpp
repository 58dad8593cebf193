#include "standin/renderer/program.h"

int main(int argumentCount, char** arguments) { return standin::runRenderer(argumentCount, arguments); }
