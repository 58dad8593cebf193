// A part's exact geometry as the CAD system hands it out: records of its surfaces and edges, filed for the surfaces
// that are exported.
#pragma once

#include <cstddef>
#include <map>
#include <span>
#include <vector>

#include "geometry/surface_collection.h"
#include "geometry/trim_curve.h"
#include "platform/creo_handles.h"

namespace rendara {

struct ExactSurfaceBuffers;

// Owns the CAD system's record, and with it everything that the functions give out.
class ExactRecords {
 public:
  // Files the part's surface records under the identifiers of the collected surfaces: by their own identifiers, and
  // those that no collected surface has by their contours, for the first surface that matches. When the CAD system
  // gives nothing there are no records.
  explicit ExactRecords(const SurfaceCollection& collection);

  // The records of a collected surface, in the order in which they were filed.
  std::span<ProSurfacedata* const> recordsOf(int surfaceId) const;

  // An edge's data; null when there is no edge of the identifier.
  ProEdgedata* edge(int edgeId) const;

  // Appends the trims of a collected surface: contour by contour as the CAD system visits them, of the curves in the
  // surface's parameter plane. Only B-spline curves count; edges without one, and edges that are not known, add
  // nothing.
  void collectTrims(ProSurface surface, ExactSurfaceBuffers& buffers) const;

 private:
  void readEdges();
  void readSurfaces(const SurfaceCollection& collection);
  void file(ProSurfacedata* record, const SurfaceCollection& collection, std::vector<ProSurfacedata*>& unmatched);

  InterfaceData data_;
  std::map<int, int> edgePositions_;  // by the edges' identifiers
  std::map<int, std::vector<ProSurfacedata*>> records_;
};

}  // namespace rendara
