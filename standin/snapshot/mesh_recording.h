// The meshes that the plug-in asks for, as a source for a snapshot.
#pragma once

#include <functional>

#include "standin/snapshot/snapshot_writer.h"

namespace standin {

// Opens each part of the session alone and runs `exportCurrent`, which must have the plug-in export the open model.
// What it asks of the part's mesher, its further attempts at stubborn surfaces included, is what the snapshot holds.
// The part lies bare meanwhile – no suppressed feature, nothing hidden, no blanked layer –, so that what may be shown
// later has meshes too. Model, mode and part are as they were afterwards, also when the export throws.
MeshSource recordedMeshes(Session& session, std::function<void()> exportCurrent);

}  // namespace standin
