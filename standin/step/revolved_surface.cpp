#include "standin/step/revolved_surface.h"

#include <BRepTools.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Convert_CircleToBSplineCurve.hxx>
#include <GeomConvert.hxx>
#include <Geom_BSplineCurve.hxx>
#include <Geom_ConicalSurface.hxx>
#include <Geom_CylindricalSurface.hxx>
#include <Geom_Line.hxx>
#include <Geom_RectangularTrimmedSurface.hxx>
#include <Geom_SphericalSurface.hxx>
#include <Geom_SurfaceOfRevolution.hxx>
#include <Geom_ToroidalSurface.hxx>
#include <Geom_TrimmedCurve.hxx>
#include <TColStd_Array1OfInteger.hxx>
#include <TColStd_Array1OfReal.hxx>
#include <TColStd_Array2OfReal.hxx>
#include <TColgp_Array2OfPnt.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Wire.hxx>
#include <algorithm>
#include <cmath>
#include <gp_Circ2d.hxx>
#include <limits>
#include <vector>

namespace standin {

namespace {

constexpr double kPi = 3.14159265358979323846;

// A rational B-spline in a plane or in space: poles (not multiplied by the weights), weights, knots.
struct Spline {
  int degree = 0;
  std::vector<gp_Pnt> poles;
  std::vector<double> weights;
  std::vector<double> knots;
  std::vector<int> multiplicities;
};

// A surface's position: the origin on the axis and the directions in which its angle and its axis count.
struct Frame {
  gp_XYZ origin, x, y, axis;

