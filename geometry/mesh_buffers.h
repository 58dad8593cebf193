// The mesh of one material group, collected surface by surface.
#pragma once

#include "geometry/growing_array.h"
#include "platform/creo_handles.h"

namespace rendara {

class vntScene_api;

// Buffers that are reused from group to group and keep their capacity. Coordinates are the part's own, narrowed to
// single precision.
struct MeshBuffers {
  GrowingArray<float> meshVertices;  // x, y, z each
  GrowingArray<float> meshNormals;   // x, y, z each; may be fewer than vertices
  GrowingArray<float> meshUVs;       // u, v each; may be fewer than vertices
  GrowingArray<int> meshTriangles;   // three indices each, 0-based, into meshVertices
  int vertexOffset = 0;              // what the next surface's indices are raised by

  void clear();

  // Appends one surface's tessellation. Without facets nothing is appended, yet the offset moves by its vertices.
  void append(ProTessellation tessellation);

  bool hasMesh() const { return !meshVertices.empty() && !meshTriangles.empty(); }

  // Writes the mesh as one geometry block of triangles into the open object.
  void write(vntScene_api& scene) const;
};

}  // namespace rendara
