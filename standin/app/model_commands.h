// `creo-standin export MODEL OUT`, `creo-standin render MODEL` and `creo-standin snapshot MODEL OUT`
#pragma once

#include <ostream>

#include "standin/app/failure.h"
#include "standin/app/program_options.h"

namespace standin {

// Opens the model, runs the plug-in's export command and prints a summary. Leaves nothing but the package, and none
// that is not complete. Throws Failure.
void exportModel(const CommonOptions& common, const ExportOptions& options, std::ostream& output);

// Opens the model, runs the plug-in's render command and prints a summary. Throws Failure, also when the command says
// that it has reached no renderer.
void renderModel(const CommonOptions& common, const RenderOptions& options, std::ostream& output);

// Opens the model and saves the session as it is then, with the meshes that the plug-in's export asks for. Leaves
// nothing but the snapshot, and none that is not complete. Throws Failure.
void saveSnapshot(const CommonOptions& common, const SnapshotOptions& options, std::ostream& output);

}  // namespace standin
