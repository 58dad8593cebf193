// Models with values that no exporter should write.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/picture/small_models.h"

namespace picture_test {
namespace {

constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinite = std::numeric_limits<float>::infinity();

TEST(DamagedModel, ShowsWhatIsGood) {
  PictureModel model = cubes({rpk::kIdentity});
  TriangleMesh bad = square({0, 0, 0}, {1, 0, 0}, {0, 1, 0});
  bad.positions.insert(bad.positions.end(), {kNone, 0, 0, kInfinite, 0, 0, 1e30F, 1e30F, 1e30F});
  bad.indices = {0, 1, 4, 0, 1, 5, 0, 1, 99, 0xffffffffU, 1, 2, 0, 0, 0, 0, 1, 1, 2};
  bad.normals = {kNone, 0};
  bad.uvs = {1};
  model.parts[0].meshes.push_back(bad);
  const rpk::PictureScene scene(model);
  EXPECT_EQ(scene.leftOut(), 4U);
  EXPECT_EQ(scene.triangleCount(), 12U);
  EXPECT_NEAR(scene.radius(), std::sqrt(3.0), 1e-6) << "stray vertices do not count";
  EXPECT_EQ(faceAt(draw(scene), 0.5, 0.5), "+z");
}

TEST(DamagedModel, LeavesOutPlacementsThatFlattenOrAreNoNumbers) {
  const double none = std::nan("");
  Matrix perspective = rpk::kIdentity;
  perspective[3] = 0.5;
  PictureModel model = cubes({{none, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1},
                              {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1},
                              {1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1},
                              {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1e300, 0, 0, 1},
                              perspective,
                              rpk::kIdentity});
  model.instances.push_back({77, rpk::kIdentity, {}});
  const rpk::PictureScene scene(model);
  EXPECT_EQ(scene.placedInstances(), 1U);
  EXPECT_EQ(scene.leftOut(), 5U);
  EXPECT_EQ(faceAt(draw(scene), 0.5, 0.5), "+z");
}

TEST(DamagedModel, StandsAnyNormalsTexturesAndColours) {
  const Image wrong = draw(modelOf(square({0, 0, 0}, {1, 0, 0}, {0, 1, 0}), {std::nan(""), 7, -3}));
  EXPECT_GT(pixelAt(wrong, 0.5, 0.5).green, 200);
  for (const float value : {0.0F, kNone, kInfinite, 1e38F, -1e-40F}) {
    PictureModel model = modelOf(square({0, 0, 0}, {1, 0, 0}, {0, 1, 0}));
    setNormals(model.parts[0].meshes[0], value, value, value);
    for (float& uv : model.parts[0].meshes[0].uvs) uv *= value;
    model.materials[0].texture = std::make_shared<const Image>(Image{1, 1, {0, 255, 0, 255}});
    for (const bool repeat : {true, false}) {
      model.materials[0].repeat = repeat;
      EXPECT_EQ(draw(model, "iso", {20, 20, true}).width, 20U) << value;
    }
  }
}

// Rays work with 32-bit floats; the picture must not care for the model's size and place.
TEST(DamagedModel, IsDrawnAlikeAtAnySizeAndPlace) {
  const struct {
    double scale;
    double shift;
  } cases[] = {{1e-25, 0}, {1e-6, 1}, {1e25, 0}, {1, 1e9}};
  for (const auto& entry : cases) {
    Matrix placement = shifted(entry.shift, -entry.shift, entry.shift);
    placement[0] = placement[5] = placement[10] = entry.scale;
    const Image image = draw(cubes({placement}), "iso", {60, 60});
    EXPECT_EQ(faceAt(image, 0.5, 0.25), "+y") << entry.scale;
    EXPECT_EQ(faceAt(image, 0.3, 0.65), "+z") << entry.scale;
    EXPECT_EQ(faceAt(image, 0.7, 0.65), "+x") << entry.scale;
  }
}

TEST(DamagedModel, IsJustBackgroundWhenEmpty) {
  PictureModel flat = modelOf({{0, 0, 0, 1, 1, 1}, {}, {}, {0, 1, 1}, 0});
  for (const PictureModel& model : {PictureModel{}, flat, modelOf({})}) {
    const rpk::PictureScene scene(model);
    EXPECT_TRUE(scene.empty());
    EXPECT_TRUE(isBackground(pixelAt(draw(scene, "iso", {30, 20, true}), 0.5, 0.5)));
  }
}

}  // namespace
}  // namespace picture_test
