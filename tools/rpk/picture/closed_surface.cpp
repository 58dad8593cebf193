#include "tools/rpk/picture/closed_surface.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <unordered_map>
#include <utility>

namespace rpk {
namespace {

using Point = std::array<double, 3>;

double distance(const Point& a, const Point& b) { return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]); }

Point toDouble(const std::array<float, 3>& point) { return {point[0], point[1], point[2]}; }

Point areaVector(const Facet& facet) {
  const Point a = toDouble(facet[0]);
  const Point b = toDouble(facet[1]);
  const Point c = toDouble(facet[2]);
  const Point u = {b[0] - a[0], b[1] - a[1], b[2] - a[2]};
  const Point v = {c[0] - a[0], c[1] - a[1], c[2] - a[2]};
  return {(u[1] * v[2] - u[2] * v[1]) / 2, (u[2] * v[0] - u[0] * v[2]) / 2, (u[0] * v[1] - u[1] * v[0]) / 2};
}

// By the divergence theorem the area vectors n of a closed surface add up to nothing, and the products of their centres
// and n to the volume times the unit matrix. A sheet misses the first, an open pipe the second.
bool momentsClose(std::span<const Facet> facets) {
  constexpr double kTolerance = 2e-3;
  Point sum = {};
  std::array<Point, 3> moments = {};
  double area = 0;
  for (const Facet& facet : facets) {
    const Point normal = areaVector(facet);
    area += std::hypot(normal[0], normal[1], normal[2]);
    for (std::size_t i = 0; i < 3; ++i) {
      const double centre = (double{facet[0][i]} + double{facet[1][i]} + double{facet[2][i]}) / 3;
      sum[i] += normal[i];
      for (std::size_t j = 0; j < 3; ++j) moments[i][j] += centre * normal[j];
    }
  }
  const double volume = (moments[0][0] + moments[1][1] + moments[2][2]) / 3;
  double worst = std::hypot(sum[0], sum[1], sum[2]);
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) worst = std::max(worst, std::abs(moments[i][j] - (i == j ? volume : 0)));
  }
  return area > 0 && worst < kTolerance * area;
}

// Numbers for points, the same for points that are the same up to rounding.
class Welder {
 public:
  std::uint32_t number(const std::array<float, 3>& point) {
    constexpr float kCells = 1e5F;
    constexpr long kMiddle = 1L << 20;  // 21 bits for each coordinate
    std::uint64_t key = 0;
    for (const float value : point) {
      key = key << 21 | static_cast<std::uint64_t>(std::lround(std::clamp(value, -8.0F, 8.0F) * kCells) + kMiddle);
    }
    return numbers_.try_emplace(key, static_cast<std::uint32_t>(numbers_.size())).first->second;
  }

 private:
  std::unordered_map<std::uint64_t, std::uint32_t> numbers_;
};

// Whether all but a small part of the edges' length is shared by an even number of facets.
bool bordersMeet(std::span<const Facet> facets) {
  constexpr std::size_t kMostFacets = 2'000'000;
  constexpr double kOpenShare = 0.005;
  if (facets.size() > kMostFacets) return false;
  std::vector<std::pair<std::uint64_t, double>> edges;
  edges.reserve(facets.size() * 3);
  Welder welder;
  for (const Facet& facet : facets) {
    const std::array<std::uint32_t, 3> corners = {welder.number(facet[0]), welder.number(facet[1]),
                                                  welder.number(facet[2])};
    for (std::size_t i = 0; i < 3; ++i) {
      const std::size_t next = (i + 1) % 3;
      const auto [low, high] = std::minmax(corners[i], corners[next]);
      if (low == high) continue;
      edges.emplace_back(std::uint64_t{high} << 32 | low, distance(toDouble(facet[i]), toDouble(facet[next])));
    }
  }
  std::sort(edges.begin(), edges.end());
  double all = 0;
  double open = 0;
  for (auto first = edges.begin(); first != edges.end();) {
    const auto last = std::find_if(first, edges.end(), [&](const auto& edge) { return edge.first != first->first; });
    all += first->second;
    if ((last - first) % 2 != 0) open += first->second;
    first = last;
  }
  return all > 0 && open <= kOpenShare * all;
}

}  // namespace

bool enclosesVolume(std::span<const Facet> facets) {
  return facets.size() >= 4 && (momentsClose(facets) || bordersMeet(facets));
}

}  // namespace rpk
