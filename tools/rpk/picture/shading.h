// The look of a picture: its lights, colours and background. Colours are light, not display values, unless said
// otherwise; vectors are those of the viewer: x to the right, y up, z towards the viewer.
#pragma once

#include <memory>
#include <vector>

#include "tools/rpk/picture/picture_scene.h"
#include "tools/rpk/picture/texture.h"
#include "tools/rpk/picture/vec3.h"

namespace rpk {

inline constexpr Vec3 kLineColour = {0.011F, 0.012F, 0.015F};

// The light that a surface of that normal throws back when nothing hems it in: about 1 when it faces the viewer.
float lightOn(const Vec3& normal);

// How much light comes from a direction, as weights among directions.
float skyLight(const Vec3& direction);

// From the top of the picture (0) to its bottom (1).
Vec3 background(float down);

// Colour of a surface seen from its inner side. `stripe` tells which of two alternating bands the sample is in.
Vec3 innerColour(const Vec3& own, bool solid, bool stripe);

// The model's materials, ready to be looked up.
class Palette {
 public:
  explicit Palette(const PictureModel& model);
  // `sampleArea` is the area on the surface that one sample stands for, in the rays' space.
  Vec3 colour(const SurfacePoint& point, float sampleArea) const;

 private:
  struct Entry {
    Vec3 colour;
    const Texture* texture = nullptr;
  };
  std::vector<std::unique_ptr<Texture>> textures_;
  std::vector<Entry> entries_;
  Vec3 grey_;
};

}  // namespace rpk
