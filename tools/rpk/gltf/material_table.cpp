#include "tools/rpk/gltf/material_table.h"

#include <fmt/format.h>
#include <tiny_gltf.h>

#include <algorithm>
#include <cmath>

#include "tools/rpk/texture_file.h"
#include "tools/rpk/utf8_text.h"

namespace rpk {
namespace {

constexpr Vector kGrey = {0.6, 0.6, 0.6};

// Colours of a package are those that the CAD user picked on the screen, so sRGB; glTF's factors are linear.
double toLinear(double component) {
  if (!(component > 0)) return 0;
  const double value = std::min(component, 1.0);
  return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

// Six digits, so that the result is the same whatever mathematics library computed it.
double sixDigits(double value) { return std::round(value * 1e6) / 1e6; }

}  // namespace

int MaterialTable::textureOf(const Material* material) {
  if (!material || material->texture.empty()) return -1;
  return textures_.indexOf(material->texture, textureRepeats(*material));
}

bool MaterialTable::hasTexture(const Material* material) { return textureOf(material) >= 0; }

int MaterialTable::indexOf(const Material* material, bool textured) {
  const int texture = textured ? textureOf(material) : -1;
  // A texture takes the place of the colour; it does not tint it.
  Vector colour = {1, 1, 1};
  if (texture < 0) colour = material && material->colour ? *material->colour : kGrey;
  for (double& component : colour) component = sixDigits(toLinear(component));
  const std::string name = material ? toUtf8(material->name) : std::string();
  const std::string key = fmt::format("{} {} {} {} {}", colour[0], colour[1], colour[2], texture, name);
  const auto [entry, isNew] = materials_.try_emplace(key, static_cast<int>(model_.materials.size()));
  if (!isNew) return entry->second;
  tinygltf::Material made;
  made.name = name;
  made.doubleSided = true;  // quilts have no inside
  made.pbrMetallicRoughness.baseColorFactor = {colour[0], colour[1], colour[2], 1};
  made.pbrMetallicRoughness.metallicFactor = 0;
  made.pbrMetallicRoughness.roughnessFactor = 1;
  made.pbrMetallicRoughness.baseColorTexture.index = texture;
  model_.materials.push_back(std::move(made));
  return entry->second;
}

}  // namespace rpk
