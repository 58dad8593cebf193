// Models of a few triangles, and looks at pictures of them.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <string>

#include "tools/rpk/picture/draw_picture.h"

namespace picture_test {

using rpk::Image;
using rpk::Matrix;
using rpk::PictureModel;
using rpk::TriangleMesh;
using rpk::Vector;

// Colours that differ in which channels are high: one for each face of a cube, in the order +x -x +y -y +z -z.
inline constexpr std::array<const char*, 6> kFaceNames = {"+x", "-x", "+y", "-y", "+z", "-z"};
inline constexpr std::array<Vector, 6> kFaceColours = {
    {{0.8, 0.1, 0.1}, {0.1, 0.8, 0.1}, {0.1, 0.1, 0.8}, {0.8, 0.8, 0.1}, {0.8, 0.1, 0.8}, {0.1, 0.8, 0.8}}};

// A square of side 2 around `centre`, counter-clockwise when `u` × `v` points at the viewer; with u and v from 0 to 1.
inline TriangleMesh square(const Vector& centre, const Vector& u, const Vector& v) {
  TriangleMesh mesh;
  for (const auto& [along, upwards] : {std::pair(-1, -1), std::pair(1, -1), std::pair(1, 1), std::pair(-1, 1)}) {
    for (std::size_t i = 0; i < 3; ++i) {
      mesh.positions.push_back(static_cast<float>(centre[i] + along * u[i] + upwards * v[i]));
    }
    mesh.uvs.push_back(along > 0 ? 1.0F : 0.0F);
    mesh.uvs.push_back(upwards > 0 ? 1.0F : 0.0F);
  }
  mesh.indices = {0, 1, 2, 0, 2, 3};
  return mesh;
}

inline void reverse(TriangleMesh& mesh) {
  for (std::size_t i = 0; i + 2 < mesh.indices.size(); i += 3) std::swap(mesh.indices[i + 1], mesh.indices[i + 2]);
}

// The same normal at all vertices.
inline void setNormals(TriangleMesh& mesh, float x, float y, float z) {
  mesh.normals.clear();
  for (std::size_t i = 0; i < mesh.vertexCount(); ++i) mesh.normals.insert(mesh.normals.end(), {x, y, z});
}

// From -1 to 1, with a mesh for each face.
inline rpk::PicturePart cube() {
  return {{square({1, 0, 0}, {0, 1, 0}, {0, 0, 1}), square({-1, 0, 0}, {0, 0, 1}, {0, 1, 0}),
           square({0, 1, 0}, {0, 0, 1}, {1, 0, 0}), square({0, -1, 0}, {1, 0, 0}, {0, 0, 1}),
           square({0, 0, 1}, {1, 0, 0}, {0, 1, 0}), square({0, 0, -1}, {0, 1, 0}, {1, 0, 0})}};
}

inline Matrix shifted(double x, double y, double z) { return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, x, y, z, 1}; }

// Cubes with a colour of its own on each face.
inline PictureModel cubes(std::initializer_list<Matrix> placements) {
  PictureModel model;
  for (const Vector& colour : kFaceColours) model.materials.push_back({colour, nullptr});
  model.parts.push_back(cube());
  for (const Matrix& placement : placements) model.instances.push_back({0, placement, {0, 1, 2, 3, 4, 5}});
  return model;
}

inline PictureModel modelOf(TriangleMesh mesh, const Vector& colour = {0.8, 0.2, 0.1}) {
  return {{{colour, nullptr}}, {{{std::move(mesh)}}}, {{0, rpk::kIdentity, {0}}}};
}

inline Image draw(const rpk::PictureScene& scene, const char* view = "front", rpk::PictureOptions options = {120, 80},
                  int upAxis = 1) {
  const auto direction = rpk::standardView(view, upAxis).value();
  return rpk::drawPicture(scene, rpk::frameScene(scene, direction, options.width, options.height), options);
}

inline Image draw(PictureModel model, const char* view = "front", rpk::PictureOptions options = {120, 80},
                  int upAxis = 1) {
  return draw(rpk::PictureScene(std::move(model)), view, options, upAxis);
}

struct Pixel {
  int red;
  int green;
  int blue;
};

// At a place given in shares of the picture's sides, from the upper left corner.
inline Pixel pixelAt(const Image& image, double across, double down) {
  const auto x = static_cast<std::uint32_t>(std::lround(across * (image.width - 1)));
  const auto y = static_cast<std::uint32_t>(std::lround(down * (image.height - 1)));
  const std::uint8_t* bytes = image.at(x, y);
  return {bytes[0], bytes[1], bytes[2]};
}

inline bool isBackground(const Pixel& pixel) {
  return pixel.red == pixel.green && pixel.green == pixel.blue && pixel.red > 190;
}

// Which of kFaceColours a pixel shows, however it is lit.
inline std::string faceAt(const Image& image, double across, double down) {
  const Pixel pixel = pixelAt(image, across, down);
  if (isBackground(pixel)) return "background";
  const int half = std::max({pixel.red, pixel.green, pixel.blue}) * 2 / 3;
  for (std::size_t face = 0; face < 6; ++face) {
    const Vector& colour = kFaceColours[face];
    if ((pixel.red > half) == (colour[0] > 0.5) && (pixel.green > half) == (colour[1] > 0.5) &&
        (pixel.blue > half) == (colour[2] > 0.5)) {
      return kFaceNames[face];
    }
  }
  return "neither";
}

}  // namespace picture_test
