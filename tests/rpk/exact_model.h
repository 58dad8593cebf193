// Exact surfaces of known area, and their text in a package.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tests/rpk/package_text.h"
#include "tools/rpk/exact/nurbs.h"

namespace rpk_test {

// Control points of a circle of radius 1, those with an odd index of weight sqrt(0.5).
inline constexpr std::array<int, 9> kCircleX = {1, 1, 0, -1, -1, -1, 0, 1, 1};
inline constexpr std::array<int, 9> kCircleY = {0, 1, 1, 1, 0, -1, -1, -1, 0};

inline rpk::NurbsCurve lineCurve(double u0, double v0, double u1, double v1) {
  return {1, {0, 0, 1, 1}, {{u0, v0, 1}, {u1, v1, 1}}};
}

// A circle as four rational arcs.
inline rpk::NurbsCurve circleCurve(double u, double v, double radius) {
  const double weight = std::sqrt(0.5);
  rpk::NurbsCurve curve{2, {0, 0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 4}, {}};
  for (std::size_t i = 0; i < kCircleX.size(); ++i) {
    curve.points.push_back({u + radius * kCircleX[i], v + radius * kCircleY[i], i % 2 == 1 ? weight : 1});
  }
  return curve;
}

inline rpk::TrimLoop rectangleLoop(double u0, double v0, double u1, double v1, bool inside = true) {
  return {{lineCurve(u0, v0, u1, v0), lineCurve(u1, v0, u1, v1), lineCurve(u1, v1, u0, v1), lineCurve(u0, v1, u0, v0)},
          inside};
}

// A square of side 1 in the xy plane, trimmed to its whole domain, 0 to 1.
inline rpk::TrimmedSurface unitSquare() {
  return {{1, 1, {0, 0, 1, 1}, {0, 0, 1, 1}, {{0, 0, 0, 1}, {1, 0, 0, 1}, {0, 1, 0, 1}, {1, 1, 0, 1}}},
          {rectangleLoop(0, 0, 1, 1)}};
}

// A whole cylinder of radius 2 and height 3 about z as four rational arcs, u from 0 to 4, v along its height. The hole
// takes one quarter of the round from z 1 to 2, so that the area is 11 pi.
inline rpk::TrimmedSurface cylinderWithHole() {
  const double weight = std::sqrt(0.5);
  rpk::TrimmedSurface cylinder = {{2, 1, {0, 0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 4}, {0, 0, 3, 3}, {}},
                                  {rectangleLoop(0, 0, 4, 3), rectangleLoop(1, 1, 2, 2, false)}};
  for (const double z : {0.0, 3.0}) {
    for (std::size_t i = 0; i < kCircleX.size(); ++i) {
      cylinder.surface.points.push_back({2.0 * kCircleX[i], 2.0 * kCircleY[i], z, i % 2 == 1 ? weight : 1});
    }
  }
  return cylinder;
}

namespace detail {
template <std::size_t kSize>
std::vector<double> flat(const std::vector<std::array<double, kSize>>& points) {
  std::vector<double> values;
  for (const auto& point : points) values.insert(values.end(), point.begin(), point.end());
  return values;
}

template <typename Value>
void append(std::vector<Value>& values, const std::vector<Value>& more) {
  values.insert(values.end(), more.begin(), more.end());
}
}  // namespace detail

// The geometry block of a surface, as the export writes one.
inline std::string exactGeometry(const rpk::TrimmedSurface& trimmed) {
  const rpk::NurbsSurface& surface = trimmed.surface;
  std::vector<std::int32_t> counts, inside, orders, knotCounts;
  std::vector<double> least, greatest, knots, points;
  for (const rpk::TrimLoop& loop : trimmed.loops) {
    counts.push_back(static_cast<std::int32_t>(loop.curves.size()));
    inside.push_back(loop.inside ? 1 : 0);
    for (const rpk::NurbsCurve& curve : loop.curves) {
      orders.push_back(curve.degree + 1);
      knotCounts.push_back(static_cast<std::int32_t>(curve.knots.size()));
      least.push_back(curve.first());
      greatest.push_back(curve.last());
      detail::append(knots, curve.knots);
      detail::append(points, detail::flat(curve.points));
    }
  }
  std::string text = "geometry \"nurbs\" {\n";
  const auto number = [&](const char* name, const std::string& value) {
    text += std::string("  \"") + name + "\" " + value + ",\n";
  };
  const auto array = [&](const char* name, const std::string& packed) {
    text += std::string("  \"") + name + "\" [ " + packed + "] ,\n";
  };
  number("umin", std::to_string(surface.uMin()));
  number("umax", std::to_string(surface.uMax()));
  number("vmin", std::to_string(surface.vMin()));
  number("vmax", std::to_string(surface.vMax()));
  number("uorder", std::to_string(surface.uDegree + 1));
  number("vorder", std::to_string(surface.vDegree + 1));
  array("uknot", packedDoubles(surface.uKnots));
  array("vknot", packedDoubles(surface.vKnots));
  array("Pw", packedDoubles(detail::flat(surface.points)));
  if (!trimmed.loops.empty()) {
    array("trim_nedges", packedIntegers(counts));
    array("trim_inside", packedIntegers(inside));
    array("edge_order", packedIntegers(orders));
    array("edge_nknots", packedIntegers(knotCounts));
    array("edge_min", packedDoubles(least));
    array("edge_max", packedDoubles(greatest));
    array("edge_knot", packedDoubles(knots));
    array("edge_uvw", packedDoubles(points));
  }
  return text + "}\n";
}

}  // namespace rpk_test
