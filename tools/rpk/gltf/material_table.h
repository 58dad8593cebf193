// The materials of a scene, each look once.
#pragma once

#include <map>
#include <string>

#include "tools/rpk/gltf/texture_table.h"
#include "tools/rpk/scene_summary.h"

namespace rpk {

class MaterialTable {
 public:
  MaterialTable(tinygltf::Model& model, TextureTable& textures) : model_(model), textures_(textures) {}

  // The index of the glTF material; null is the grey that a part without an appearance has. Without `textured` the
  // plain colour, for meshes that have no texture coordinates. Materials are one when name, colour and texture agree.
  int indexOf(const Material* material, bool textured);

  // Whether it has a texture that can be read.
  bool hasTexture(const Material* material);

 private:
  int textureOf(const Material* material);

  tinygltf::Model& model_;
  TextureTable& textures_;
  std::map<std::string, int> materials_;  // by everything that makes them up
};

}  // namespace rpk
