// Opens snapshots as models of the stand-in CAD session.
#pragma once

#include <filesystem>

#include "standin/cad/model_reader.h"

namespace standin {

// True when the content is that of a snapshot, whole or not.
bool isSnapshot(const std::filesystem::path& file);

// Reads the file into the session: its models, configuration options and texture folders come to those that are there,
// its open model becomes the current one and the mode is set. The file stays open as long as its models live, which
// read their meshes and exact surfaces from it when they are asked for; a surface has a mesh at the chord heights at
// which it was saved, and fails at others with the reason. When the file is not as it was written the session stays as
// it was.
LoadResult readSnapshot(Session& session, const std::filesystem::path& file, const LoadProgress& progress = {});

}  // namespace standin
