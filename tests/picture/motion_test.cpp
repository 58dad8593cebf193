// Where moving groups stand at a time.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "tools/rpk/gltf/motion.h"

namespace {

using rpk::Matrix;

Matrix turnedAndShifted(double degrees, double x, double scale = 1) {
  const double angle = degrees * std::acos(-1.0) / 180;
  const double c = scale * std::cos(angle);
  const double s = scale * std::sin(angle);
  return {c, s, 0, 0, -s, c, 0, 0, 0, 0, scale, 0, x, 0, 0, 1};
}

void expectNear(const Matrix& matrix, const Matrix& expected) {
  for (std::size_t i = 0; i < 16; ++i) EXPECT_NEAR(matrix[i], expected[i], 1e-6) << "element " << i;
}

rpk::Group moving(std::vector<Matrix> matrices, std::vector<std::int32_t> times) {
  rpk::Group group;
  group.animations.push_back({"fbx_animation", "part", {}, std::move(matrices), std::move(times)});
  return group;
}

TEST(Motion, MovesEvenlyBetweenFramesAndStandsBeforeAndAfter) {
  const rpk::Group group =
      moving({turnedAndShifted(10, 2), turnedAndShifted(100, 4), turnedAndShifted(350, 4, 3)}, {40, 80, 160});
  expectNear(rpk::placementAt(group, -1), turnedAndShifted(10, 2));
  expectNear(rpk::placementAt(group, 0.04), turnedAndShifted(10, 2));
  expectNear(rpk::placementAt(group, 0.05), turnedAndShifted(32.5, 2.5));
  expectNear(rpk::placementAt(group, 0.08), turnedAndShifted(100, 4));
  expectNear(rpk::placementAt(group, 0.12), turnedAndShifted(45, 4, 2));  // back through 0, the short way
  expectNear(rpk::placementAt(group, 9), turnedAndShifted(350, 4, 3));
}

TEST(Motion, ComesBeforeThePlacement) {
  rpk::Group group = moving({turnedAndShifted(0, 5), turnedAndShifted(90, 5)}, {0, 1000});
  group.placement = turnedAndShifted(90, 100);
  expectNear(rpk::placementAt(group, 0), rpk::multiply(turnedAndShifted(0, 5), *group.placement));
  const Matrix shear = {1, 0, 0, 0, 0.5, 1, 0, 0, 0, 0, 1, 0, 7, 0, 0, 1};
  group.placement = shear;  // which no pose can hold
  expectNear(rpk::placementAt(group, 1), rpk::multiply(turnedAndShifted(90, 5), shear));
}

TEST(Motion, WhatHasNoUsefulAnimationRests) {
  rpk::Group group;
  EXPECT_EQ(rpk::placementAt(group, 1), rpk::kIdentity);
  group = moving({}, {0});
  group.placement = turnedAndShifted(20, 3);
  EXPECT_EQ(rpk::placementAt(group, 1), *group.placement);
}

TEST(Motion, EndsWithTheLastOfAllGroups) {
  rpk::Scene scene;
  EXPECT_EQ(rpk::motionEnd(scene), std::nullopt);
  auto outer = std::make_unique<rpk::Group>(moving({turnedAndShifted(0, 1), turnedAndShifted(0, 2)}, {0, 40}));
  outer->children.push_back(std::make_unique<rpk::Group>(
      moving({turnedAndShifted(0, 1), turnedAndShifted(0, 2), turnedAndShifted(0, 3)}, {0, 500, 2000, 9000})));
  scene.groups.push_back(std::move(outer));
  EXPECT_DOUBLE_EQ(rpk::motionEnd(scene).value(), 2.0) << "what both of a group's lists hold";
}

}  // namespace
