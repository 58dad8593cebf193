// What a picture shows: parts made of triangle meshes, and the places that they stand in. Filled from a package here;
// any other source of meshes and placements can fill it as well.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tools/rpk/drawing.h"
#include "tools/rpk/image_file.h"
#include "tools/rpk/scene_summary.h"

namespace rpk {

// Colours are display colours (sRGB) of 0 to 1 per channel.
struct PictureMaterial {
  Vector colour = {0.6, 0.6, 0.6};
  // Stands in the place of the colour; null without a texture. u runs to the right and v upwards from the lower left
  // corner; outside 0 to 1 it repeats, or else goes on as at its border. Transparency does not count.
  std::shared_ptr<const Image> texture;
  bool repeat = true;
};

// Meshes that always stand together, in coordinates of their own. Vertex normals, where a mesh has them, point out of
// the material; without them the outside is where the corners of a triangle run counter-clockwise.
struct PicturePart {
  std::vector<TriangleMesh> meshes;
  bool twoSided = false;  // nothing tells the outside: both sides look alike
};

struct PictureInstance {
  std::size_t part = 0;
  Matrix placement = kIdentity;
  std::vector<std::size_t> materials;  // one for each mesh of the part; what is missing is grey
};

struct PictureModel {
  std::vector<PictureMaterial> materials;
  std::vector<PicturePart> parts;
  std::vector<PictureInstance> instances;
};

// The image of a texture that the package names, or null.
using TextureLoader = std::function<std::shared_ptr<const Image>(const std::string& path)>;

// Either stands for the same faces.
enum class PictureSource { kMeshes, kExactSurfaces };

// All meshes of a package at rest, or triangles of its exact surfaces, made from control points and trims alone, whose
// chords are about a two-thousandth of the part's size. An exact surface does not tell which side is outside; its
// texture coordinates are its parameters. The loader is called once for each path; without one textures are left out.
PictureModel pictureModel(const Scene& scene, const TextureLoader& loader = {},
                          PictureSource source = PictureSource::kMeshes);
// The same of groups with their placements, which may be those of several packages.
PictureModel pictureModel(const std::vector<PlacedGroup>& groups, const TextureLoader& loader = {},
                          PictureSource source = PictureSource::kMeshes);

// Where the instances of such a model stand when its groups are placed otherwise: for PictureScene::place().
std::vector<Matrix> instancePlacements(const std::vector<PlacedGroup>& groups,
                                       PictureSource source = PictureSource::kMeshes);

}  // namespace rpk
