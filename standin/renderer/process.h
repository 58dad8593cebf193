// This process, as its system knows it.
#pragma once

#include <filesystem>

#include "standin/renderer/socket.h"

namespace standin {

long processId();

// The program's file. Throws std::runtime_error.
std::filesystem::path programPath();

// Lets go of what is piped or shown where the process was started. Throws std::runtime_error.
void leaveTerminal();

// Can be received from when the process is asked to end. To be called before there are other threads; the first call
// takes such requests over from the system. Throws std::runtime_error.
SocketNumber stopRequest();

}  // namespace standin
