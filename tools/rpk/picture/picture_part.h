// The meshes of one part, cleaned and brought to a size that floats and rays handle well.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tools/rpk/drawing.h"
#include "tools/rpk/picture/picture_model.h"
#include "tools/rpk/picture/vec3.h"

namespace rpk {

struct PreparedMesh {
  std::vector<float> positions;        // x y z, and one value more, which the rays' library may read
  std::vector<float> normals;          // x y z for each vertex, or empty
  std::vector<float> uvs;              // u v for each vertex, or empty
  std::vector<std::uint32_t> indices;  // three for each triangle, all of them with an area

  std::size_t vertexCount() const { return positions.size() / 3; }
  std::size_t triangleCount() const { return indices.size() / 3; }
  Vec3 position(std::uint32_t vertex) const;
  Vec3 vertexNormal(std::uint32_t vertex) const;
  // Perpendicular to the triangle, on the outside; its length is twice the area.
  Vec3 outward(std::size_t triangle) const;
};

// A point p of the part is (p - centre) / scale in its meshes, whose values are within -1 to 1.
struct PreparedPart {
  std::vector<PreparedMesh> meshes;  // as many as the part has; some may be empty
  Vector centre = {0, 0, 0};
  double scale = 1;
  bool solid = false;
  bool twoSided = false;
  std::size_t leftOut = 0;  // triangles with indices or coordinates that are not usable
  std::size_t triangleCount() const;
};

PreparedPart preparePart(const PicturePart& part);

}  // namespace rpk
