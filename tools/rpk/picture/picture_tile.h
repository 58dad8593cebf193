// One square of a picture, sampled finer than its pixels.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "tools/rpk/picture/draw_picture.h"
#include "tools/rpk/picture/shading.h"

namespace rpk {

// What all tiles of a picture share.
struct PictureView {
  PictureView(const PictureScene& scene, const PictureCamera& camera, const PictureOptions& options);

  const PictureScene& scene;
  Palette palette;
  bool edges;
  std::uint32_t width;
  std::uint32_t height;
  // Axes of the picture and its upper left corner in the rays' space; side of a sample there.
  Vec3 right;
  Vec3 up;
  Vec3 back;
  double left;
  double top;
  double sampleSide;

  Vec3 toViewer(const Vec3& v) const { return {dot(v, right), dot(v, up), dot(v, back)}; }
  Vec3 fromViewer(const Vec3& v) const { return right * v.x + up * v.y + back * v.z; }
};

// Works on squares of kSide pixels, one after the other. What a sample shows depends on its place in the picture only,
// so neighbouring tiles fit whoever draws them.
class TileDrawer {
 public:
  static constexpr std::uint32_t kSide = 64;

  explicit TileDrawer(const PictureView& view);

  // The pixels of the tile with that number of column and row.
  void draw(std::uint32_t column, std::uint32_t row, Image& image);

 private:
  static constexpr int kSamples = 3;  // per pixel and direction
  static constexpr int kApron = 4;    // samples around the tile, for what looks at its neighbours
  static constexpr int kWidth = static_cast<int>(kSide) * kSamples + 2 * kApron;
  static constexpr int kPattern = 6;  // places of samples with ray directions of their own, in each direction
  static constexpr int kRays = 2;     // for each sample
  static constexpr std::size_t kDirections = std::size_t{kPattern} * kPattern * kRays;
  static constexpr float kReach = 0.3F;      // of what hems light in, in radii of the scene
  static constexpr float kOffset = 1.5e-4F;  // of rays from the surface that they leave

  struct Sample {
    std::int32_t instance = -1;  // -1: background
    std::int32_t material = -1;
    bool inner = false;
    Vec3 position;    // in the viewer's axes
    Vec3 faceNormal;  // towards the viewer
    Vec3 normal;
    Vec3 colour;
  };

  static std::size_t index(int x, int y) { return static_cast<std::size_t>(y) * kWidth + static_cast<std::size_t>(x); }
  Sample& at(int x, int y) { return samples_[index(x, y)]; }
  const Sample& at(int x, int y) const { return samples_[index(x, y)]; }

  bool trace();  // false when there is nothing in the tile
  void traceSample(int x, int y);
  void gatherLight();
  void gatherLight(int x, int y);
  float openness(int x, int y) const;
  void light();
  void findEdges();
  bool separates(const Sample& a, const Sample& b) const;
  bool lined(int x, int y) const;
  void resolve(Image& image) const;
  Vec3 pixel(int x, int y) const;

  const PictureView& view_;
  std::int64_t firstX_ = 0;  // of the samples of the tile, apron included, in the picture
  std::int64_t firstY_ = 0;
  int endX_ = 0;  // samples beyond belong to no pixel of the picture
  int endY_ = 0;
  std::vector<Sample> samples_;
  std::vector<float> open_;    // light that reached a sample by its rays
  std::vector<float> wanted_;  // light that would have without anything around
  std::vector<Vec3> lit_;
  std::vector<std::uint8_t> edge_;
  std::array<Vec3, kDirections> directions_;  // around z
  std::array<float, kDirections> reaches_;
};

}  // namespace rpk
