#include "geometry/tessellation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "tests/support/test_session.h"

namespace rendara {
namespace {

using standin::test::addBoxPart;
using standin::test::handle;
using standin::test::mesherOf;
using standin::test::solid;

TEST(ChordHeight, FollowsTheQuality) {
  EXPECT_NEAR(chordHeight(100, 1.0), 0.00001, 1e-16);
  EXPECT_DOUBLE_EQ(chordHeight(100, 0.0), 0.05);
  EXPECT_DOUBLE_EQ(chordHeight(1, 0.0000009), 0.0005) << "below a millionth: the coarsest";
  EXPECT_NEAR(chordHeight(1, 0.5), 0.0000694, 1e-7);
  EXPECT_NEAR(chordHeight(1, 0.2), 0.000161, 1e-6);
  EXPECT_NEAR(chordHeight(1, 0.01), 0.000461, 1e-6);
}

TEST(ChordHeight, QualityIsBroughtIntoItsRangeWhereItIsUsed) {
  EXPECT_EQ(usableQuality(-3), 0.0);
  EXPECT_EQ(usableQuality(std::numeric_limits<double>::infinity()), 1.0);
  EXPECT_EQ(usableQuality(std::nan("")), 0.2);
}

class Tessellating : public ::testing::Test {
 protected:
  Tessellating() : part(addBoxPart(session, L"box", standin::Point{3, 4, 12})) {}
  ~Tessellating() override {
    session.finish();
    EXPECT_TRUE(session.misuse().empty()) << session.misuse().front();
  }

  // The qualities behind the chord heights that the surface was asked for.
  std::vector<double> attempts(double quality) {
    mesherOf(part).requests.clear();
    const Tessellation result = SurfaceTessellator(solid(part), quality).tessellate(handle(part.surfaces.front()));
    succeeded = static_cast<bool>(result);
    std::vector<double> qualities;
    for (const auto& request : mesherOf(part).requests) {
      const double fineness = (13 * 0.0005 - request.chordHeight) / (13 * 0.0004999);
      qualities.push_back(std::abs(fineness) < 1e-9 ? 0.0 : std::round(std::exp((fineness - 1) / 0.2) * 1000) / 1000);
    }
    return qualities;
  }

  standin::Session session;
  standin::Model& part;
  bool succeeded = false;
};

TEST_F(Tessellating, PartSizeIsTheOutlinesDiagonalOrOne) {
  EXPECT_DOUBLE_EQ(partSize(solid(part)), 13.0);
  part.outline->at(1) = part.outline->at(0);
  EXPECT_EQ(partSize(solid(part)), 1.0) << "no extent";
  part.outline->at(1)[0] = std::numeric_limits<double>::infinity();
  EXPECT_EQ(partSize(solid(part)), 1.0) << "not finite";
  part.outline.reset();
  EXPECT_EQ(partSize(solid(part)), 1.0) << "no outline";
}

TEST_F(Tessellating, FailuresAreTriedFinerThenCoarser) {
  mesherOf(part).fails = [](std::size_t, double) { return true; };
  EXPECT_EQ(attempts(0.75), (std::vector<double>{0.75, 0.85, 0.95, 0.65, 0.55, 0.45, 0.35, 0.25, 0.15, 0.05}));
  EXPECT_FALSE(succeeded);
}

TEST_F(Tessellating, FirstSuccessEndsTheAttempts) {
  int calls = 0;
  mesherOf(part).fails = [&](std::size_t, double) { return ++calls < 3; };
  EXPECT_EQ(attempts(0.75).size(), 3U);
  EXPECT_TRUE(succeeded);
  EXPECT_EQ(attempts(0.3).size(), 1U);
}

}  // namespace
}  // namespace rendara
