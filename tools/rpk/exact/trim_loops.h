// The loops of a trimmed surface as closed chains and polygons of the parameter plane.
#pragma once

#include <cstddef>
#include <vector>

#include "tools/rpk/exact/nurbs.h"

namespace rpk {

// A loop gone round once: its curves in the order of the list, each in the direction in which it joins on.
struct ChainedLoop {
  struct Piece {
    const NurbsCurve* curve = nullptr;  // the loop's
    bool backwards = false;
    // The point at a share of the way through the piece, 0 to 1.
    Parameter2 at(double share) const;
  };
  std::vector<Piece> pieces;
  double gap = 0;  // the widest distance between the end of a piece and the start of the next
};

// A loop may run either way, and a writer that turns it round may keep the order of its curves: so the pieces are
// joined by their ends, from whichever end of the first leaves the smaller gap.
ChainedLoop chainLoop(const TrimLoop& loop);

using Polygon = std::vector<Parameter2>;  // closed: the last corner is joined to the first

// The area of a polygon, above zero when it runs counter-clockwise.
double signedArea(const Polygon& polygon);
bool contains(const Polygon& polygon, const Parameter2& point);

// Every piece in so many equal steps of its parameter for each of its knot spans.
Polygon samplePolygon(const ChainedLoop& loop, std::size_t steps);

// Whether each loop's flag says what its place among the others does: a loop within an even number of others encloses
// what belongs to the surface, one within an odd number is a hole.
std::vector<bool> flagsThatHold(const std::vector<TrimLoop>& loops, const std::vector<Polygon>& polygons);

}  // namespace rpk
