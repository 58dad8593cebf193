// Looking up the colour of a texture.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "tools/rpk/image_file.h"
#include "tools/rpk/picture/vec3.h"

namespace rpk {

// Display colour of 0 to 1 to light of 0 to 1, and back.
float toLight(float display);
float toDisplay(float light);
std::uint8_t toDisplayByte(float light);  // what is beyond 0 and 1 is brought there

// An image with smaller versions of itself, so that fine patterns do not break up. (0, 0) is the lower left corner, v
// runs upwards; outside 0 to 1 it repeats, or goes on as at its border. Alpha does not count.
class Texture {
 public:
  // The image must have pixels.
  Texture(const Image& image, bool repeat);

  // Light. `footprint` is the area that one sample stands for, in the units of u and v.
  Vec3 at(float u, float v, float footprint) const;

 private:
  Image halved(const Image& large) const;
  Vec3 pixel(const Image& level, std::int64_t x, std::int64_t y) const;

  bool repeat_;
  std::vector<Image> levels_;
  std::array<float, 256> light_;
};

}  // namespace rpk
