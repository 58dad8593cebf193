#include "tools/rpk/picture/texture.h"

#include <algorithm>
#include <cmath>

namespace rpk {
float toLight(float display) {
  return display <= 0.04045F ? display / 12.92F : std::pow((display + 0.055F) / 1.055F, 2.4F);
}

float toDisplay(float light) {
  return light <= 0.0031308F ? light * 12.92F : 1.055F * std::pow(light, 1 / 2.4F) - 0.055F;
}

std::uint8_t toDisplayByte(float light) {
  return static_cast<std::uint8_t>(std::lround(toDisplay(std::clamp(light, 0.0F, 1.0F)) * 255));
}

Texture::Texture(const Image& image, bool repeat) : repeat_(repeat), levels_{image}, light_{} {
  for (std::size_t i = 0; i < light_.size(); ++i) light_[i] = toLight(static_cast<float>(i) / 255);
  while (levels_.back().width > 1 || levels_.back().height > 1) levels_.push_back(halved(levels_.back()));
}

Image Texture::halved(const Image& large) const {
  Image small{std::max(1U, large.width / 2), std::max(1U, large.height / 2), {}};
  small.pixels.reserve(std::size_t{4} * small.width * small.height);
  for (std::uint32_t y = 0; y < small.height; ++y) {
    for (std::uint32_t x = 0; x < small.width; ++x) {
      Vec3 light;
      for (std::uint32_t i = 0; i < 4; ++i) light = light + pixel(large, x * 2 + i % 2, y * 2 + i / 2) * 0.25F;
      for (const float channel : {light.x, light.y, light.z}) small.pixels.push_back(toDisplayByte(channel));
      small.pixels.push_back(255);
    }
  }
  return small;
}

Vec3 Texture::pixel(const Image& level, std::int64_t x, std::int64_t y) const {
  const auto inside = [this](std::int64_t value, std::int64_t size) {
    if (!repeat_) return static_cast<std::uint32_t>(std::clamp<std::int64_t>(value, 0, size - 1));
    const std::int64_t rest = value % size;
    return static_cast<std::uint32_t>(rest < 0 ? rest + size : rest);
  };
  const std::uint8_t* bytes = level.at(inside(x, level.width), inside(y, level.height));
  return {light_[bytes[0]], light_[bytes[1]], light_[bytes[2]]};
}

Vec3 Texture::at(float u, float v, float footprint) const {
  const float texels = footprint * static_cast<float>(levels_[0].width) * static_cast<float>(levels_[0].height);
  const float fineness = texels > 1 ? 0.5F * std::log2(texels) : 0;
  const auto level = std::min(static_cast<std::size_t>(std::min(fineness + 0.5F, 64.0F)), levels_.size() - 1);
  const Image& image = levels_[level];
  const auto within = [this](float value) {
    if (!std::isfinite(value)) return 0.0F;
    return repeat_ ? value - std::floor(value) : std::clamp(value, 0.0F, 1.0F);
  };
  const float x = within(u) * static_cast<float>(image.width) - 0.5F;
  const float y = (1 - within(v)) * static_cast<float>(image.height) - 0.5F;
  const auto left = static_cast<std::int64_t>(std::floor(x));
  const auto top = static_cast<std::int64_t>(std::floor(y));
  Vec3 light;
  for (std::int64_t i = 0; i < 4; ++i) {
    const std::int64_t column = left + i % 2;
    const std::int64_t row = top + i / 2;
    const float weight = (1 - std::abs(x - static_cast<float>(column))) * (1 - std::abs(y - static_cast<float>(row)));
    light = light + pixel(image, column, row) * weight;
  }
  return light;
}

}  // namespace rpk
