// What a command sent and how long it took, for the user.
#pragma once

#include <chrono>
#include <ostream>

#include "standin/app/workbench.h"

namespace standin {

// `reading` is the time that opening the model took; the others are the session's. The package is null for a model that
// was sent to a renderer.
void printSummary(std::ostream& output, Session& session, const WrittenPackage* package,
                  std::chrono::steady_clock::duration reading);

// Writes how many surfaces no attempt could tessellate, and the first of them with the reasons.
void printFailedSurfaces(std::ostream& output, const RunCounts& counts);

}  // namespace standin
