#include "standin/step/face_loops.h"

#include <BRepTools_WireExplorer.hxx>
#include <BRep_Tool.hxx>
#include <Geom2d_Curve.hxx>
#include <GeomProjLib.hxx>
#include <Geom_RectangularTrimmedSurface.hxx>
#include <Geom_Surface.hxx>
#include <Precision.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Iterator.hxx>
#include <TopoDS_Wire.hxx>
#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <utility>

#include "standin/step/spline_curves.h"

namespace standin {

namespace {

// Of the box: how much further than the curves' points their poles may widen it.
constexpr double kPoleMargin = 0.02;
// Of the box: wires whose edges are further apart in the given order are put in order by their ends.
constexpr double kOrderedGap = 1e-3;
constexpr int kSamplesPerSpan = 4;

bool bounds(const TopoDS_Edge& edge) {
  return edge.Orientation() == TopAbs_FORWARD || edge.Orientation() == TopAbs_REVERSED;
}

// All edges of the wire that bound something; in their order where the explorer reaches them all.
std::vector<TopoDS_Edge> edgesOf(const TopoDS_Wire& wire, const TopoDS_Face& face) {
  std::vector<TopoDS_Edge> all;
  for (TopoDS_Iterator it(wire); it.More(); it.Next()) {
    if (it.Value().ShapeType() != TopAbs_EDGE) continue;
    const TopoDS_Edge edge = TopoDS::Edge(it.Value());
    if (bounds(edge)) all.push_back(edge);
  }
  std::vector<TopoDS_Edge> ordered;
  for (BRepTools_WireExplorer it(wire, face); it.More(); it.Next()) {
    if (bounds(it.Current())) ordered.push_back(it.Current());
  }
  return ordered.size() == all.size() ? ordered : all;
}

// None for an edge of no length at all.
std::optional<LoopPiece> pieceOf(const TopoDS_Edge& edge, const TopoDS_Face& face) {
  ParameterRange range;
  Handle(Geom2d_Curve) curve = BRep_Tool::CurveOnSurface(edge, face, range.first, range.last);
  if (curve.IsNull()) {
    TopLoc_Location location;
    const Handle(Geom_Surface) surface = BRep_Tool::Surface(face, location);
    Handle(Geom_Curve) inSpace = BRep_Tool::Curve(edge, range.first, range.last);
    if (inSpace.IsNull()) throw std::runtime_error("an edge has no curve");
    if (!location.IsIdentity()) {
      inSpace = Handle(Geom_Curve)::DownCast(inSpace->Transformed(location.Transformation().Inverted()));
    }
    curve = GeomProjLib::Curve2d(inSpace, range.first, range.last, surface);
    if (curve.IsNull()) throw std::runtime_error("an edge has no curve in the parameter plane");
  }
  if (!(range.width() > 0.0)) return std::nullopt;
  std::optional<PlaneCurve> spline = planeCurve(curve, range);
  if (!spline) throw std::runtime_error("a curve in the parameter plane cannot be converted");
  for (const Point& pole : spline->poles) {
    if (!std::isfinite(pole[0]) || !std::isfinite(pole[1])) throw std::runtime_error("a curve is not finite");
  }
  return LoopPiece{edge, std::move(*spline), edge.Orientation() == TopAbs_REVERSED};
}

template <typename Take>
void sample(const PlaneCurve& curve, const Take& take) {
  if (curve.degree == 1) {
    for (const Point& pole : curve.poles) take(pole);
    return;
  }
  for (std::size_t i = 0; i + 1 < curve.knots.size(); ++i) {
    const double step = (curve.knots[i + 1] - curve.knots[i]) / kSamplesPerSpan;
    if (!(step > 0.0)) continue;
    for (int k = 0; k < kSamplesPerSpan; ++k) take(pointAt(curve, curve.knots[i] + step * k));
  }
  take(curve.poles.back());
}

// How far apart two points are, each coordinate as a share of the box.
double apart(const Point& left, const Point& right, const ParameterBox& box) {
  return std::max(std::abs(left[0] - right[0]) / box.u.width(), std::abs(left[1] - right[1]) / box.v.width());
}

double widestGap(const std::vector<LoopPiece>& pieces, const ParameterBox& box) {
  double widest = 0.0;
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    widest = std::max(widest, apart(pieces[i].end(), pieces[(i + 1) % pieces.size()].start(), box));
  }
  return widest;
}

// Chains pieces by their ends, into as many loops as close.
FaceLoops chained(std::vector<LoopPiece> pieces, const ParameterBox& box) {
  FaceLoops loops;
  while (!pieces.empty()) {
    FaceLoop loop;
    loop.pieces.push_back(std::move(pieces.front()));
    pieces.erase(pieces.begin());
    while (!pieces.empty()) {
      const Point end = loop.pieces.back().end();
      const auto nearest = std::min_element(pieces.begin(), pieces.end(), [&](const auto& left, const auto& right) {
        return apart(end, left.start(), box) < apart(end, right.start(), box);
      });
      if (apart(end, loop.pieces.front().start(), box) <= std::min(apart(end, nearest->start(), box), kOrderedGap)) {
        break;
      }
      loop.pieces.push_back(std::move(*nearest));
      pieces.erase(nearest);
    }
    loops.push_back(std::move(loop));
  }
  return loops;
}

// A surface without edges that is bounded by nature.
FaceLoop naturalLoop(const TopoDS_Face& face) {
  TopLoc_Location location;
  const Handle(Geom_Surface) surface = BRep_Tool::Surface(face, location);
  if (surface.IsNull()) throw std::runtime_error("the face has no surface");
  ParameterRange u;
  ParameterRange v;
  surface->Bounds(u.first, u.last, v.first, v.last);
  for (const double bound : {u.first, u.last, v.first, v.last}) {
    if (Precision::IsInfinite(bound)) throw std::runtime_error("the face has no bounds");
  }
  const std::array<Point, 4> corners = {Point{u.first, v.first, 0.0}, Point{u.last, v.first, 0.0},
                                        Point{u.last, v.last, 0.0}, Point{u.first, v.last, 0.0}};
  FaceLoop loop;
  for (std::size_t i = 0; i < corners.size(); ++i) {
    loop.pieces.push_back({{}, lineSpline(corners[i], corners[(i + 1) % corners.size()], {0.0, 1.0}), false});
  }
  return loop;
}

// A loop as a polygon, to tell which loop is inside which.
struct Outline {
  std::vector<Point> points;
  ParameterBox box{ParameterRange::empty(), ParameterRange::empty()};
  double area = 0.0;  // signed

