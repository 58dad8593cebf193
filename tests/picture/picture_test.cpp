// What the pixels of a picture show.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "tests/picture/small_models.h"
#include "tests/rpk/package_text.h"

namespace picture_test {
namespace {

void expectNear(const Pixel& pixel, const Pixel& expected, int tolerance) {
  EXPECT_NEAR(pixel.red, expected.red, tolerance);
  EXPECT_NEAR(pixel.green, expected.green, tolerance);
  EXPECT_NEAR(pixel.blue, expected.blue, tolerance);
}

TriangleMesh plate() { return square({0, 0, 0}, {1, 0, 0}, {0, 1, 0}); }

int brightness(const Pixel& pixel) { return pixel.red + pixel.green + pixel.blue; }

TEST(Picture, ShowsASurfaceThatFacesTheViewerInItsColour) {
  expectNear(pixelAt(draw(modelOf(plate())), 0.5, 0.5), {204, 51, 26}, 8);
  PictureModel plain = modelOf(plate());
  for (const std::vector<std::size_t>& materials : {std::vector<std::size_t>{}, std::vector<std::size_t>{7}}) {
    plain.instances[0].materials = materials;
    expectNear(pixelAt(draw(plain), 0.5, 0.5), {153, 153, 153}, 8);
  }
  const Image wide = draw(modelOf(plate()), "front", {120, 40});
  EXPECT_TRUE(isBackground(pixelAt(wide, 0, 0)));
  EXPECT_LT(pixelAt(wide, 0, 1).red, pixelAt(wide, 0, 0).red);
  EXPECT_EQ(wide.at(0, 0)[3], 255);
}

TEST(Picture, LightsByVertexNormalsAndDarkensCorners) {
  TriangleMesh bent = plate();
  bent.normals = {-0.9F, 0, 0.4F, 0.9F, 0, 0.4F, 0.9F, 0, 0.4F, -0.9F, 0, 0.4F};
  const Image round = draw(modelOf(bent));
  EXPECT_GT(brightness(pixelAt(round, 0.35, 0.5)), brightness(pixelAt(round, 0.65, 0.5)) + 30);

  // A wall on a floor, seen from the top: the floor is darker beside the wall than far from it.
  PictureModel corner = modelOf(square({0, 0, 0}, {0, 0, 4}, {4, 0, 0}));
  corner.parts[0].meshes.push_back(square({0, 1, 0}, {0, 0, 4}, {0, 1, 0}));
  const Image floor = draw(corner, "top", {100, 100});
  EXPECT_LT(brightness(pixelAt(floor, 0.53, 0.5)), brightness(pixelAt(floor, 0.9, 0.5)) * 0.93);
}

TEST(Picture, PutsInstancesWhereTheyBelong) {
  // The second cube is turned about z by a quarter, the third mirrored: neither is inside out.
  const Matrix turned = {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
  const Matrix mirrored = {-1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 4, 0, 0, 1};
  rpk::PictureScene scene(cubes({shifted(-4, 0, 0), turned, mirrored}));
  EXPECT_EQ(scene.placedInstances(), 3U);
  EXPECT_EQ(scene.triangleCount(), 36U);
  const rpk::PictureOptions wide{150, 50};
  const Image top = draw(scene, "top", wide);
  EXPECT_EQ(faceAt(top, 0.15, 0.5), "+y");
  EXPECT_EQ(faceAt(top, 0.5, 0.5), "+x");
  EXPECT_EQ(faceAt(top, 0.85, 0.5), "+y");
  EXPECT_EQ(faceAt(top, 0.32, 0.5), "background");
  EXPECT_EQ(faceAt(draw(scene, "left", {50, 50}), 0.5, 0.5), "-x");
  EXPECT_EQ(faceAt(draw(scene, "right", {50, 50}), 0.5, 0.5), "-x") << "the mirrored one";

  const std::array<Matrix, 3> moved = {shifted(0, 0, 0), shifted(0, 0, -4), shifted(0, 0, -8)};
  scene.place(moved);
  EXPECT_EQ(scene.radius(), std::hypot(1.0, 1.0, 5.0));
  EXPECT_EQ(faceAt(draw(scene, "top", {50, 150}), 0.5, 0.5), "+y");
}

// Red and green above blue and yellow.
std::shared_ptr<const Image> fourColours() {
  Image image{16, 16, {}};
  for (unsigned y = 0; y < 16; ++y) {
    for (unsigned x = 0; x < 16; ++x) {
      const bool right = x >= 8;
      const bool low = y >= 8;
      const auto high = [](bool on) { return static_cast<std::uint8_t>(on ? 255 : 0); };
      image.pixels.insert(image.pixels.end(), {high(right == low), high(right), high(low && !right), 255});
    }
  }
  return std::make_shared<const Image>(std::move(image));
}

TEST(Picture, LaysTexturesWithVUpwards) {
  PictureModel model = modelOf(plate());
  model.materials[0].texture = fourColours();
  const Image once = draw(model, "front", {100, 100});
  expectNear(pixelAt(once, 0.2, 0.2), {255, 0, 0}, 12);
  expectNear(pixelAt(once, 0.8, 0.2), {0, 255, 0}, 12);
  expectNear(pixelAt(once, 0.2, 0.8), {0, 0, 255}, 12);
  expectNear(pixelAt(once, 0.8, 0.8), {255, 255, 0}, 12);

  // From -1 to 2: the middle third is as before, around it the texture repeats or goes on as at its border.
  for (float& value : model.parts[0].meshes[0].uvs) value = value * 3 - 1;
  const Image repeated = draw(model, "front", {200, 200});
  expectNear(pixelAt(repeated, 0.4, 0.4), {255, 0, 0}, 12);
  expectNear(pixelAt(repeated, 0.10, 0.4), {255, 0, 0}, 12);
  expectNear(pixelAt(repeated, 0.28, 0.4), {0, 255, 0}, 12);
  model.materials[0].repeat = false;
  const Image clamped = draw(model, "front", {200, 200});
  expectNear(pixelAt(clamped, 0.28, 0.4), {255, 0, 0}, 12);
  expectNear(pixelAt(clamped, 0.9, 0.9), {255, 255, 0}, 12);
}

// Finer than the pixels a pattern becomes its mean light, not noise.
TEST(Picture, AveragesFineTextures) {
  Image checks{64, 64, {}};
  for (unsigned i = 0; i < 64 * 64; ++i) {
    const std::uint8_t tone = (i + i / 64) % 2 == 0 ? 255 : 0;
    checks.pixels.insert(checks.pixels.end(), {tone, tone, tone, 255});
  }
  PictureModel model = modelOf(plate());
  model.materials[0].texture = std::make_shared<const Image>(checks);
  for (float& value : model.parts[0].meshes[0].uvs) value *= 7.3F;
  const Image image = draw(model, "front", {40, 40});
  for (const double across : {0.2, 0.37, 0.5, 0.61, 0.8}) {
    expectNear(pixelAt(image, across, 0.5), {184, 184, 184}, 10);
  }
}

TEST(Picture, DrawsLinesAlongOutlinesCreasesAndBorders) {
  const rpk::PictureScene cube(cubes({rpk::kIdentity}));
  PictureModel halves = modelOf(square({-1, 0, 0}, {1, 0, 0}, {0, 1, 0}));
  halves.materials.push_back({{0.7, 0.3, 0.2}, nullptr});
  halves.parts[0].meshes.push_back(square({1, 0, 0}, {1, 0, 0}, {0, 1, 0}));
  halves.instances[0].materials = {0, 1};
  const rpk::PictureScene pair(halves);
  // A ledge: both faces look to the viewer, one in front of the other.
  PictureModel steps = modelOf(square({-1, 0, 1}, {1, 0, 0}, {0, 1, 0}));
  steps.parts[0].meshes.push_back(square({1, 0, -1}, {1, 0, 0}, {0, 1, 0}));
  const rpk::PictureScene ledge(steps);
  // Normals that bend smoothly make no line.
  TriangleMesh bent = plate();
  bent.normals = {-0.6F, 0, 0.8F, 0.6F, 0, 0.8F, 0.6F, 0, 0.8F, -0.6F, 0, 0.8F};
  const rpk::PictureScene smooth(modelOf(bent));
  const struct {
    const char* what;
    const rpk::PictureScene& scene;
    const char* view;
    bool line;
  } middles[] = {{"crease", cube, "iso", true},
                 {"material", pair, "front", true},
                 {"depth", ledge, "front", true},
                 {"smooth", smooth, "front", false}};
  for (const auto& entry : middles) {
    const auto middle = [&](bool edges) {
      return brightness(pixelAt(draw(entry.scene, entry.view, {101, 101, edges}), 0.5, 0.6));
    };
    EXPECT_EQ(middle(true) < 0.7 * middle(false), entry.line) << entry.what << middle(true) << middle(false);
  }
  const Image outline = draw(cube, "front", {101, 101, true});
  int dark = 0;
  for (std::uint32_t x = 0; x < 101; ++x) {
    const std::uint8_t* pixel = outline.at(x, 50);
    if (pixel[0] + pixel[1] + pixel[2] < 330) ++dark;
  }
  EXPECT_GE(dark, 2);
  EXPECT_LE(dark, 6) << "thin lines at both sides, nothing in between";
}

TEST(Picture, IsTheSameForAnyNumberOfThreads) {
  // Faces in the same place: which of them shows must not change.
  PictureModel model = cubes({rpk::kIdentity, rpk::kIdentity, shifted(1, 0.5, 0.25)});
  model.instances[1].materials = {5, 4, 3, 2, 1, 0};
  for (const rpk::PictureOptions& size : {rpk::PictureOptions{203, 131, true}, rpk::PictureOptions{64, 64, false}}) {
    rpk::PictureOptions options = size;
    options.threads = 1;
    const std::vector<std::uint8_t> first = draw(model, "iso", options).pixels;
    for (const unsigned threads : {2U, 3U, 40U, 0U}) {
      options.threads = threads;
      EXPECT_EQ(draw(model, "iso", options).pixels, first) << threads;
    }
  }
}

TEST(Picture, HasTheSizeThatIsAskedFor) {
  const rpk::PictureScene scene(cubes({rpk::kIdentity}));
  const struct {
    std::uint32_t width;
    std::uint32_t height;
    bool drawn;
  } sizes[] = {{1, 1, true},  {3, 1, true},  {1, 200, true},    {65, 64, true},
               {63, 1, true}, {0, 5, false}, {16385, 1, false}, {16384, 16384, false}};
  for (const auto& size : sizes) {
    const Image image = draw(scene, "iso", {size.width, size.height, true});
    EXPECT_EQ(image.width, size.drawn ? size.width : 0) << size.width << " x " << size.height;
    EXPECT_EQ(image.pixels.size(), size.drawn ? std::size_t{4} * size.width * size.height : 0);
  }
}

TEST(Picture, TellsItsProgressAndStops) {
  const rpk::PictureScene scene(cubes({rpk::kIdentity}));
  const rpk::PictureOptions options{300, 200, false, 2};
  const rpk::PictureCamera camera = rpk::frameScene(scene, {}, 300, 200);
  double last = 0;
  const Image whole = rpk::drawPicture(scene, camera, options, [&](double done) {
    EXPECT_GE(done, last);
    last = done;
    return true;
  });
  EXPECT_EQ(whole.width, 300U);
  EXPECT_GT(last, 0.3);
  EXPECT_LE(last, 1);
  EXPECT_TRUE(rpk::drawPicture(scene, camera, options, [](double) { return false; }).pixels.empty());
  EXPECT_THROW(rpk::drawPicture(scene, camera, options, [](double) -> bool { throw std::runtime_error("window"); }),
               std::runtime_error);
}

TEST(PictureModel, SharesPartsAndMaterialsOfAPackage) {
  const std::string package = rpk_test::pumpPackage();
  std::vector<std::string> asked;
  const PictureModel model = rpk::pictureModel(rpk::readScene(package), [&](const std::string& path) {
    asked.push_back(path);
    return nullptr;
  });
  ASSERT_EQ(model.instances.size(), 3U);
  EXPECT_EQ(model.parts.size(), 2U);
  EXPECT_EQ(model.instances[0].part, model.instances[2].part);
  EXPECT_EQ(model.instances[0].materials, model.instances[2].materials);
  EXPECT_EQ(model.instances[0].placement[12], 100);
  EXPECT_EQ(model.instances[2].placement[12], -100);
  EXPECT_EQ(model.materials.front().colour, (Vector{0.8, 0.2, 0.1}));
  EXPECT_TRUE(asked.empty()) << "the texture belongs to an exact surface";
}

}  // namespace
}  // namespace picture_test
