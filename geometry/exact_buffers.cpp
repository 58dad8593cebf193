#include "geometry/exact_buffers.h"

#include <algorithm>
#include <limits>

#include "scene/vntScene_api.h"

namespace rendara {
namespace {

void writeIntegers(vntScene_api& scene, const char* name, const std::vector<int>& values) {
  const SceneArray array = {values.data(), static_cast<int>(values.size())};
  scene.parameter(name, arrayOf(kInt), &array);
}

void writeDoubles(vntScene_api& scene, const char* name, const std::vector<double>& values) {
  const SceneArray array = {values.data(), static_cast<int>(values.size())};
  scene.parameter(name, arrayOf(kDouble), &array);
}

}  // namespace

void ExactSurfaceBuffers::clear() {
  for (std::vector<int>* integers : {&trimEdgeCounts, &trimInside, &edgeOrders, &edgeKnotCounts}) {
    integers->clear();
  }
  for (std::vector<double>* numbers : {&edgeMin, &edgeMax, &edgeKnots, &edgePoints, &surfacePoints}) {
    numbers->clear();
  }
}

void ExactSurfaceBuffers::setSurfacePoints(const double (*points)[3], const double* weights, std::size_t uCount,
                                           std::size_t vCount) {
  surfacePoints.clear();
  surfacePoints.reserve(4 * uCount * vCount);
  for (std::size_t j = 0; j < vCount; ++j) {
    for (std::size_t i = 0; i < uCount; ++i) {
      const std::size_t at = i * vCount + j;
      const double weight = weights != nullptr ? weights[at] : 1.0;
      surfacePoints.insert(surfacePoints.end(), {points[at][0], points[at][1], points[at][2], weight});
    }
  }
}

void ExactSurfaceBuffers::appendTrim(const std::vector<TrimCurve>& curves, int traversal) {
  trimEdgeCounts.push_back(0);
  for (const TrimCurve& curve : curves) {
    if (!curve.readable) {
      return;
    }
    appendEdge(curve);
    ++trimEdgeCounts.back();
  }
  trimInside.push_back(traversal != -1 ? 1 : 0);
}

void ExactSurfaceBuffers::appendEdge(const TrimCurve& curve) {
  edgeOrders.push_back(curve.degree + 1);
  edgeKnots.insert(edgeKnots.end(), curve.knots.begin(), curve.knots.end());
  edgeKnotCounts.push_back(static_cast<int>(curve.knots.size()));
  double least = std::numeric_limits<double>::max();
  double most = std::numeric_limits<double>::lowest();
  for (const double knot : curve.knots) {
    least = std::min(least, knot);
    most = std::max(most, knot);
  }
  edgeMin.push_back(least);
  edgeMax.push_back(most);
  for (const auto& point : curve.points) {
    edgePoints.insert(edgePoints.end(), point.begin(), point.end());
  }
}

void ExactSurfaceBuffers::writeTrims(vntScene_api& scene) const {
  if (trimEdgeCounts.empty() || trimInside.empty() || edgeOrders.empty() || edgeKnotCounts.empty()) {
    return;
  }
  writeIntegers(scene, "trim_nedges", trimEdgeCounts);
  writeIntegers(scene, "trim_inside", trimInside);
  writeIntegers(scene, "edge_order", edgeOrders);
  writeIntegers(scene, "edge_nknots", edgeKnotCounts);
  writeDoubles(scene, "edge_min", edgeMin);
  writeDoubles(scene, "edge_max", edgeMax);
  writeDoubles(scene, "edge_knot", edgeKnots);
  writeDoubles(scene, "edge_uvw", edgePoints);
}

}  // namespace rendara