  explicit Outline(const FaceLoop& loop) {
    for (const LoopPiece& piece : loop.pieces) {
      std::vector<Point> own;
      sample(piece.curve, [&](const Point& point) { own.push_back(point); });
      if (piece.against) std::reverse(own.begin(), own.end());
      points.insert(points.end(), own.begin(), own.end());
    }
    std::vector<TrimPiece> trims;
    for (const LoopPiece& piece : loop.pieces) trims.push_back({&piece.curve, piece.against});
    area = parameterArea(trims);
    for (const Point& point : points) {
      box.u.add(point[0]);
      box.v.add(point[1]);
    }
  }

  bool holds(const Point& point) const {
    if (!box.u.holds(point[0]) || !box.v.holds(point[1])) return false;
    bool inside = false;
    for (std::size_t i = 0; i < points.size(); ++i) {
      const Point& a = points[i];
      const Point& b = points[(i + 1) % points.size()];
      if ((a[1] > point[1]) == (b[1] > point[1])) continue;
      if (point[0] < a[0] + (b[0] - a[0]) * (point[1] - a[1]) / (b[1] - a[1])) inside = !inside;
    }
    return inside;
  }
  // By most of a few points of the other's: loops may touch.
  bool holds(const Outline& other) const {
    int votes = 0;
    for (std::size_t i = 0; i < 5; ++i) {
      const std::size_t at = i * other.points.size() / 5;
      const Point& a = other.points[at];
      const Point& b = other.points[(at + 1) % other.points.size()];
      votes += holds(Point{0.5 * (a[0] + b[0]), 0.5 * (a[1] + b[1]), 0.0}) ? 1 : -1;
    }
    return votes > 0;
  }
};

void reverse(FaceLoop& loop) {
  std::reverse(loop.pieces.begin(), loop.pieces.end());
  for (LoopPiece& piece : loop.pieces) piece.against = !piece.against;
}

// Whether a loop is a hole is told by how many others it lies in, not by the way it runs.
void orient(FaceLoops& loops) {
  const std::vector<Outline> outlines(loops.begin(), loops.end());
  for (std::size_t i = 0; i < loops.size(); ++i) {
    for (std::size_t j = 0; j < loops.size(); ++j) {
      if (i != j && outlines[j].holds(outlines[i])) loops[i].hole = !loops[i].hole;
    }
    if ((outlines[i].area < 0.0) != loops[i].hole) reverse(loops[i]);
  }
  std::stable_partition(loops.begin(), loops.end(), [](const FaceLoop& loop) { return !loop.hole; });
}

// Calls `join` for neighbouring pieces of a loop whose ends are apart; it returns how many pieces it put between.
template <typename Join>
void forEachGap(FaceLoops& loops, const ParameterBox& box, double share, const Join& join) {
  for (FaceLoop& loop : loops) {
    for (std::size_t i = 0; i < loop.pieces.size(); ++i) {
      const std::size_t next = (i + 1) % loop.pieces.size();
      if (apart(loop.pieces[i].end(), loop.pieces[next].start(), box) > share) i += join(loop.pieces, i, next);
    }
  }
}

}  // namespace

