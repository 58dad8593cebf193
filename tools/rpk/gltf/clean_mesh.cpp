#include "tools/rpk/gltf/clean_mesh.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace rpk {
namespace {

Vector vertexAt(const std::vector<float>& values, std::size_t index) {
  return {values[index * 3], values[index * 3 + 1], values[index * 3 + 2]};
}

// Twice the area as its length; doubles hold products of floats without loss.
Vector facetOf(const TriangleMesh& mesh, std::size_t triangle) {
  const Vector a = vertexAt(mesh.positions, mesh.indices[triangle * 3]);
  const Vector b = vertexAt(mesh.positions, mesh.indices[triangle * 3 + 1]);
  const Vector c = vertexAt(mesh.positions, mesh.indices[triangle * 3 + 2]);
  const Vector u = {b[0] - a[0], b[1] - a[1], b[2] - a[2]};
  const Vector v = {c[0] - a[0], c[1] - a[1], c[2] - a[2]};
  return {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
}

double lengthOf(const Vector& v) { return std::hypot(v[0], v[1], v[2]); }

void dropFlatTriangles(TriangleMesh& mesh) {
  std::size_t kept = 0;
  for (std::size_t triangle = 0; triangle < mesh.triangleCount(); ++triangle) {
    if (lengthOf(facetOf(mesh, triangle)) == 0) continue;
    std::copy_n(mesh.indices.begin() + static_cast<std::ptrdiff_t>(triangle * 3), 3,
                mesh.indices.begin() + static_cast<std::ptrdiff_t>(kept * 3));
    ++kept;
  }
  mesh.indices.resize(kept * 3);
}

void moveVertex(std::vector<float>& values, std::size_t components, std::size_t from, std::size_t to) {
  if (values.empty()) return;
  std::copy_n(values.begin() + static_cast<std::ptrdiff_t>(from * components), components,
              values.begin() + static_cast<std::ptrdiff_t>(to * components));
}

void resizeVertices(std::vector<float>& values, std::size_t size) {
  if (!values.empty()) values.resize(size);
}

// Keeps the order of the vertices that stay.
void dropUnusedVertices(TriangleMesh& mesh) {
  constexpr std::uint32_t kUnused = std::numeric_limits<std::uint32_t>::max();
  std::vector<std::uint32_t> places(mesh.vertexCount(), kUnused);
  for (const std::uint32_t index : mesh.indices) places[index] = 0;
  std::uint32_t kept = 0;
  for (std::size_t vertex = 0; vertex < places.size(); ++vertex) {
    if (places[vertex] == kUnused) continue;
    places[vertex] = kept;
    moveVertex(mesh.positions, 3, vertex, kept);
    moveVertex(mesh.normals, 3, vertex, kept);
    moveVertex(mesh.uvs, 2, vertex, kept);
    ++kept;
  }
  resizeVertices(mesh.positions, std::size_t{kept} * 3);
  resizeVertices(mesh.normals, std::size_t{kept} * 3);
  resizeVertices(mesh.uvs, std::size_t{kept} * 2);
  for (std::uint32_t& index : mesh.indices) index = places[index];
}

void setNormal(TriangleMesh& mesh, std::size_t vertex, const Vector& direction) {
  const double length = lengthOf(direction);
  for (std::size_t i = 0; i < 3; ++i) mesh.normals[vertex * 3 + i] = static_cast<float>(direction[i] / length);
}

void normalizeNormals(TriangleMesh& mesh) {
  if (mesh.normals.empty()) return;
  constexpr double kShortest = 1e-6;
  std::vector<bool> missing(mesh.vertexCount());
  bool anyMissing = false;
  for (std::size_t vertex = 0; vertex < mesh.vertexCount(); ++vertex) {
    const Vector normal = vertexAt(mesh.normals, vertex);
    if (lengthOf(normal) > kShortest) {
      setNormal(mesh, vertex, normal);
    } else {
      missing[vertex] = anyMissing = true;
    }
  }
  if (!anyMissing) return;
  for (std::size_t i = 0; i < mesh.indices.size(); ++i) {
    const std::uint32_t vertex = mesh.indices[i];
    if (!missing[vertex]) continue;
    setNormal(mesh, vertex, facetOf(mesh, i / 3));
    missing[vertex] = false;
  }
}

}  // namespace

TriangleMesh cleanMesh(const MeshView& view) {
  TriangleMesh mesh = copyMesh(view);
  dropFlatTriangles(mesh);
  dropUnusedVertices(mesh);
  normalizeNormals(mesh);
  return mesh;
}

}  // namespace rpk
