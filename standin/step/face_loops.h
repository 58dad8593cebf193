// The contours of a face as closed loops of B-splines in its surface's parameter plane.
#pragma once

#include <TopoDS_Edge.hxx>
#include <TopoDS_Face.hxx>
#include <vector>

#include "standin/step/spline.h"
#include "standin/step/spline_area.h"

namespace standin {

struct LoopPiece {
  TopoDS_Edge edge;  // null for a piece that closes a gap
  PlaneCurve curve;  // in the direction of the edge
  bool against = false;

  Point start() const { return against ? curve.poles.back() : curve.poles.front(); }
  Point end() const { return against ? curve.poles.front() : curve.poles.back(); }
};

struct FaceLoop {
  std::vector<LoopPiece> pieces;  // in the order in which the loop runs
  bool hole = false;
};

using FaceLoops = std::vector<FaceLoop>;

// The loops of the face, taken forward: outer ones counter-clockwise and first, holes clockwise. Ends of neighbouring
// pieces are as far apart as the face's own curves leave them. Throws std::runtime_error with the reason when the face
// has none.
FaceLoops faceLoops(const TopoDS_Face& face);

// The parameters that the loops cover, a little wider where curves bend.
ParameterBox boxOf(const FaceLoops& loops);

// The widest gap between neighbouring pieces, as a share of the box.
double widestGap(const FaceLoops& loops, const ParameterBox& box);
// Where ends are farther apart than `share` of the box: moves both to the middle, or puts a straight piece between.
void joinEnds(FaceLoops& loops, const ParameterBox& box, double share);
void bridgeGaps(FaceLoops& loops, const ParameterBox& box, double share);

// Refers to the loops' curves.
std::vector<TrimPiece> trimsOf(const FaceLoops& loops);

}  // namespace standin
