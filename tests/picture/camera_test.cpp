// Where the parts of a model come to stand in its picture.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/picture/small_models.h"
#include "tests/rpk/package_text.h"

namespace picture_test {
namespace {

TEST(StandardViews, ShowTheRightFacesForEveryUpAxis) {
  // The outer faces at the right, the top and the front of the model, and those opposite.
  const struct {
    const char* right;
    const char* top;
    const char* front;
    const char* left;
    const char* bottom;
    const char* back;
  } axes[] = {
      {"-y", "+x", "+z", "+y", "-x", "-z"}, {"+x", "+y", "+z", "-x", "-y", "-z"}, {"+x", "+z", "-y", "-x", "-z", "+y"},
      {"+y", "-x", "+z", "-y", "+x", "-z"}, {"+x", "-y", "-z", "-x", "+y", "+z"}, {"+x", "-z", "+y", "-x", "+z", "-y"},
  };
  const rpk::PictureScene scene(cubes({rpk::kIdentity}));
  int up = 0;
  for (const auto& axis : axes) {
    SCOPED_TRACE(up);
    const rpk::PictureOptions small{60, 60};
    const auto middle = [&](const char* view) { return faceAt(draw(scene, view, small, up), 0.5, 0.5); };
    EXPECT_EQ(middle("front"), axis.front);
    EXPECT_EQ(middle("back"), axis.back);
    EXPECT_EQ(middle("left"), axis.left);
    EXPECT_EQ(middle("right"), axis.right);
    EXPECT_EQ(middle("top"), axis.top);
    EXPECT_EQ(middle("bottom"), axis.bottom);
    const Image iso = draw(scene, "iso", small, up);
    EXPECT_EQ(faceAt(iso, 0.5, 0.25), axis.top);
    EXPECT_EQ(faceAt(iso, 0.3, 0.65), axis.front);
    EXPECT_EQ(faceAt(iso, 0.7, 0.65), axis.right);
    ++up;
  }
  EXPECT_FALSE(rpk::standardView("isometric", 1));
}

// Seen from the top the front is at the bottom of the picture, from below at its top; right stays right, but from
// behind.
TEST(StandardViews, AreTheRightWayUp) {
  const PictureModel model = cubes({shifted(0, 0, 0), shifted(0, 0, 4), shifted(4, 0, 0)});
  const rpk::PictureScene scene(model);
  const struct {
    const char* view;
    double across;
    double down;
  } empty[] = {{"top", 0.8, 0.8}, {"bottom", 0.8, 0.2}};
  for (const auto& entry : empty) {
    const Image image = draw(scene, entry.view, {60, 60});
    for (const double across : {0.2, 0.8}) {
      for (const double down : {0.2, 0.8}) {
        EXPECT_EQ(isBackground(pixelAt(image, across, down)), across == entry.across && down == entry.down)
            << entry.view << across << down;
      }
    }
  }
  EXPECT_EQ(faceAt(draw(scene, "back", {90, 30}), 0.2, 0.5), "-z");
}

TEST(PackageCamera, LooksWhereItsTransformTurnsIt) {
  const std::string package = rpk_test::pumpPackage();
  const rpk::Scene scene = rpk::readScene(package);
  const auto view = rpk::cameraView(*scene.camera("Current Creo camera"));
  ASSERT_TRUE(view);
  EXPECT_EQ(view->direction, (Vector{0, 1, 0}));
  EXPECT_EQ(view->up, (Vector{0, 0, 1}));
  EXPECT_EQ(rpk::upAxis(scene), 1);

  // A view matrix may scale; its inverse then does, too.
  rpk::Camera camera;
  camera.transform = Matrix{0, 0.25, 0, 0, 0, 0, 0.25, 0, 0.25, 0, 0, 0, 0, 0, 0, 1};
  EXPECT_EQ(rpk::cameraView(camera)->direction, (Vector{-1, 0, 0}));
  EXPECT_EQ(rpk::cameraView(camera)->up, (Vector{0, 0, 1}));
  camera.values = {{"direction", "1 0 0"}, {"up", "nothing"}};
  camera.transform.reset();
  EXPECT_EQ(rpk::cameraView(camera)->direction, (Vector{1, 0, 0}));
  EXPECT_EQ(rpk::cameraView(camera)->up, (Vector{0, 1, 0}));
  for (const double bad : {0.0, std::nan(""), std::numeric_limits<double>::infinity()}) {
    Matrix matrix = {};
    matrix.fill(bad);
    camera.transform = matrix;
    EXPECT_FALSE(rpk::cameraView(camera)) << bad;
  }
}

TEST(Framing, FillsThePictureWhateverItsShape) {
  const rpk::PictureScene scene(cubes({shifted(1000, 500, 0), shifted(1006, 500, 0)}));
  const struct {
    std::uint32_t width;
    std::uint32_t height;
  } sizes[] = {{120, 60}, {60, 120}, {200, 70}};
  for (const auto& size : sizes) {
    const Image image = draw(scene, "front", {size.width, size.height});
    std::uint32_t left = size.width;
    std::uint32_t right = 0;
    std::uint32_t top = size.height;
    std::uint32_t bottom = 0;
    for (std::uint32_t y = 0; y < size.height; ++y) {
      for (std::uint32_t x = 0; x < size.width; ++x) {
        const std::uint8_t* pixel = image.at(x, y);
        if (isBackground({pixel[0], pixel[1], pixel[2]})) continue;
        left = std::min(left, x);
        right = std::max(right, x + 1);
        top = std::min(top, y);
        bottom = std::max(bottom, y + 1);
      }
    }
    // The model is four times as wide as high.
    const double wide = (right - left) / static_cast<double>(size.width);
    const double high = (bottom - top) / static_cast<double>(size.height);
    EXPECT_NEAR(std::max(wide, high), 0.93, 0.05) << size.width;
    EXPECT_NEAR(left + right, size.width, 2.0);
    EXPECT_NEAR(top + bottom, size.height, 2.0);
  }
}

TEST(PictureAxes, StandAtRightAnglesForAnyView) {
  const double none = std::nan("");
  for (const rpk::ViewDirection& view :
       {rpk::ViewDirection{{0, -1, 0}, {0, 1, 0}}, rpk::ViewDirection{{0, 0, 0}, {0, 0, 0}},
        rpk::ViewDirection{{none, 0, 0}, {0, none, 0}}, rpk::ViewDirection{{1, 2, 3}, {1, 2, 3}}}) {
    const rpk::PictureAxes axes = rpk::pictureAxes(view);
    for (std::size_t i = 0; i < 3; ++i) {
      const std::size_t j = (i + 1) % 3;
      const std::size_t k = (i + 2) % 3;
      EXPECT_NEAR(axes.right[j] * axes.up[k] - axes.right[k] * axes.up[j], axes.back[i], 1e-12);
    }
    EXPECT_NEAR(std::hypot(axes.back[0], axes.back[1], axes.back[2]), 1, 1e-12);
  }
}

}  // namespace
}  // namespace picture_test
