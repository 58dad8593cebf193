// What the program asks of a renderer that runs.
#pragma once

#include <string>

namespace standin {

// Both throw Failure(kOutput), with one line, when no renderer answers at the port.
std::string askStatus(int port);  // JSON
void askToQuit(int port);

}  // namespace standin