FaceLoops faceLoops(const TopoDS_Face& face) {
  const TopoDS_Face forward = TopoDS::Face(face.Oriented(TopAbs_FORWARD));
  FaceLoops loops;
  for (TopoDS_Iterator it(forward); it.More(); it.Next()) {
    if (it.Value().ShapeType() != TopAbs_WIRE) continue;
    FaceLoop loop;
    for (const TopoDS_Edge& edge : edgesOf(TopoDS::Wire(it.Value()), forward)) {
      if (auto piece = pieceOf(edge, forward)) loop.pieces.push_back(std::move(*piece));
    }
    if (!loop.pieces.empty()) loops.push_back(std::move(loop));
  }
  if (loops.empty()) loops.push_back(naturalLoop(forward));
  const ParameterBox box = boxOf(loops);
  FaceLoops ordered;
  for (FaceLoop& loop : loops) {
    FaceLoops others;
    if (widestGap(loop.pieces, box) > kOrderedGap) others = chained(loop.pieces, box);
    if (!others.empty() && widestGap(others, box) < widestGap(loop.pieces, box)) {
      std::move(others.begin(), others.end(), std::back_inserter(ordered));
    } else {
      ordered.push_back(std::move(loop));
    }
  }
  orient(ordered);
  return ordered;
}

ParameterBox boxOf(const FaceLoops& loops) {
  ParameterBox points{ParameterRange::empty(), ParameterRange::empty()};
  ParameterBox poles = points;
  for (const FaceLoop& loop : loops) {
    for (const LoopPiece& piece : loop.pieces) {
      sample(piece.curve, [&](const Point& point) {
        points.u.add(point[0]);
        points.v.add(point[1]);
      });
      for (const Point& pole : piece.curve.poles) {
        poles.u.add(pole[0]);
        poles.v.add(pole[1]);
      }
    }
  }
  const auto widened = [](const ParameterRange& own, const ParameterRange& hull) {
    const double margin = kPoleMargin * own.width();
    return ParameterRange{std::max(hull.first, own.first - margin), std::min(hull.last, own.last + margin)};
  };
  const ParameterBox box{widened(points.u, poles.u), widened(points.v, poles.v)};
  if (!(box.u.width() > 0.0) || !(box.v.width() > 0.0)) throw std::runtime_error("the contours enclose nothing");
  return box;
}

double widestGap(const FaceLoops& loops, const ParameterBox& box) {
  double widest = 0.0;
  for (const FaceLoop& loop : loops) widest = std::max(widest, widestGap(loop.pieces, box));
  return widest;
}

void joinEnds(FaceLoops& loops, const ParameterBox& box, double share) {
  forEachGap(loops, box, share, [](std::vector<LoopPiece>& pieces, std::size_t i, std::size_t next) {
    LoopPiece& before = pieces[i];
    LoopPiece& after = pieces[next];
    const Point end = before.end();
    const Point start = after.start();
    const Point middle = {0.5 * (end[0] + start[0]), 0.5 * (end[1] + start[1]), 0.0};
    (before.against ? before.curve.poles.front() : before.curve.poles.back()) = middle;
    (after.against ? after.curve.poles.back() : after.curve.poles.front()) = middle;
    return std::size_t{0};
  });
}

void bridgeGaps(FaceLoops& loops, const ParameterBox& box, double share) {
  forEachGap(loops, box, share, [](std::vector<LoopPiece>& pieces, std::size_t i, std::size_t next) {
    LoopPiece bridge{{}, lineSpline(pieces[i].end(), pieces[next].start(), {0.0, 1.0}), false};
    pieces.insert(pieces.begin() + static_cast<std::ptrdiff_t>(i) + 1, std::move(bridge));
    return std::size_t{1};
  });
}

std::vector<TrimPiece> trimsOf(const FaceLoops& loops) {
  std::vector<TrimPiece> trims;
  for (const FaceLoop& loop : loops) {
    for (const LoopPiece& piece : loop.pieces) trims.push_back({&piece.curve, piece.against});
  }
  return trims;
}

}  // namespace standin
