// A mesh of a package as a glTF file may hold it.
#pragma once

#include "tools/rpk/drawing.h"

namespace rpk {

// As copyMesh(), and: triangles without an area are left out (not counted), vertices that no triangle uses too, and
// normals have length 1, that of a triangle around the vertex where the file's has none.
TriangleMesh cleanMesh(const MeshView& view);

}  // namespace rpk
