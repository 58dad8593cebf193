// Opens STEP files as models of the stand-in CAD session. The only place that sees Open CASCADE, which does not show
// in this header.
#pragma once

#include <filesystem>
#include <string>

#include "standin/cad/model_reader.h"

namespace standin {

// Reads the file into the session, makes its top model the current one and sets the mode. Several free shapes are
// put into an assembly named after the file.
LoadResult loadStep(Session& session, const std::filesystem::path& file, const LoadProgress& progress = {});

// Applies what STEP has not (layers, hidden and suppressed components, simplified representations, saved views,
// textures, quilts' backup flag) from a JSON file; see standin/README.md. The result is empty, or what is wrong, in
// one line; then nothing was applied.
std::string applyOverlay(Session& session, Model& top, const std::filesystem::path& file);

}  // namespace standin
