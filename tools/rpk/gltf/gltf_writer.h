// A scene as binary glTF 2.0.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

#include "tools/rpk/gltf/gltf_error.h"
#include "tools/rpk/scene_summary.h"

namespace rpk {

struct GltfOptions {
  std::filesystem::path folder;  // where textures are looked for that are not where their path says
};

struct GltfSummary {
  std::size_t meshes = 0;
  std::size_t placedMeshes = 0;  // nodes with a mesh
  std::size_t triangles = 0;     // of the distinct meshes
  std::size_t materials = 0;
  std::size_t textures = 0;
  std::size_t cameras = 0;
  std::size_t movingGroups = 0;
  std::uint64_t bytes = 0;
  std::vector<std::string> warnings;  // one line each, safe to print
};

// Writes the scene to `out`, in metres and Y up: a root node carries scale and rotation, and everything below it is in
// the package's own numbers. The bytes depend on nothing but what the package holds and on the textures' files.
// `scratch` is an empty stream for reading and writing that holds the binary data until the text that comes before them
// is known; memory holds one mesh and one picture at a time. Exact surfaces are ignored. Throws GltfError.
GltfSummary writeGltf(const Scene& scene, const GltfOptions& options, std::iostream& scratch, std::ostream& out);

}  // namespace rpk
