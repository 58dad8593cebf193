// What a renderer draws: the distinct meshes of a scene and every place that each of them stands in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "tools/rpk/scene_summary.h"

namespace rpk {

// An object with geometry of its own, and the material it is drawn with at one place: its own, or that of the reference
// that draws it. Null without one.
struct DrawnObject {
  const Object* object = nullptr;
  const Material* material = nullptr;
};

// The objects that stand directly in a group, in the order of the file: those of its own geometry (groups of one
// material included), or those of the group that its reference names. Nothing of its sub-groups. Geometry types other
// than "triangles" and "nurbs" are left out. A reference's material takes the place of the source's only when the
// source has a single material; materials are told apart by their names.
std::vector<DrawnObject> drawnObjects(const Group& group);

// The group whose own geometry is drawn at a group's place: itself, or the one that its reference names; or null.
const Group* geometryHolder(const Group& group);

// One group with something to draw, and its placement in the scene: model units, row vectors.
struct PlacedGroup {
  const Group* group = nullptr;
  Matrix placement = kIdentity;
};

// All groups with something to draw, in the order of the file; inner groups of one material are part of the group
// around them. Placements are those of the groups at rest: animations do not apply.
std::vector<PlacedGroup> placedGroups(const Scene& scene);
// The same, in the same order, where each group stands at another place in the group around it.
std::vector<PlacedGroup> placedGroups(const Scene& scene, const std::function<Matrix(const Group&)>& placementOf);

// A mesh copied out of the file and made safe to use: every index is below the number of vertices and every coordinate
// is finite. Triangles that break this are left out and counted.
struct TriangleMesh {
  std::vector<float> positions;        // x y z
  std::vector<float> normals;          // x y z, as many as positions, or empty when the file has fewer or strange ones
  std::vector<float> uvs;              // u v for each vertex, or empty
  std::vector<std::uint32_t> indices;  // three for each triangle
  std::size_t leftOut = 0;
  std::size_t vertexCount() const { return positions.size() / 3; }
  std::size_t triangleCount() const { return indices.size() / 3; }
};

TriangleMesh copyMesh(const MeshView& mesh);

// Of all its triangles together, in square units of its coordinates.
double areaOf(const TriangleMesh& mesh);

// The metre scale of the package: model units in one metre; 1 when there is none or none above zero.
double unitsPerMetre(const Scene& scene);

}  // namespace rpk
