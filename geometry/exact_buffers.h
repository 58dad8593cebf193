// The trims of one exact surface on their way to the scene, and its control points.
#pragma once

#include <cstddef>
#include <vector>

#include "geometry/trim_curve.h"

namespace rendara {

class vntScene_api;

// Arrays that are reused from surface to surface and keep their capacity. A trim is a contour of the surface; its
// curves are edges.
struct ExactSurfaceBuffers {
  std::vector<int> trimEdgeCounts;  // for each trim
  std::vector<int> trimInside;      // 1 when what lies within the trim belongs to the surface, 0 for a hole
  std::vector<int> edgeOrders;      // for each edge: degree + 1
  std::vector<int> edgeKnotCounts;
  std::vector<double> edgeMin;  // the smallest and the largest knot
  std::vector<double> edgeMax;
  std::vector<double> edgeKnots;   // of all edges, one after the other
  std::vector<double> edgePoints;  // u, v, weight of each control point of all edges

  std::vector<double> surfacePoints;  // x, y, z, weight of each control point, u running fastest

  void clear();

  // Fills surfacePoints from uCount times vCount points among which v runs fastest, as the CAD system holds them;
  // `weights` are in the same order, or null for 1 each.
  void setSurfacePoints(const double (*points)[3], const double* weights, std::size_t uCount, std::size_t vCount);

  // Appends a trim. A curve that is not readable ends it: neither that curve nor those behind it are written, and the
  // trim gets no entry in trimInside.
  void appendTrim(const std::vector<TrimCurve>& curves, int traversal);

  // Writes the eight arrays of the trims into the open geometry; nothing when there is no trim or no edge.
  void writeTrims(vntScene_api& scene) const;

 private:
  void appendEdge(const TrimCurve& curve);
};

}  // namespace rendara
