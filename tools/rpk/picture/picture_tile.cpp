#include "tools/rpk/picture/picture_tile.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "tools/rpk/vector_math.h"

namespace rpk {
namespace {

Vec3 toFloats(const Vector& v) {
  return {static_cast<float>(v[0]), static_cast<float>(v[1]), static_cast<float>(v[2])};
}

// Two axes across a direction of length 1 that change smoothly with it while it faces the viewer.
std::array<Vec3, 2> across(const Vec3& n) {
  const float sign = n.z >= 0 ? 1.0F : -1.0F;
  const float a = -1 / (sign + n.z);
  const float b = n.x * n.y * a;
  return {Vec3{1 + sign * n.x * n.x * a, sign * b, -sign * n.x}, Vec3{b, sign + n.y * n.y * a, -n.y}};
}

}  // namespace

PictureView::PictureView(const PictureScene& pictured, const PictureCamera& camera, const PictureOptions& options)
    : scene(pictured), palette(pictured.model()), edges(options.edges), width(options.width), height(options.height) {
  constexpr double kSamples = 3;
  const PictureAxes axes = pictureAxes(camera.view);
  right = toFloats(axes.right);
  up = toFloats(axes.up);
  back = toFloats(axes.back);
  const double radius = scene.radius() > 0 ? scene.radius() : 1;
  Vector offset = {};
  for (std::size_t i = 0; i < 3; ++i) offset[i] = (camera.centre[i] - scene.centre()[i]) / radius;
  sampleSide = camera.height / radius / (height * kSamples);
  left = dot(offset, axes.right) - sampleSide * width * kSamples / 2;
  top = dot(offset, axes.up) + sampleSide * height * kSamples / 2;
}

TileDrawer::TileDrawer(const PictureView& view)
    : view_(view),
      samples_(std::size_t{kWidth} * kWidth),
      open_(samples_.size()),
      wanted_(samples_.size()),
      lit_(samples_.size()),
      edge_(samples_.size()) {
  // Points that fill the square of two parameters evenly, dealt out so that neighbours get distant ones.
  for (std::size_t i = 0; i < kDirections; ++i) {
    const std::size_t n = i * 29 % kDirections;
    const double first = (static_cast<double>(n) + 0.5) / kDirections;
    const double second = std::fmod(static_cast<double>(n) * 0.7548776662466927 + 0.5, 1.0);
    const double third = std::fmod(static_cast<double>(n) * 0.5698402909980532 + 0.5, 1.0);
    const double angle = 2 * std::numbers::pi * second;
    const double radius = std::sqrt(first);
    directions_[i] = toFloats({radius * std::cos(angle), radius * std::sin(angle), std::sqrt(1 - first)});
    reaches_[i] = kReach * static_cast<float>(third);
  }
}

void TileDrawer::draw(std::uint32_t column, std::uint32_t row, Image& image) {
  firstX_ = std::int64_t{column} * kSide * kSamples - kApron;
  firstY_ = std::int64_t{row} * kSide * kSamples - kApron;
  endX_ = static_cast<int>(std::min<std::int64_t>(kWidth, std::int64_t{view_.width} * kSamples + kApron - firstX_));
  endY_ = static_cast<int>(std::min<std::int64_t>(kWidth, std::int64_t{view_.height} * kSamples + kApron - firstY_));
  std::fill(edge_.begin(), edge_.end(), std::uint8_t{0});
  if (trace()) {
    gatherLight();
    if (view_.edges) findEdges();
  }
  light();
  resolve(image);
}

bool TileDrawer::trace() {
  bool any = false;
  for (int y = 0; y < endY_; ++y) {
    for (int x = 0; x < endX_; ++x) {
      traceSample(x, y);
      any = any || at(x, y).instance >= 0;
    }
  }
  return any;
}

void TileDrawer::traceSample(int x, int y) {
  constexpr float kInFront = 1.01F;  // of the sphere around the scene
  constexpr std::int64_t kStripe = 14;
  Sample& sample = at(x, y);
  sample = {};
  const Vec3 start = {static_cast<float>(view_.left + view_.sampleSide * (static_cast<double>(firstX_ + x) + 0.5)),
                      static_cast<float>(view_.top - view_.sampleSide * (static_cast<double>(firstY_ + y) + 0.5)),
                      kInFront};
  SurfacePoint point;
  if (!view_.scene.closest(view_.fromViewer(start), -view_.back, point)) return;
  sample.instance = static_cast<std::int32_t>(point.instance);
  sample.material = point.material == kNoMaterial ? -1 : static_cast<std::int32_t>(point.material);
  sample.position = {start.x, start.y, start.z - point.distance};
  sample.faceNormal = view_.toViewer(point.faceNormal);
  sample.normal = view_.toViewer(point.normal);
  const bool away = sample.faceNormal.z < 0;
  sample.inner = away && !point.twoSided;
  if (away) {
    sample.faceNormal = -sample.faceNormal;
    sample.normal = -sample.normal;
  }
  // Vertex normals that turn away from what is plainly seen would make it dark.
  if (sample.normal.z < 0) {
    sample.normal = unit({sample.normal.x, sample.normal.y, 0}, sample.faceNormal);
  }
  const auto side = static_cast<float>(view_.sampleSide);
  sample.colour = view_.palette.colour(point, side * side / std::max(sample.faceNormal.z, 0.05F));
  if (sample.inner) {
    const bool stripe = ((firstX_ + x + firstY_ + y + std::int64_t{kApron} * 2) / kStripe) % 2 == 0;
    sample.colour = innerColour(sample.colour, point.solid, stripe);
  }
}

void TileDrawer::gatherLight() {
  for (int y = 0; y < endY_; ++y) {
    for (int x = 0; x < endX_; ++x) {
      if (at(x, y).instance >= 0) gatherLight(x, y);
    }
  }
}

void TileDrawer::gatherLight(int x, int y) {
  const Sample& sample = at(x, y);
  const auto place = [](std::int64_t value) { return static_cast<std::size_t>((value + kApron) % kPattern); };
  const std::size_t cell = place(firstY_ + y) * kPattern + place(firstX_ + x);
  const std::array<Vec3, 2> axes = across(sample.normal);
  const Vec3 origin = view_.fromViewer(sample.position + sample.faceNormal * kOffset);
  float open = 0;
  float wanted = 0;
  for (std::size_t ray = 0; ray < kRays; ++ray) {
    const std::size_t n = ray * kPattern * kPattern + cell;
    const Vec3& local = directions_[n];
    const Vec3 direction = axes[0] * local.x + axes[1] * local.y + sample.normal * local.z;
    if (rpk::dot(direction, sample.faceNormal) <= 0) continue;
    const float weight = skyLight(direction);
    wanted += weight;
    if (!view_.scene.blocked(origin, view_.fromViewer(direction), reaches_[n])) open += weight;
  }
  open_[index(x, y)] = open;
  wanted_[index(x, y)] = wanted;
}

// Share of the light that reaches a surface: over the samples of one pattern around, as far as they show the same.
float TileDrawer::openness(int x, int y) const {
  const Sample& sample = at(x, y);
  const float tolerance = 6 * static_cast<float>(view_.sampleSide);
  float open = 0;
  float wanted = 0;
  for (int j = std::max(0, y - kPattern / 2); j < std::min(endY_, y + kPattern / 2); ++j) {
    for (int i = std::max(0, x - kPattern / 2); i < std::min(endX_, x + kPattern / 2); ++i) {
      const Sample& other = at(i, j);
      if (other.instance != sample.instance || rpk::dot(other.normal, sample.normal) < 0.85F ||
          std::abs(rpk::dot(other.position - sample.position, sample.faceNormal)) > tolerance) {
        continue;
      }
      open += open_[index(i, j)];
      wanted += wanted_[index(i, j)];
    }
  }
  return wanted > 0 ? open / wanted : 1;
}

void TileDrawer::light() {
  constexpr float kDarkest = 0.12F;
  for (int y = kApron - 1; y < endY_ - kApron + 1; ++y) {
    const float down = (static_cast<float>(firstY_ + y) + 0.5F) / static_cast<float>(view_.height * kSamples);
    const Vec3 behind = background(std::clamp(down, 0.0F, 1.0F));
    for (int x = kApron - 1; x < endX_ - kApron + 1; ++x) {
      const Sample& sample = at(x, y);
      Vec3& lit = lit_[index(x, y)];
      lit = behind;
      if (sample.instance >= 0) {
        lit = sample.colour * (lightOn(sample.normal) * (kDarkest + (1 - kDarkest) * openness(x, y)));
      }
      if (view_.edges && lined(x, y)) lit = kLineColour;
    }
  }
}

void TileDrawer::findEdges() {
  for (int y = 0; y + 1 < endY_; ++y) {
    for (int x = 0; x + 1 < endX_; ++x) {
      for (const auto& [i, j] : {std::pair(x + 1, y), std::pair(x, y + 1)}) {
        if (separates(at(x, y), at(i, j))) edge_[index(x, y)] = edge_[index(i, j)] = 1;
      }
    }
  }
}

bool TileDrawer::separates(const Sample& a, const Sample& b) const {
  constexpr float kSharpest = 0.88F;  // cosine: surfaces that meet at less than 28 degrees count as smooth
  if (a.instance != b.instance) return true;
  if (a.instance < 0) return false;
  if (a.material != b.material || a.inner != b.inner) return true;
  if (rpk::dot(a.normal, b.normal) < kSharpest) return true;
  const Vec3 step = b.position - a.position;
  const float off = std::min(std::abs(rpk::dot(step, a.faceNormal)), std::abs(rpk::dot(step, b.faceNormal)));
  return off > 3 * static_cast<float>(view_.sampleSide);
}

// A line is four samples wide.
bool TileDrawer::lined(int x, int y) const {
  return edge_[index(x, y)] != 0 || edge_[index(x - 1, y)] != 0 || edge_[index(x + 1, y)] != 0 ||
         edge_[index(x, y - 1)] != 0 || edge_[index(x, y + 1)] != 0;
}

void TileDrawer::resolve(Image& image) const {
  const auto firstX = static_cast<std::uint32_t>((firstX_ + kApron) / kSamples);
  const auto firstY = static_cast<std::uint32_t>((firstY_ + kApron) / kSamples);
  for (std::uint32_t y = firstY; y < std::min(firstY + kSide, view_.height); ++y) {
    std::uint8_t* out = image.pixels.data() + (std::size_t{y} * view_.width + firstX) * 4;
    for (std::uint32_t x = firstX; x < std::min(firstX + kSide, view_.width); ++x) {
      const Vec3 colour =
          pixel(kApron + static_cast<int>(x - firstX) * kSamples, kApron + static_cast<int>(y - firstY) * kSamples);
      for (const float channel : {colour.x, colour.y, colour.z}) *out++ = toDisplayByte(channel);
      *out++ = 255;
    }
  }
}

// The samples of a pixel and those next to them, so that slanted borders run smoothly. Light beyond what a display
// shows is cut before: else a bright surface would eat into a line beside it.
Vec3 TileDrawer::pixel(int x, int y) const {
  constexpr std::array<float, 5> kWeights = {1 / 12.0F, 3 / 12.0F, 4 / 12.0F, 3 / 12.0F, 1 / 12.0F};
  Vec3 sum;
  for (int j = 0; j < 5; ++j) {
    for (int i = 0; i < 5; ++i) {
      const Vec3& lit = lit_[index(x + i - 1, y + j - 1)];
      const Vec3 shown = {std::min(lit.x, 1.0F), std::min(lit.y, 1.0F), std::min(lit.z, 1.0F)};
      sum = sum + shown * (kWeights[static_cast<std::size_t>(i)] * kWeights[static_cast<std::size_t>(j)]);
    }
  }
  return sum;
}

}  // namespace rpk
