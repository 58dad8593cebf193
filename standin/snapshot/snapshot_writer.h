// Saves a session in a file that opens without what the session was made from.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "standin/cad/session.h"

namespace standin {

// Takes what a surface's mesher answers at a chord height: a mesh, or null and the reason.
using KeepMesh =
    std::function<void(std::size_t surface, double chordHeight, const SurfaceMesh* mesh, const std::string& failure)>;
// Hands over the answers that the snapshot is to hold of a model's mesher, in any order, one at a time, so that not all
// need to be in memory at once.
using MeshSource = std::function<void(Model&, const KeepMesh&)>;

// Asks the model's mesher for every surface at the chord heights that a function gives for the model.
MeshSource meshesAt(std::function<std::vector<double>(const Model&)> chordHeights);

struct SnapshotCounts {
  std::size_t parts = 0;
  std::size_t surfaces = 0;
  std::size_t meshes = 0;    // answers that are meshes
  std::size_t failures = 0;  // answers that are reasons
  std::size_t triangles = 0;
  std::uint64_t bytes = 0;
};

// Writes all models of the session with their exact surfaces, which model is open, the mode, the configuration options,
// the texture folders and the system's code page. Equal meshes are written once. The stream only goes forward; its
// state tells whether everything was written. `folder` is where the file will be: texture folders are also told by
// the way from there. Meshers and converters have forgotten their answers afterwards.
// Throws std::length_error when a list has more than 2^32 - 1 elements, and what the source throws.
SnapshotCounts writeSnapshot(std::ostream& output, Session& session, const std::filesystem::path& folder,
                             const MeshSource& meshes);

}  // namespace standin
