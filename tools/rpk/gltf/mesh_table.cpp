#include "tools/rpk/gltf/mesh_table.h"

#include <fmt/format.h>
#include <tiny_gltf.h>

#include <algorithm>

#include "tools/rpk/gltf/clean_mesh.h"
#include "tools/rpk/gltf/gltf_error.h"
#include "tools/rpk/utf8_text.h"

namespace rpk {
namespace {

// A package in which every one of many references has a material of its own could ask for the product of both numbers.
constexpr std::size_t kMostPrimitives = 2'000'000;

std::string lookOf(const Material* material) {
  if (!material) return {};
  const Vector colour = material->colour.value_or(Vector{-1, -1, -1});
  return fmt::format("{}\n{}\n{} {} {}", material->name, material->texture, colour[0], colour[1], colour[2]);
}

// Texture coordinates count upwards in a package, downwards in glTF.
void flipUvs(std::vector<float>& uvs) {
  for (std::size_t i = 1; i < uvs.size(); i += 2) uvs[i] = 1 - uvs[i];
}

}  // namespace

void Bounds::add(const Vector& point) {
  for (std::size_t axis = 0; axis < 3; ++axis) {
    low[axis] = std::min(low[axis], point[axis]);
    high[axis] = std::max(high[axis], point[axis]);
  }
}

void Bounds::add(const Bounds& box, const Matrix& placement) {
  if (box.empty()) return;
  for (unsigned corner = 0; corner < 8; ++corner) {
    Vector point{};
    for (std::size_t axis = 0; axis < 3; ++axis)
      point[axis] = (corner >> axis & 1U) != 0 ? box.high[axis] : box.low[axis];
    add(transformPoint(point, placement));
  }
}

int MeshTable::meshOf(const Group& group) {
  if (group.holdsGeometry()) return makeMesh(group);
  const Object* reference = group.reference();
  if (!reference || !reference->sourceGroup) return -1;
  const Material* material = reference->material ? &*reference->material : nullptr;
  const auto [entry, isNew] = references_.try_emplace({reference->sourceGroup, lookOf(material)}, -1);
  if (isNew) entry->second = makeMesh(group);
  return entry->second;
}

int MeshTable::makeMesh(const Group& group) {
  std::vector<Primitive> primitives;
  for (const DrawnObject& drawn : drawnObjects(group)) {
    if (drawn.object->geometryType != "triangles") continue;
    const Geometry& geometry = geometryOf(*drawn.object);
    if (geometry.positions < 0) continue;
    const bool textured = geometry.hasUvs && materials_.hasTexture(drawn.material);
    primitives.push_back({drawn.object, materials_.indexOf(drawn.material, textured), textured});
  }
  if (primitives.empty()) return -1;
  const auto known = meshes_.find(primitives);
  if (known != meshes_.end()) return known->second;
  const int mesh = write(primitives.front().object->name, primitives);
  meshes_.emplace(std::move(primitives), mesh);
  return mesh;
}

MeshTable::Geometry& MeshTable::geometryOf(const Object& object) {
  const auto [entry, isNew] = geometries_.try_emplace(&object);
  Geometry& geometry = entry->second;
  if (!isNew) return geometry;
  const TriangleMesh mesh = cleanMesh(object.mesh);
  leftOut_ += mesh.leftOut;
  if (mesh.indices.empty()) return geometry;
  triangles_ += mesh.triangleCount();
  geometry.positions = data_.addFloats(mesh.positions, 3, true, TINYGLTF_TARGET_ARRAY_BUFFER);
  const tinygltf::Accessor& accessor = model_.accessors.back();
  std::copy_n(accessor.minValues.begin(), 3, geometry.bounds.low.begin());
  std::copy_n(accessor.maxValues.begin(), 3, geometry.bounds.high.begin());
  if (!mesh.normals.empty()) {
    geometry.normals = data_.addFloats(mesh.normals, 3, false, TINYGLTF_TARGET_ARRAY_BUFFER);
  }
  geometry.hasUvs = !mesh.uvs.empty();
  geometry.indices = data_.addIndices(mesh.indices, mesh.vertexCount());
  return geometry;
}

void MeshTable::addUvs(const Object& object, Geometry& geometry) {
  TriangleMesh mesh = cleanMesh(object.mesh);
  flipUvs(mesh.uvs);
  geometry.uvs = data_.addFloats(mesh.uvs, 2, false, TINYGLTF_TARGET_ARRAY_BUFFER);
}

int MeshTable::write(const std::string& name, const std::vector<Primitive>& primitives) {
  primitives_ += primitives.size();
  if (primitives_ > kMostPrimitives) {
    throw GltfError(fmt::format("the scene needs more than {} pieces of mesh", kMostPrimitives));
  }
  tinygltf::Mesh mesh;
  mesh.name = toUtf8(name);
  Bounds bounds;
  for (const Primitive& primitive : primitives) {
    Geometry& geometry = geometryOf(*primitive.object);
    if (primitive.textured && geometry.uvs < 0) addUvs(*primitive.object, geometry);
    tinygltf::Primitive written;
    written.mode = TINYGLTF_MODE_TRIANGLES;
    written.attributes["POSITION"] = geometry.positions;
    if (geometry.normals >= 0) written.attributes["NORMAL"] = geometry.normals;
    if (primitive.textured) written.attributes["TEXCOORD_0"] = geometry.uvs;
    written.indices = geometry.indices;
    written.material = primitive.material;
    mesh.primitives.push_back(std::move(written));
    bounds.add(geometry.bounds, kIdentity);
  }
  model_.meshes.push_back(std::move(mesh));
  bounds_.push_back(bounds);
  return static_cast<int>(model_.meshes.size() - 1);
}

}  // namespace rpk
