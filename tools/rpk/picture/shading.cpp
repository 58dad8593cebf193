#include "tools/rpk/picture/shading.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace rpk {
namespace {

// Of length 1: over the left shoulder.
constexpr Vec3 kKeyLight = {-0.4511F, 0.5513F, 0.7018F};

Vec3 lightOf(const Vector& display) {
  const auto channel = [](double value) {
    return toLight(std::isfinite(value) ? static_cast<float>(std::clamp(value, 0.0, 1.0)) : 0.0F);
  };
  return {channel(display[0]), channel(display[1]), channel(display[2])};
}

}  // namespace

float lightOn(const Vec3& normal) {
  constexpr float kWrap = 0.35F;
  const float key = std::max(0.0F, (dot(normal, kKeyLight) + kWrap) / (1 + kWrap));
  return 0.44F + 0.65F * key + 0.06F * normal.y;
}

float skyLight(const Vec3& direction) {
  const float key = std::max(0.0F, dot(direction, kKeyLight));
  return 0.5F + 1.5F * key * key;
}

Vec3 background(float down) {
  const float light = toLight(0.955F - 0.13F * down);
  return {light, light, light};
}

Vec3 innerColour(const Vec3& own, bool solid, bool stripe) {
  if (!solid) {
    const float grey = 0.2126F * own.x + 0.7152F * own.y + 0.0722F * own.z;
    return mix(own, {grey, grey, grey}, 0.5F) * 0.45F;
  }
  return stripe ? Vec3{0.46F, 0.085F, 0.07F} : Vec3{0.30F, 0.05F, 0.045F};
}

Palette::Palette(const PictureModel& model) : grey_(lightOf(PictureMaterial{}.colour)) {
  std::map<std::pair<const Image*, bool>, const Texture*> known;
  for (const PictureMaterial& material : model.materials) {
    Entry& entry = entries_.emplace_back();
    entry.colour = lightOf(material.colour);
    const Image* image = material.texture.get();
    if (!image || image->pixels.empty()) continue;
    const auto [found, added] = known.try_emplace({image, material.repeat});
    if (added) found->second = textures_.emplace_back(std::make_unique<Texture>(*image, material.repeat)).get();
    entry.texture = found->second;
  }
}

Vec3 Palette::colour(const SurfacePoint& point, float sampleArea) const {
  if (point.material >= entries_.size()) return grey_;
  const Entry& entry = entries_[point.material];
  if (!entry.texture || point.textureScale <= 0) return entry.colour;
  return entry.texture->at(point.u, point.v, point.textureScale * sampleArea);
}

}  // namespace rpk
