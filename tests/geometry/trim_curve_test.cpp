#include "geometry/trim_curve.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "geometry/exact_buffers.h"

namespace rendara {
namespace {

using Pole = std::array<double, 3>;

// The point of a rational curve at a parameter, by de Boor's algorithm on weighted points.
std::array<double, 2> evaluate(const TrimCurve& curve, double t) {
  const auto degree = static_cast<std::size_t>(curve.degree);
  std::size_t span = degree;
  while (span + 1 < curve.points.size() && t >= curve.knots[span + 1]) ++span;
  std::vector<Pole> local;
  for (std::size_t i = span - degree; i <= span; ++i) {
    const Pole& pole = curve.points[i];
    local.push_back({pole[0] * pole[2], pole[1] * pole[2], pole[2]});
  }
  for (std::size_t level = 1; level <= degree; ++level) {
    for (std::size_t i = degree; i >= level; --i) {
      const double low = curve.knots[span - degree + i];
      const double high = curve.knots[span + 1 + i - level];
      const double share = (t - low) / (high - low);
      for (std::size_t k = 0; k < 3; ++k) local[i][k] = (1 - share) * local[i - 1][k] + share * local[i][k];
    }
  }
  return {local[degree][0] / local[degree][2], local[degree][1] / local[degree][2]};
}

const TrimCurve kLine = {1, {2, 2, 5, 5}, {{0, 0, 1}, {3, 4, 1}}};
const TrimCurve kPolyline = {1, {0, 0, 1, 4, 4}, {{0, 0, 1}, {1, 0, 1}, {1, 3, 1}}};
const TrimCurve kQuarterCircle = {2, {-1, -1, -1, 1, 1, 1}, {{1, 0, 1}, {1, 1, std::sqrt(0.5)}, {0, 1, 1}}};
const TrimCurve kUneven = {3,
                           {0, 0, 0, 0, 0.1, 0.7, 0.7, 2, 2, 2, 2},
                           {{0, 0, 1}, {1, 2, 3}, {2, -1, 0.5}, {3, 0, 1}, {4, 4, 2}, {5, 1, 1}, {6, 0, 1}}};

TEST(TrimCurve, ReversedCopyRunsTheSamePointsBackwards) {
  for (const TrimCurve& curve : {kLine, kPolyline, kQuarterCircle, kUneven}) {
    const TrimCurve back = reversed(curve);
    ASSERT_EQ(back.knots.size(), curve.knots.size());
    EXPECT_EQ(back.degree, curve.degree);
    EXPECT_DOUBLE_EQ(back.knots.front(), curve.knots.front());
    EXPECT_NEAR(back.knots.back(), curve.knots.back(), 1e-15);
    EXPECT_TRUE(std::is_sorted(back.knots.begin(), back.knots.end()));
    const double first = curve.knots.front();
    const double last = curve.knots.back();
    for (int step = 0; step <= 40; ++step) {
      const double t = first + (last - first) * step / 40.0;
      const auto there = evaluate(curve, t);
      const auto mirrored = evaluate(back, first + last - t);
      EXPECT_NEAR(there[0], mirrored[0], 1e-12) << "degree " << curve.degree << " at " << t;
      EXPECT_NEAR(there[1], mirrored[1], 1e-12) << "degree " << curve.degree << " at " << t;
    }
  }
  EXPECT_FALSE(reversed(TrimCurve{1, {}, {}, false}).readable);
}

TrimCurve edge(double u0, double v0, double u1, double v1) { return {1, {0, 0, 1, 1}, {{u0, v0, 1}, {u1, v1, 1}}}; }

std::vector<TrimCurve> square() { return {edge(0, 0, 1, 0), edge(1, 0, 1, 1), edge(1, 1, 0, 1), edge(0, 1, 0, 0)}; }

TEST(TrimCurve, OrientationCountsTheTurnsOfTwoRounds) {
  // Every corner stands twice in the list, so the walk meets no three different points in a row.
  EXPECT_EQ(orientationCount(square()), 0);
  const TrimCurve ring = {1, {0, 0, 1, 2, 3, 3}, {{0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}}};
  EXPECT_EQ(orientationCount(std::vector{ring}), -8) << "counter-clockwise";
  EXPECT_EQ(orientationCount(std::vector{reversed(ring)}), 8);
  const TrimCurve upper = {2, {0, 0, 0, 1, 1, 1}, {{1, 0, 1}, {0, 2, 1}, {-1, 0, 1}}};
  const TrimCurve lower = {2, {0, 0, 0, 1, 1, 1}, {{-1, 0, 1}, {0, -2, 1}, {1, 0, 1}}};
  const std::vector<TrimCurve> lens = {upper, lower};
  EXPECT_EQ(orientationCount(lens), -4);
  EXPECT_EQ(orientationCount({}), 0);
  EXPECT_EQ(orientationCount(std::vector{edge(0, 0, 1, 1), edge(1, 1, 3, 3), edge(3, 3, 0, 0)}), 0) << "no area";
}

TEST(TrimCurve, TraversalTellsWhichWayAContourRuns) {
  struct Case {
    int traversal;
    std::ptrdiff_t count;
    bool reverse;
  };
  for (const Case& c : {Case{1, -4, false},
                        {1, 0, true},
                        {1, 4, true},
                        {-1, -4, true},
                        {-1, 0, false},
                        {-1, 4, false},
                        {0, -4, false},
                        {0, 4, false},
                        {2, 4, false}}) {
    EXPECT_EQ(mustReverse(c.traversal, c.count), c.reverse) << c.traversal << ", " << c.count;
  }
}

TEST(TrimCurve, AReversedContourKeepsTheOrderOfItsCurves) {
  std::vector<TrimCurve> contour = square();
  reverseContour(contour);
  for (std::size_t i = 0; i < contour.size(); ++i) {
    EXPECT_EQ(contour[i].points, reversed(square()[i]).points);
  }
}

TEST(ExactSurfaceBuffers, PointsAreTurnedSoThatURunsFastest) {
  // Three by two: the first coordinate counts u, the second v.
  constexpr double kPoints[6][3] = {{0, 0, 9}, {0, 1, 9}, {1, 0, 9}, {1, 1, 9}, {2, 0, 9}, {2, 1, 9}};
  constexpr double kWeights[6] = {1, 2, 3, 4, 5, 6};
  ExactSurfaceBuffers buffers;
  buffers.setSurfacePoints(kPoints, kWeights, 3, 2);
  EXPECT_EQ(buffers.surfacePoints, (std::vector<double>{0, 0, 9, 1, 1, 0, 9, 3, 2, 0, 9, 5,  //
                                                        0, 1, 9, 2, 1, 1, 9, 4, 2, 1, 9, 6}));
  const double* place = buffers.surfacePoints.data();
  buffers.setSurfacePoints(kPoints, nullptr, 1, 2);
  EXPECT_EQ(buffers.surfacePoints, (std::vector<double>{0, 0, 9, 1, 0, 1, 9, 1}));
  EXPECT_EQ(buffers.surfacePoints.data(), place) << "the capacity stays";
}

}  // namespace
}  // namespace rendara
