#include "geometry/mesh_buffers.h"

#include <algorithm>

#include "scene/vntScene_api.h"

namespace rendara {
namespace {

template <std::size_t components>
void appendNarrowed(GrowingArray<float>& buffer, std::span<double[components]> values, std::size_t count) {
  float* place = buffer.extend(count * components);
  for (const auto& value : values.first(count)) {
    place = std::transform(value, value + components, place, [](double part) { return static_cast<float>(part); });
  }
}

// Wraps around instead of overflowing: whatever index the host hands out is passed on.
int raise(int index, int offset) {
  return static_cast<int>(static_cast<unsigned>(index) + static_cast<unsigned>(offset));
}

template <typename T>
SceneArray arrayOfElements(const GrowingArray<T>& buffer, std::size_t valuesPerElement) {
  return {buffer.data(), static_cast<int>(buffer.size() / valuesPerElement)};
}

}  // namespace

void MeshBuffers::clear() {
  meshVertices.clear();
  meshNormals.clear();
  meshUVs.clear();
  meshTriangles.clear();
  vertexOffset = 0;
}

void MeshBuffers::append(ProTessellation tessellation) {
  CadArray<ProVector> vertices;
  CadArray<ProVector> normals;
  CadArray<ProUvParam> params;
  CadArray<ProTriangle> facets;
  ProTessellationVerticesGet(tessellation, vertices.receive());
  ProTessellationNormalsGet(tessellation, normals.receive());
  ProTessellationParamsGet(tessellation, params.receive());
  ProTessellationFacetsGet(tessellation, facets.receive());
  const auto points = vertices.view();
  if (vertices.present() && facets.present()) {
    appendNarrowed<3>(meshVertices, points, points.size());
    appendNarrowed<3>(meshNormals, normals.view(), std::min(normals.view().size(), points.size()));
    appendNarrowed<2>(meshUVs, params.view(), std::min(params.view().size(), points.size()));
    const auto triangles = facets.view();
    int* corner = meshTriangles.extend(triangles.size() * 3);
    for (const auto& triangle : triangles) {
      corner = std::transform(triangle, triangle + 3, corner, [this](int index) { return raise(index, vertexOffset); });
    }
  }
  vertexOffset = raise(vertexOffset, static_cast<int>(points.size()));
}

void MeshBuffers::write(vntScene_api& scene) const {
  scene.beginGeometry("triangles");
  const SceneArray vertices = arrayOfElements(meshVertices, 3);
  scene.parameter("vertices", arrayOf(kFloat3), &vertices);
  if (!meshNormals.empty()) {
    const SceneArray normals = arrayOfElements(meshNormals, 3);
    scene.parameter("normals", arrayOf(kFloat3), &normals);
  }
  if (!meshUVs.empty()) {
    // Counted in floats, not in pairs; so are the triangles' corners.
    const SceneArray uvs = arrayOfElements(meshUVs, 1);
    scene.parameter("uv_tex", arrayOf(kFloat), &uvs);
  }
  const SceneArray triangles = arrayOfElements(meshTriangles, 1);
  scene.parameter("triangles", arrayOf(kInt), &triangles);
  scene.endGeometry();
}

}  // namespace rendara
