// `creo-standin export MODEL OUT`
#pragma once

#include <ostream>

#include "standin/app/failure.h"
#include "standin/app/program_options.h"

namespace standin {

// Opens the model, runs the plug-in's export command and prints a summary. Leaves nothing but the package, and none
// that is not complete. Throws Failure.
void exportModel(const CommonOptions& common, const ExportOptions& options, std::ostream& output);

}  // namespace standin
