// Exact surfaces on the reader's side: evaluation, loops, areas, triangles, and what the check says of them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "tests/rpk/damage.h"
#include "tests/rpk/exact_model.h"
#include "tests/rpk/package_text.h"
#include "tools/rpk/exact/exact_check.h"
#include "tools/rpk/exact/exact_mesh.h"
#include "tools/rpk/exact/trim_loops.h"
#include "tools/rpk/exact/trimmed_area.h"

namespace rpk {
namespace {

using rpk_test::circleCurve;
using rpk_test::rectangleLoop;

constexpr double kPi = std::numbers::pi;

NurbsCurve turnedRound(NurbsCurve curve) {
  std::reverse(curve.points.begin(), curve.points.end());
  return curve;
}

// A plate of 10 by 8 in the plane, parameters in the same unit.
NurbsSurface plate() {
  return {1, 1, {0, 0, 10, 10}, {0, 0, 8, 8}, {{0, 0, 0, 1}, {10, 0, 0, 1}, {0, 8, 0, 1}, {10, 8, 0, 1}}};
}

// A quarter of a cylinder of radius 2 and height 3; u runs round it, from 0 to 1.
NurbsSurface quarterCylinder() {
  const double weight = std::sqrt(0.5);
  NurbsSurface surface{2, 1, {0, 0, 0, 1, 1, 1}, {0, 0, 3, 3}, {}};
  for (const double z : {0.0, 3.0}) {
    surface.points.insert(surface.points.end(), {{2, 0, z, 1}, {2, 2, z, weight}, {0, 2, z, 1}});
  }
  return surface;
}

TEST(ExactSurface, RationalSurfacesAreEvaluatedWithTheirDerivatives) {
  const NurbsSurface surface = quarterCylinder();
  for (const double u : {0.0, 0.2, 0.5, 0.9, 1.0}) {
    const NurbsPoint point = surface.at(u, 1.25);
    EXPECT_NEAR(std::hypot(point.position[0], point.position[1]), 2, 1e-12);
    EXPECT_NEAR(point.position[2], 1.25, 1e-12);
    // Round the cylinder a derivative is at right angles to the radius, along it the axis.
    EXPECT_NEAR(point.du[0] * point.position[0] + point.du[1] * point.position[1], 0, 1e-12);
    EXPECT_NEAR(point.dv[2], 1, 1e-12);
    constexpr double kStep = 1e-6;
    const NurbsPoint next = surface.at(u + kStep, 1.25);
    for (std::size_t axis = 0; axis < 3; ++axis) {
      EXPECT_NEAR((next.position[axis] - point.position[axis]) / kStep, point.du[axis], 1e-4) << u;
    }
  }
}

TEST(ExactSurface, LoopsAreChainedWhicheverWayTheyRun) {
  TrimLoop loop = rectangleLoop(0, 0, 4, 2);
  EXPECT_NEAR(chainLoop(loop).gap, 0, 1e-15);
  // Turned round as a whole, each curve in its place.
  for (NurbsCurve& curve : loop.curves) curve = turnedRound(curve);
  const ChainedLoop back = chainLoop(loop);
  EXPECT_NEAR(back.gap, 0, 1e-15);
  EXPECT_NEAR(std::abs(signedArea(samplePolygon(back, 1))), 8, 1e-12);
  loop.curves.pop_back();
  EXPECT_NEAR(chainLoop(loop).gap, 2, 1e-12);
  EXPECT_NEAR(chainLoop({{circleCurve(1, 1, 0.5)}, true}).gap, 0, 1e-15);
}

TEST(ExactSurface, AreaIsThatWithinTheOuterLoopsWithoutTheHoles) {
  EXPECT_NEAR(trimmedArea({plate(), {}}), 80, 1e-9);
  const TrimLoop outer = rectangleLoop(1, 1, 9, 7);
  const TrimLoop hole = {{circleCurve(5, 4, 2)}, false};
  EXPECT_NEAR(trimmedArea({plate(), {outer}}), 48, 1e-6);
  EXPECT_NEAR(trimmedArea({plate(), {outer, hole}}), 48 - 4 * kPi, 1e-3);
  // The order and the direction of the loops do not count.
  EXPECT_NEAR(trimmedArea({plate(), {{{turnedRound(circleCurve(5, 4, 2))}, false}, outer}}), 48 - 4 * kPi, 1e-3);
  EXPECT_NEAR(trimmedArea({quarterCylinder(), {}}), 3 * kPi, 1e-4);
  EXPECT_NEAR(trimmedArea({quarterCylinder(), {rectangleLoop(0, 0, 1, 1.5)}}), 1.5 * kPi, 1e-4);
}

TEST(ExactSurface, FlagsAreHeldAgainstTheLoopsPlaces) {
  const TrimLoop outer = rectangleLoop(1, 1, 9, 7);
  const TrimLoop hole = {{circleCurve(5, 4, 2)}, false};
  const TrimLoop island = {{circleCurve(5, 4, 1)}, true};
  EXPECT_TRUE(exactFacts({plate(), {outer, hole, island}}).sound());
  TrimLoop wrong = hole;
  wrong.inside = true;
  EXPECT_FALSE(exactFacts({plate(), {outer, wrong}}).flagsHold);
  EXPECT_FALSE(exactFacts({plate(), {hole}}).sound());
  TrimLoop open = outer;
  open.curves[1].points[1][1] -= 0.01;
  EXPECT_NEAR(exactFacts({plate(), {open}}).widestGap, 0.001, 1e-9);
}

TEST(ExactSurface, TrianglesFillTheTrims) {
  const TrimmedSurface plateWithHole = {plate(), {rectangleLoop(1, 1, 9, 7), {{circleCurve(5, 4, 2)}, false}}};
  EXPECT_NEAR(areaOf(exactMesh(plateWithHole, 0.002)), 48 - 4 * kPi, 0.05);
  const TrimmedSurface cylinder = {quarterCylinder(), {rectangleLoop(0, 0.5, 1, 2.5)}};
  const TriangleMesh mesh = exactMesh(cylinder, 0.001);
  EXPECT_NEAR(areaOf(mesh), 2 * kPi, 0.01);
  for (std::size_t i = 0; i < mesh.vertexCount(); ++i) {
    const float* position = mesh.positions.data() + 3 * i;
    const float* normal = mesh.normals.data() + 3 * i;
    EXPECT_NEAR(std::hypot(position[0], position[1]), 2, 1e-5);
    EXPECT_NEAR(normal[0] * position[0] + normal[1] * position[1], 2, 1e-4) << "along the radius";
  }
  EXPECT_EQ(exactMesh({plate(), {{{}, true}}}, 0.01).triangleCount(), 0U);
}

// The plate as a package: its exact surface, and a mesh of its corners.
std::string platePackage(const std::string& uvs, const std::string& order = "2") {
  using namespace rpk_test;
  return "//---vantor:dal:7---\ngroup \"plate\" {\n  group \"plate.prt\" {\n    group \"plate\" {\n      flags 66560\n"
         "      object \"plate\" {\n        geometry \"nurbs\" {\n          \"uorder\" " +
         order +
         ",\n"
         "          \"vorder\" 2,\n          \"uknot\" [ " +
         packedDoubles({0, 0, 10, 10}) + "] ,\n          \"vknot\" [ " + packedDoubles({0, 0, 8, 8}) +
         "] ,\n          \"Pw\" [ " + packedDoubles({0, 0, 0, 1, 10, 0, 0, 1, 0, 8, 0, 1, 10, 8, 0, 1}) +
         "] ,\n        }\n      }\n      object \"plate\" {\n        geometry \"triangles\" {\n          \"vertices\" "
         "[ " +
         packedFloats('c', {0, 0, 0, 10, 0, 0, 10, 8, 0}) + "] ,\n          \"uv_tex\" [ " + uvs +
         "] ,\n          \"triangles\" [ " + packedIntegers({0, 1, 2}) + "] ,\n        }\n      }\n    }\n  }\n}\n";
}

TEST(ExactSurface, MeshesAreHeldAgainstTheSurfacesBesideThem) {
  const std::string good = platePackage(rpk_test::packedFloats('f', {0, 0, 10, 0, 10, 8}));
  ExactReport report = checkExact(readScene(good), exactTolerance(0.2));
  EXPECT_TRUE(report.good());
  EXPECT_EQ(report.surfaces, 1U);
  EXPECT_EQ(report.vertices, 3U);
  const std::string stray = platePackage(rpk_test::packedFloats('f', {0, 0, 10, 0, 10, 7.9F}));
  report = checkExact(readScene(stray), exactTolerance(0.2));
  EXPECT_EQ(report.strayVertices, 1U);
  EXPECT_NEAR(report.widestStray, 0.1 / std::hypot(10, 8), 1e-6);
  ASSERT_EQ(report.findings.size(), 1U);
  EXPECT_EQ(report.findings[0].path, "plate / plate.prt");
  const std::string broken = platePackage(rpk_test::packedFloats('f', {0, 0, 10, 0, 10, 8}), "3");
  report = checkExact(readScene(broken), exactTolerance(0.2));
  EXPECT_EQ(report.sound, 0U);
  EXPECT_EQ(report.findings.at(0).path, "plate / plate.prt / surface 0");
}

// Whatever the arrays hold, it ends, stays finite and within what it was given.
TEST(ExactSurface, DamagedSurfacesAreReadAsFarAsTheyMakeSense) {
  const std::string whole = platePackage(rpk_test::packedFloats('f', {0, 0, 10, 0, 10, 8}));
  std::size_t read = 0;
  for (std::uint32_t seed = 0; seed < 400; ++seed) {
    const std::string damaged = rpk_test::Damager(seed).damage(whole);
    const Scene scene = readScene(damaged);
    checkExact(scene, exactTolerance(0.2));
    for (const Group* group : scene.allGroups()) {
      for (const Object& object : group->objects) {
        const auto trimmed = readTrimmedSurface(object);
        if (!trimmed) continue;
        ++read;
        for (const float value : exactMesh(*trimmed, 0.01).positions) ASSERT_TRUE(std::isfinite(value)) << seed;
      }
    }
  }
  EXPECT_GT(read, 50U);
  const TrimmedSurface far = {plate(), {rectangleLoop(-1e20, -1e20, 1e20, 1e20)}};
  EXPECT_LT(exactMesh(far, 1e-9).triangleCount(), 1000000U);
}

// A boundary that winds up and down between all its corners' heights would be cut into pieces by the square of them.
TEST(ExactSurface, WorkIsBoundedForABoundaryWithoutAnInside) {
  TrimLoop zigzag;
  constexpr int kCorners = 2000;
  const auto corner = [](int i) { return Parameter2{10.0 * i / kCorners, i % 2 == 0 ? 0.001 * i : 8 - 0.001 * i}; };
  for (int i = 0; i < kCorners; ++i) {
    const Parameter2 from = corner(i);
    const Parameter2 to = corner((i + 1) % kCorners);
    zigzag.curves.push_back(rpk_test::lineCurve(from[0], from[1], to[0], to[1]));
  }
  const std::size_t triangles = exactMesh({plate(), {zigzag}}, 0.01).triangleCount();
  EXPECT_GT(triangles, 900000U);
  EXPECT_LT(triangles, 1100000U);
}

// Knots so close that the derivatives leave the range of numbers.
TEST(ExactSurface, AnAreaWithoutEndIsNotSound) {
  NurbsSurface surface = plate();
  surface.uKnots = {0, 0, 1e-200, 1e-200};
  surface.vKnots = {0, 0, 1e-200, 1e-200};
  const ExactFacts facts = exactFacts({surface, {}});
  EXPECT_FALSE(std::isfinite(facts.area));
  EXPECT_FALSE(facts.sound());
}

// Read as a package holds it: a knot that hardly differs from the one before is that one, a domain without width is
// none.
TEST(ExactSurface, KnotsThatHardlyDifferAreOne) {
  const auto read = [](const TrimmedSurface& surface) {
    const std::string text = "object \"o\" {\n" + rpk_test::exactGeometry(surface) + "}\n";
    return readTrimmedSurface(readScene(text).objects.at(0));
  };
  TrimmedSurface cylinder = rpk_test::cylinderWithHole();
  cylinder.surface.uKnots[4] = 1 + 1e-15;
  const auto rounded = read(cylinder);
  ASSERT_TRUE(rounded);
  EXPECT_EQ(rounded->surface.uKnots[4], 1);
  cylinder.surface.uKnots[3] = 1e-310;
  const auto close = read(cylinder);
  ASSERT_TRUE(close);
  const TriangleMesh mesh = exactMesh(*close, 0.05);
  EXPECT_GT(mesh.triangleCount(), 0U);
  EXPECT_TRUE(std::all_of(mesh.normals.begin(), mesh.normals.end(), [](float value) { return std::isfinite(value); }));
  TrimmedSurface narrow = rpk_test::unitSquare();
  narrow.surface.vKnots = {0, 0, 1e-200, 1e-200};
  EXPECT_FALSE(read(narrow));
  narrow.surface.vKnots = {0, 0, 1e200, 1e200};
  EXPECT_FALSE(read(narrow));
}

TEST(ExactSurface, ToleranceFollowsTheQuality) {
  EXPECT_NEAR(exactTolerance(0), 0.001501, 1e-9);
  EXPECT_NEAR(exactTolerance(1), 0.0000013, 1e-9);
  EXPECT_NEAR(exactTolerance(0.2), 3 * 0.000161 + 1e-6, 1e-6);
}

}  // namespace
}  // namespace rpk
