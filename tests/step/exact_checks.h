// What the tests ask of a part's exact surfaces: their own poles, knots and trims are looked at, nothing else.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "standin/cad/model.h"
#include "standin/step/spline_area.h"

namespace standin::test {

// The contours of one surface as a reader of the part has them.
class SurfaceTrims {
 public:
  // `faults` gets what breaks the rules of the part's lists: unknown edges, sides that belong to other surfaces.
  SurfaceTrims(const ExactSurface& surface, int surfaceId, const std::map<int, const ExactEdge*>& edges,
               std::vector<std::string>& faults);

  const std::vector<std::vector<TrimPiece>>& contours() const { return contours_; }
  // Between neighbouring ends, as a share of the diagonal of the surface's range.
  double widestGap() const;
  // Signed, in square units.
  double area() const;
  // Contours that do not run as their traversal says.
  std::size_t wrongWay() const;
  // Contours of which the turns of the control polygons tell otherwise, for readers that go by them.
  std::size_t misleadingTurns() const;

 private:
  const ExactSurface& surface_;
  std::vector<std::vector<TrimPiece>> contours_;
};

std::map<int, const ExactEdge*> edgesById(const ExactPart& part);
// All surfaces, of solids and quilts.
std::vector<const ExactSurface*> surfacesOf(const ExactPart& part);

// Over all surfaces of a part.
struct ExactFacts {
  std::size_t surfaces = 0;
  std::size_t passed = 0;
  std::size_t misleading = 0;  // surfaces with contours of misleading turns; no fault
  std::vector<std::string> faults;
};

// Checks every surface: the contours close and run as they should, the area is that of the exact face, and the vertices
// of the part's meshes are where the surface has their parameters.
ExactFacts exactFacts(Model& part, double chordHeight);

}  // namespace standin::test
