// The meshes of a scene: one for every group that holds geometry, shared by all references to it.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/rpk/drawing.h"
#include "tools/rpk/gltf/binary_data.h"
#include "tools/rpk/gltf/material_table.h"

namespace rpk {

// In the units it was made from; `low` above `high` when nothing was added.
struct Bounds {
  Vector low = {1e300, 1e300, 1e300};
  Vector high = {-1e300, -1e300, -1e300};
  bool empty() const { return low[0] > high[0]; }
  void add(const Vector& point);
  // The corners of the other box, moved.
  void add(const Bounds& box, const Matrix& placement);
};

class MeshTable {
 public:
  MeshTable(tinygltf::Model& model, BinaryData& data, MaterialTable& materials)
      : model_(model), data_(data), materials_(materials) {}

  // The index of the mesh that the group draws, one primitive for each of its mesh objects, or -1 when it draws no
  // triangle. Two meshes that differ in materials only share their numbers.
  int meshOf(const Group& group);

  const Bounds& boundsOf(int mesh) const { return bounds_[static_cast<std::size_t>(mesh)]; }
  // Triangles of the package with indices or coordinates that cannot be.
  std::size_t leftOut() const { return leftOut_; }
  std::size_t triangles() const { return triangles_; }

 private:
  struct Geometry {
    int positions = -1;  // -1: nothing to draw
    int normals = -1;
    int uvs = -1;  // -1 also when no material has asked for them yet
    int indices = -1;
    bool hasUvs = false;
    Bounds bounds;
  };
  struct Primitive {
    const Object* object = nullptr;
    int material = -1;
    bool textured = false;
    bool operator<(const Primitive& other) const {
      return std::pair(object, material) < std::pair(other.object, other.material);
    }
  };

  int makeMesh(const Group& group);
  Geometry& geometryOf(const Object& object);
  int write(const std::string& name, const std::vector<Primitive>& primitives);
  void addUvs(const Object& object, Geometry& geometry);

  tinygltf::Model& model_;
  BinaryData& data_;
  MaterialTable& materials_;
  std::map<const Object*, Geometry> geometries_;
  std::map<std::vector<Primitive>, int> meshes_;
  // By the source and the look of the reference's material, so that a part that is placed very often is not put
  // together anew for every place.
  std::map<std::pair<const Group*, std::string>, int> references_;
  std::vector<Bounds> bounds_;
  std::size_t primitives_ = 0;
  std::size_t leftOut_ = 0;
  std::size_t triangles_ = 0;
};

}  // namespace rpk
