#include "tools/rpk/picture/picture_part.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "tools/rpk/picture/closed_surface.h"

namespace rpk {
namespace {

struct Box {
  Vector low = {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity(),
                std::numeric_limits<double>::infinity()};
  Vector high = {-low[0], -low[1], -low[2]};
};

bool usable(const TriangleMesh& mesh, std::size_t triangle) {
  for (std::size_t corner = 0; corner < 3; ++corner) {
    const std::size_t vertex = mesh.indices[triangle * 3 + corner];
    if (vertex >= mesh.vertexCount()) return false;
    for (std::size_t i = 0; i < 3; ++i) {
      if (!std::isfinite(mesh.positions[vertex * 3 + i])) return false;
    }
  }
  return true;
}

// Only what triangles use counts: stray vertices do not make a part larger.
void extend(Box& box, const TriangleMesh& mesh, std::size_t triangle) {
  for (std::size_t corner = 0; corner < 3; ++corner) {
    const float* position = mesh.positions.data() + std::size_t{mesh.indices[triangle * 3 + corner]} * 3;
    for (std::size_t i = 0; i < 3; ++i) {
      box.low[i] = std::min(box.low[i], double{position[i]});
      box.high[i] = std::max(box.high[i], double{position[i]});
    }
  }
}

void appendTriangles(const TriangleMesh& source, PreparedPart& part, PreparedMesh& mesh) {
  for (std::size_t triangle = 0; triangle < source.triangleCount(); ++triangle) {
    const std::uint32_t* corners = source.indices.data() + triangle * 3;
    if (!usable(source, triangle)) {
      ++part.leftOut;
      continue;
    }
    const Vec3 a = mesh.position(corners[0]);
    const Vec3 normal = cross(mesh.position(corners[1]) - a, mesh.position(corners[2]) - a);
    if (length(normal) > 0) mesh.indices.insert(mesh.indices.end(), corners, corners + 3);
  }
}

PreparedMesh prepareMesh(const TriangleMesh& source, PreparedPart& part) {
  PreparedMesh mesh;
  if (source.triangleCount() == 0) return mesh;
  mesh.positions.reserve(source.positions.size() + 1);
  for (std::size_t i = 0; i < source.vertexCount() * 3; ++i) {
    const double value = (double{source.positions[i]} - part.centre[i % 3]) / part.scale;
    // Vertices that no triangle uses may lie anywhere.
    mesh.positions.push_back(std::abs(value) <= 2 ? static_cast<float>(value) : 0);
  }
  appendTriangles(source, part, mesh);
  mesh.positions.push_back(0);
  if (source.normals.size() >= source.vertexCount() * 3) mesh.normals = source.normals;
  if (source.uvs.size() >= source.vertexCount() * 2) mesh.uvs = source.uvs;
  return mesh;
}

bool isSolid(const PreparedPart& part) {
  std::vector<Facet> facets;
  facets.reserve(part.triangleCount());
  for (const PreparedMesh& mesh : part.meshes) {
    for (std::size_t triangle = 0; triangle < mesh.triangleCount(); ++triangle) {
      std::array<Vec3, 3> corners;
      for (std::size_t i = 0; i < 3; ++i) corners[i] = mesh.position(mesh.indices[triangle * 3 + i]);
      const Vec3 wound = cross(corners[1] - corners[0], corners[2] - corners[0]);
      if (dot(wound, mesh.outward(triangle)) < 0) std::swap(corners[1], corners[2]);
      Facet& facet = facets.emplace_back();
      for (std::size_t i = 0; i < 3; ++i) facet[i] = {corners[i].x, corners[i].y, corners[i].z};
    }
  }
  return enclosesVolume(facets);
}

}  // namespace

Vec3 PreparedMesh::position(std::uint32_t vertex) const {
  const float* values = positions.data() + std::size_t{vertex} * 3;
  return {values[0], values[1], values[2]};
}

Vec3 PreparedMesh::vertexNormal(std::uint32_t vertex) const {
  const float* values = normals.data() + std::size_t{vertex} * 3;
  return unit({values[0], values[1], values[2]}, {});
}

Vec3 PreparedMesh::outward(std::size_t triangle) const {
  const std::uint32_t* corners = indices.data() + triangle * 3;
  const Vec3 a = position(corners[0]);
  const Vec3 wound = cross(position(corners[1]) - a, position(corners[2]) - a);
  if (normals.empty()) return wound;
  const Vec3 smooth = vertexNormal(corners[0]) + vertexNormal(corners[1]) + vertexNormal(corners[2]);
  return dot(wound, smooth) < 0 ? -wound : wound;
}

std::size_t PreparedPart::triangleCount() const {
  std::size_t count = 0;
  for (const PreparedMesh& mesh : meshes) count += mesh.triangleCount();
  return count;
}

PreparedPart preparePart(const PicturePart& part) {
  PreparedPart prepared;
  Box box;
  for (const TriangleMesh& mesh : part.meshes) {
    prepared.leftOut += mesh.leftOut;
    for (std::size_t triangle = 0; triangle < mesh.triangleCount(); ++triangle) {
      if (usable(mesh, triangle)) extend(box, mesh, triangle);
    }
  }
  if (box.low[0] <= box.high[0]) {
    double largest = 0;
    for (std::size_t i = 0; i < 3; ++i) {
      prepared.centre[i] = (box.low[i] + box.high[i]) / 2;
      largest = std::max(largest, (box.high[i] - box.low[i]) / 2);
    }
    if (largest > 0) prepared.scale = largest;
  }
  for (const TriangleMesh& mesh : part.meshes) prepared.meshes.push_back(prepareMesh(mesh, prepared));
  prepared.twoSided = part.twoSided;
  prepared.solid = !part.twoSided && isSolid(prepared);
  return prepared;
}

}  // namespace rpk
