// The cameras of a package as nodes at the top of the scene, in metres with Y up and without a scale, as glTF wants
// cameras to be.
#pragma once

#include <string>
#include <vector>

#include "tools/rpk/gltf/mesh_table.h"
#include "tools/rpk/scene_summary.h"

namespace rpk {

// From the package's coordinates to those of the glTF file: `rotation` has no scale, the scale comes after it.
struct WorldFrame {
  Matrix rotation = kIdentity;
  double metresPerUnit = 1;
};

// Adds every camera and gives the indices of the nodes. Where it looks and what is up are the camera block's. With
// "import_adjust_camera" the camera stands so that the drawn box is in the middle of the picture, else where the block
// says. The picture of an orthographic camera is as large as that asks for, and the camera is moved back along its
// view, which changes nothing in the picture, until all lies before it.
std::vector<int> addCameras(tinygltf::Model& model, const Scene& scene, const Bounds& drawn, const WorldFrame& frame);

}  // namespace rpk
