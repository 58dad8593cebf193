// Surfaces seen from their inner side.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <set>

#include "tests/picture/small_models.h"
#include "tools/rpk/picture/picture_part.h"

namespace picture_test {
namespace {

// A cube whose top is cut in two, with corners that the sides do not have.
rpk::PicturePart cubeWithLooseCorners() {
  rpk::PicturePart part = cube();
  part.meshes[2] = {
      {-1, 1, -1, -1, 1, 1, 0, 1, 1, 0, 1, -1, 1, 1, 1, 1, 1, -1}, {}, {}, {0, 1, 2, 0, 2, 3, 3, 2, 4, 3, 4, 5}, 0};
  return part;
}

rpk::PicturePart pipe() {
  constexpr int kSides = 24;
  TriangleMesh mesh;
  for (int i = 0; i < kSides; ++i) {
    const double angle = 2 * std::numbers::pi * i / kSides;
    for (const float z : {-1.0F, 1.0F}) {
      mesh.positions.insert(mesh.positions.end(),
                            {static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle)), z});
    }
    const auto low = static_cast<std::uint32_t>(2 * i);
    const auto next = static_cast<std::uint32_t>(2 * ((i + 1) % kSides));
    mesh.indices.insert(mesh.indices.end(), {low, next, next + 1, low, next + 1, low + 1});
  }
  return {{mesh}};
}

TEST(Solid, IsToldFromASheet) {
  rpk::PicturePart flipped = cube();
  reverse(flipped.meshes[4]);
  rpk::PicturePart insideOut = cube();
  for (TriangleMesh& mesh : insideOut.meshes) reverse(mesh);
  rpk::PicturePart opened = cube();
  opened.meshes.pop_back();
  rpk::PicturePart tiny = cube();
  for (TriangleMesh& mesh : tiny.meshes) {
    for (float& value : mesh.positions) value = value * 1e-18F + 1e-17F;
  }
  const struct {
    const char* what;
    rpk::PicturePart part;
    bool solid;
  } cases[] = {{"cube", cube(), true},
               {"loose corners", cubeWithLooseCorners(), true},
               {"one face inside out", flipped, true},
               {"inside out", insideOut, true},
               {"tiny", tiny, true},
               {"a face missing", opened, false},
               {"pipe", pipe(), false},
               {"plate", {{square({0, 0, 0}, {1, 0, 0}, {0, 1, 0})}}, false},
               {"nothing", {}, false}};
  for (const auto& entry : cases) EXPECT_EQ(rpk::preparePart(entry.part).solid, entry.solid) << entry.what;
}

// The different tones along a slanted line over the middle of the picture.
std::set<int> tones(const Image& image) {
  std::set<int> reds;
  for (int step = 80; step < 120; ++step) reds.insert(pixelAt(image, step / 200.0, step / 200.0).red);
  return reds;
}

bool isStriped(const Image& image) {
  const Pixel pixel = pixelAt(image, 0.5, 0.5);
  const std::set<int> reds = tones(image);
  return pixel.red > 2 * pixel.green && pixel.red > 2 * pixel.blue && *reds.rbegin() - *reds.begin() > 20;
}

TEST(Solid, ShowsItsInsideStriped) {
  PictureModel model = cubes({rpk::kIdentity});
  for (rpk::PictureMaterial& material : model.materials) material.colour = {0.1, 0.2, 0.8};
  const rpk::PictureOptions size{100, 100};
  EXPECT_FALSE(isStriped(draw(model, "front", size)));

  // Inside out, or one face only.
  for (TriangleMesh& mesh : model.parts[0].meshes) reverse(mesh);
  EXPECT_TRUE(isStriped(draw(model, "front", size)));
  for (std::size_t i = 0; i < 4; ++i) reverse(model.parts[0].meshes[i]);
  EXPECT_TRUE(isStriped(draw(model, "front", size)));
  EXPECT_FALSE(isStriped(draw(model, "top", size)));

  // Normals tell the outside, whichever way corners run.
  setNormals(model.parts[0].meshes[4], 0, 0, 1);
  EXPECT_FALSE(isStriped(draw(model, "front", size)));
  setNormals(model.parts[0].meshes[2], 0, -1, 0);
  EXPECT_TRUE(isStriped(draw(model, "top", size)));

  // Placed mirrored it is as right or wrong as before.
  model.instances[0].placement = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1};
  EXPECT_FALSE(isStriped(draw(model, "back", size)));
  EXPECT_TRUE(isStriped(draw(model, "top", size)));
}

TEST(Sheet, IsDarkerFromBehindAndKeepsItsColour) {
  const PictureModel sheet = modelOf(square({0, 0, 0}, {1, 0, 0}, {0, 1, 0}), {0.1, 0.2, 0.8});
  const Pixel front = pixelAt(draw(sheet, "front"), 0.5, 0.5);
  const Image behind = draw(sheet, "back");
  const Pixel back = pixelAt(behind, 0.5, 0.5);
  EXPECT_FALSE(isStriped(behind));
  EXPECT_LT(back.blue, front.blue * 0.8);
  EXPECT_GT(back.blue, back.red + 20);
}

}  // namespace
}  // namespace picture_test