  explicit Frame(const gp_Ax3& position)
      : origin(position.Location().XYZ()),
        x(position.XDirection().XYZ()),
        y(position.YDirection().XYZ()),
        axis(position.Direction().XYZ()) {}
  // Turned about an axis counter-clockwise.
  explicit Frame(const gp_Ax1& turned) : Frame(gp_Ax3(turned.Location(), turned.Direction())) {}
};

struct Range {
  double first, last;
};

// The arc of the unit circle over a range of angles, in pieces short enough for the parameter to be the angle.
Spline unitArc(const Range& range) {
  const int pieces = std::max(1, static_cast<int>(std::ceil((range.last - range.first) / (kPi / 4.0) - 1e-9)));
  const gp_Circ2d circle(gp_Ax22d(gp_Pnt2d(0.0, 0.0), gp_Dir2d(1.0, 0.0), gp_Dir2d(0.0, 1.0)), 1.0);
  Spline arc;
  for (int piece = 0; piece < pieces; ++piece) {
    const double step = (range.last - range.first) / pieces;
    const double from = range.first + step * piece;
    const double to = piece + 1 == pieces ? range.last : range.first + step * (piece + 1);
    // About angle 0, then turned: the conversion wants its angles within one turn.
    const Convert_CircleToBSplineCurve part(circle, 0.0, to - from, Convert_QuasiAngular);
    arc.degree = part.Degree();
    const double c = std::cos(from);
    const double s = std::sin(from);
    for (int i = piece == 0 ? 1 : 2; i <= part.NbPoles(); ++i) {
      const gp_Pnt2d pole = part.Pole(i);
      arc.poles.emplace_back(c * pole.X() - s * pole.Y(), s * pole.X() + c * pole.Y(), 0.0);
      arc.weights.push_back(part.Weight(i));
    }
    if (piece == 0) {
      arc.knots.push_back(from);
      arc.multiplicities.push_back(arc.degree + 1);
    }
    arc.knots.push_back(to);
    arc.multiplicities.push_back(piece + 1 == pieces ? arc.degree + 1 : arc.degree);
  }
  return arc;
}

Spline fromCurve(const Handle(Geom_Curve) & curve, const Range& range) {
  const Handle(Geom_BSplineCurve) bspline =
      GeomConvert::CurveToBSplineCurve(new Geom_TrimmedCurve(curve, range.first, range.last), Convert_QuasiAngular);
  if (bspline->IsPeriodic()) bspline->SetNotPeriodic();
  Spline spline;
  spline.degree = bspline->Degree();
  for (int i = 1; i <= bspline->NbPoles(); ++i) {
    spline.poles.push_back(bspline->Pole(i));
    spline.weights.push_back(bspline->Weight(i));
  }
  for (int i = 1; i <= bspline->NbKnots(); ++i) {
    spline.knots.push_back(bspline->Knot(i));
    spline.multiplicities.push_back(bspline->Multiplicity(i));
  }
  return spline;
}

// The meridian of a sphere or torus: an arc in the plane of x and axis about a centre at `distance` from the axis.
Spline arcMeridian(const Frame& frame, double distance, double radius, const Range& range) {
  Spline arc = unitArc(range);
  for (gp_Pnt& pole : arc.poles) {
    pole = gp_Pnt(frame.origin + frame.x * (distance + radius * pole.X()) + frame.axis * (radius * pole.Y()));
  }
  return arc;
}

Spline lineMeridian(const gp_XYZ& from, const gp_XYZ& direction, const Range& range) {
  Spline line;
  line.degree = 1;
  line.poles = {gp_Pnt(from + direction * range.first), gp_Pnt(from + direction * range.last)};
  line.weights = {1.0, 1.0};
  line.knots = {range.first, range.last};
  line.multiplicities = {2, 2};
  return line;
}

template <typename Array, typename Value>
Array arrayOf(const std::vector<Value>& values) {
  Array array(1, static_cast<int>(values.size()));
  for (std::size_t i = 0; i < values.size(); ++i) array.SetValue(static_cast<int>(i) + 1, values[i]);
  return array;
}

// Every pole of the meridian runs along the arc's poles.
Handle(Geom_BSplineSurface) revolve(const Frame& frame, const Spline& meridian, const Range& angles) {
  const Spline arc = unitArc(angles);
  const int rows = static_cast<int>(arc.poles.size());
  const int columns = static_cast<int>(meridian.poles.size());
  TColgp_Array2OfPnt poles(1, rows, 1, columns);
  TColStd_Array2OfReal weights(1, rows, 1, columns);
  for (int j = 1; j <= columns; ++j) {
    const gp_XYZ offset = meridian.poles[static_cast<std::size_t>(j - 1)].XYZ() - frame.origin;
    const double px = offset.Dot(frame.x);
    const double py = offset.Dot(frame.y);
    const double height = offset.Dot(frame.axis);
    for (int i = 1; i <= rows; ++i) {
      const gp_Pnt& turn = arc.poles[static_cast<std::size_t>(i - 1)];
      const gp_XYZ turned = frame.x * (turn.X() * px - turn.Y() * py) + frame.y * (turn.Y() * px + turn.X() * py);
      poles.SetValue(i, j, gp_Pnt(frame.origin + turned + frame.axis * height));
      weights.SetValue(
          i, j, arc.weights[static_cast<std::size_t>(i - 1)] * meridian.weights[static_cast<std::size_t>(j - 1)]);
    }
  }
  return new Geom_BSplineSurface(
      poles, weights, arrayOf<TColStd_Array1OfReal>(arc.knots), arrayOf<TColStd_Array1OfReal>(meridian.knots),
      arrayOf<TColStd_Array1OfInteger>(arc.multiplicities), arrayOf<TColStd_Array1OfInteger>(meridian.multiplicities),
      arc.degree, meridian.degree);
}

// A little more than the face needs, within what the surface has.
Range widened(double first, double last, double low, double high) {
  const double margin = 0.02 * (last - first);
  return {std::max(first - margin, low), std::min(last + margin, high)};
}

}  // namespace

Handle(Geom_BSplineSurface) revolvedBSpline(const TopoDS_Face& face) {
  TopLoc_Location location;
  Handle(Geom_Surface) surface = BRep_Tool::Surface(face, location);
  if (const auto trimmed = Handle(Geom_RectangularTrimmedSurface)::DownCast(surface)) surface = trimmed->BasisSurface();
  double uFirst = 0.0;
  double uLast = 0.0;
  double vFirst = 0.0;
  double vLast = 0.0;
  BRepTools::UVBounds(face, uFirst, uLast, vFirst, vLast);
  if (!(uLast > uFirst) || !(vLast > vFirst) || uLast - uFirst > 1e4) return {};
  constexpr double kFar = std::numeric_limits<double>::max();
  const Range u = widened(uFirst, uLast, -kFar, kFar);
  const Range v = widened(vFirst, vLast, -kFar, kFar);
  if (const auto cylinder = Handle(Geom_CylindricalSurface)::DownCast(surface)) {
    const Frame frame(cylinder->Position());
    return revolve(frame, lineMeridian(frame.origin + frame.x * cylinder->Radius(), frame.axis, v), u);
  }
  if (const auto cone = Handle(Geom_ConicalSurface)::DownCast(surface)) {
    const Frame frame(cone->Position());
    const double angle = cone->SemiAngle();
    const gp_XYZ direction = frame.x * std::sin(angle) + frame.axis * std::cos(angle);
    return revolve(frame, lineMeridian(frame.origin + frame.x * cone->RefRadius(), direction, v), u);
  }
  if (const auto sphere = Handle(Geom_SphericalSurface)::DownCast(surface)) {
    const Frame frame(sphere->Position());
    const Range latitude = widened(vFirst, vLast, -kPi / 2.0, kPi / 2.0);
    return revolve(frame, arcMeridian(frame, 0.0, sphere->Radius(), latitude), u);
  }
  if (const auto torus = Handle(Geom_ToroidalSurface)::DownCast(surface)) {
    const Frame frame(torus->Position());
    return revolve(frame, arcMeridian(frame, torus->MajorRadius(), torus->MinorRadius(), v), u);
  }
  if (const auto revolution = Handle(Geom_SurfaceOfRevolution)::DownCast(surface)) {
    const Handle(Geom_Curve) basis = revolution->BasisCurve();
    const bool bounded = !basis->IsPeriodic();
    const Range own = bounded ? widened(vFirst, vLast, basis->FirstParameter(), basis->LastParameter()) : v;
    return revolve(Frame(revolution->Axis()), fromCurve(basis, own), u);
  }
  return {};
}

TopoDS_Face faceOnSurface(const TopoDS_Face& face, const Handle(Geom_Surface) & surface) {
  // The edges are where the face's own wires have them, so the face's place is put on last.
  const TopoDS_Face atOrigin = TopoDS::Face(face.Oriented(TopAbs_FORWARD).Located(TopLoc_Location()));
  TopLoc_Location location;
  BRep_Tool::Surface(atOrigin, location);
  BRep_Builder builder;
  TopoDS_Face made;
  builder.MakeFace(made, surface, location, BRep_Tool::Tolerance(atOrigin));
  for (TopExp_Explorer wires(atOrigin, TopAbs_WIRE); wires.More(); wires.Next()) {
    for (TopExp_Explorer edges(wires.Current(), TopAbs_EDGE); edges.More(); edges.Next()) {
      const TopoDS_Edge edge = TopoDS::Edge(edges.Current().Oriented(TopAbs_FORWARD));
      double first = 0.0;
      double last = 0.0;
      const Handle(Geom2d_Curve) curve = BRep_Tool::CurveOnSurface(edge, atOrigin, first, last);
      if (curve.IsNull()) return {};
      const double tolerance = BRep_Tool::Tolerance(edge);
      if (BRep_Tool::IsClosed(edge, atOrigin)) {
        const Handle(Geom2d_Curve) other =
            BRep_Tool::CurveOnSurface(TopoDS::Edge(edge.Reversed()), atOrigin, first, last);
        builder.UpdateEdge(edge, curve, other, made, tolerance);
      } else {
        builder.UpdateEdge(edge, curve, made, tolerance);
      }
      builder.Range(edge, made, first, last);
    }
    builder.Add(made, wires.Current());
  }
  made.Location(face.Location(), false);
  made.Orientation(face.Orientation());
  return made;
}

}  // namespace standin
