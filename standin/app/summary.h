// What an export wrote and how long it took, for the user.
#pragma once

#include <chrono>
#include <ostream>

#include "standin/app/workbench.h"

namespace standin {

// `reading` is the time that opening the model took; the others are the session's.
void printSummary(std::ostream& output, Session& session, const WrittenPackage& package,
                  std::chrono::steady_clock::duration reading);

}  // namespace standin
