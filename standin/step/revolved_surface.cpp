#include "standin/step/revolved_surface.h"

#include <BRepTools.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Convert_CircleToBSplineCurve.hxx>
#include <Geom_ConicalSurface.hxx>
#include <Geom_CylindricalSurface.hxx>
#include <Geom_RectangularTrimmedSurface.hxx>
#include <Geom_SphericalSurface.hxx>
#include <Geom_SurfaceOfRevolution.hxx>
#include <Geom_ToroidalSurface.hxx>
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
#include <numbers>
#include <vector>

#include "standin/step/points.h"
#include "standin/step/spline_curves.h"

namespace standin {

namespace {

// A surface's position: the origin on the axis and the directions in which its angle and its axis count. Of a
// left-handed one the angle runs the other way about the axis.
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

double weightAt(const SplineCurve& curve, std::size_t i) { return curve.weights.empty() ? 1.0 : curve.weights[i]; }

// The meridian of a sphere or torus: an arc in the plane of x and axis about a centre at `distance` from the axis.
SplineCurve arcMeridian(const Frame& frame, double distance, double radius, const ParameterRange& range) {
  SplineCurve arc = angularArc(range);
  for (Point& pole : arc.poles) {
    pole = pointFrom(frame.origin + frame.x * (distance + radius * pole[0]) + frame.axis * (radius * pole[1]));
  }
  return arc;
}

SplineCurve lineMeridian(const gp_XYZ& from, const gp_XYZ& direction, const ParameterRange& range) {
  return lineSpline(pointFrom(from + direction * range.first), pointFrom(from + direction * range.last), range);
}

// Every pole of the meridian runs along the arc's poles.
ExactSurface revolve(const Frame& frame, const SplineCurve& meridian, const ParameterRange& angles) {
  const SplineCurve arc = angularArc(angles);
  ExactSurface surface;
  surface.uDegree = arc.degree;
  surface.vDegree = meridian.degree;
  surface.uKnots = arc.knots;
  surface.vKnots = meridian.knots;
  surface.poles.reserve(arc.poles.size() * meridian.poles.size());
  surface.weights.reserve(arc.poles.size() * meridian.poles.size());
  for (std::size_t i = 0; i < arc.poles.size(); ++i) {
    const Point& turn = arc.poles[i];
    for (std::size_t j = 0; j < meridian.poles.size(); ++j) {
      const Point& pole = meridian.poles[j];
      const gp_XYZ offset = gp_XYZ(pole[0], pole[1], pole[2]) - frame.origin;
      const double px = offset.Dot(frame.x);
      const double py = offset.Dot(frame.y);
      const gp_XYZ turned = frame.x * (turn[0] * px - turn[1] * py) + frame.y * (turn[1] * px + turn[0] * py);
      surface.poles.push_back(pointFrom(frame.origin + turned + frame.axis * offset.Dot(frame.axis)));
      surface.weights.push_back(weightAt(arc, i) * weightAt(meridian, j));
    }
  }
  return surface;
}

template <typename Array, typename Value>
Array arrayOf(const std::vector<Value>& values) {
  Array array(1, static_cast<int>(values.size()));
  for (std::size_t i = 0; i < values.size(); ++i) array.SetValue(static_cast<int>(i) + 1, values[i]);
  return array;
}

struct CountedKnots {
  std::vector<double> knots;
  std::vector<int> multiplicities;

  explicit CountedKnots(const std::vector<double>& flat) {
    for (const double knot : flat) {
      if (knots.empty() || knot != knots.back()) {
        knots.push_back(knot);
        multiplicities.push_back(0);
      }
      ++multiplicities.back();
    }
  }
};

Handle(Geom_BSplineSurface) kernelSurface(const ExactSurface& surface) {
  const int columns = static_cast<int>(surface.vKnots.size()) - surface.vDegree - 1;
  const int rows = static_cast<int>(surface.uKnots.size()) - surface.uDegree - 1;
  TColgp_Array2OfPnt poles(1, rows, 1, columns);
  TColStd_Array2OfReal weights(1, rows, 1, columns);
  for (int i = 0; i < rows; ++i) {
    for (int j = 0; j < columns; ++j) {
      const auto at = static_cast<std::size_t>(i) * static_cast<std::size_t>(columns) + static_cast<std::size_t>(j);
      poles.SetValue(i + 1, j + 1, gp_Pnt(surface.poles[at][0], surface.poles[at][1], surface.poles[at][2]));
      weights.SetValue(i + 1, j + 1, surface.weights[at]);
    }
  }
  const CountedKnots u(surface.uKnots);
  const CountedKnots v(surface.vKnots);
  return new Geom_BSplineSurface(poles, weights, arrayOf<TColStd_Array1OfReal>(u.knots),
                                 arrayOf<TColStd_Array1OfReal>(v.knots),
                                 arrayOf<TColStd_Array1OfInteger>(u.multiplicities),
                                 arrayOf<TColStd_Array1OfInteger>(v.multiplicities), surface.uDegree, surface.vDegree);
}

ParameterRange widened(double first, double last) {
  const double margin = 0.02 * (last - first);
  return {first - margin, last + margin};
}

}  // namespace

SplineCurve angularArc(const ParameterRange& angles) {
  const int pieces = std::max(1, static_cast<int>(std::ceil(angles.width() / (std::numbers::pi / 4.0) - 1e-9)));
  const double step = angles.width() / pieces;
  const gp_Circ2d circle(gp_Ax22d(gp_Pnt2d(0.0, 0.0), gp_Dir2d(1.0, 0.0), gp_Dir2d(0.0, 1.0)), 1.0);
  // About angle 0, then turned: the conversion wants its angles within one turn.
  const Convert_CircleToBSplineCurve part(circle, 0.0, step, Convert_QuasiAngular);
  SplineCurve arc;
  arc.degree = part.Degree();
  const auto order = static_cast<std::size_t>(arc.degree) + 1;
  arc.knots.assign(order, angles.first);
  for (int piece = 0; piece < pieces; ++piece) {
    const bool isLast = piece + 1 == pieces;
    const double from = angles.first + step * piece;
    const double c = std::cos(from);
    const double s = std::sin(from);
    for (int i = piece == 0 ? 1 : 2; i <= part.NbPoles(); ++i) {
      const gp_Pnt2d pole = part.Pole(i);
      arc.poles.push_back({c * pole.X() - s * pole.Y(), s * pole.X() + c * pole.Y(), 0.0});
      arc.weights.push_back(part.Weight(i));
    }
    arc.knots.insert(arc.knots.end(), isLast ? order : order - 1,
                     isLast ? angles.last : angles.first + step * (piece + 1));
  }
  return arc;
}

std::optional<ExactSurface> revolvedSpline(const Handle(Geom_Surface) & surface, const ParameterBox& box) {
  if (const auto cylinder = Handle(Geom_CylindricalSurface)::DownCast(surface)) {
    const Frame frame(cylinder->Position());
    return revolve(frame, lineMeridian(frame.origin + frame.x * cylinder->Radius(), frame.axis, box.v), box.u);
  }
  if (const auto cone = Handle(Geom_ConicalSurface)::DownCast(surface)) {
    const Frame frame(cone->Position());
    const double angle = cone->SemiAngle();
    const gp_XYZ direction = frame.x * std::sin(angle) + frame.axis * std::cos(angle);
    return revolve(frame, lineMeridian(frame.origin + frame.x * cone->RefRadius(), direction, box.v), box.u);
  }
  if (const auto sphere = Handle(Geom_SphericalSurface)::DownCast(surface)) {
    const Frame frame(sphere->Position());
    const ParameterRange latitude{std::max(box.v.first, -std::numbers::pi / 2.0),
                                  std::min(box.v.last, std::numbers::pi / 2.0)};
    return revolve(frame, arcMeridian(frame, 0.0, sphere->Radius(), latitude), box.u);
  }
  if (const auto torus = Handle(Geom_ToroidalSurface)::DownCast(surface)) {
    const Frame frame(torus->Position());
    return revolve(frame, arcMeridian(frame, torus->MajorRadius(), torus->MinorRadius(), box.v), box.u);
  }
  if (const auto revolution = Handle(Geom_SurfaceOfRevolution)::DownCast(surface)) {
    const std::optional<SplineCurve> meridian = spaceCurve(revolution->BasisCurve(), box.v);
    if (meridian) return revolve(Frame(revolution->Axis()), *meridian, box.u);
  }
  return std::nullopt;
}

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
  ParameterBox box{widened(uFirst, uLast), widened(vFirst, vLast)};
  if (const auto revolution = Handle(Geom_SurfaceOfRevolution)::DownCast(surface)) {
    box.v = withinCurve(revolution->BasisCurve(), box.v);
  }
  const std::optional<ExactSurface> made = revolvedSpline(surface, box);
  return made ? kernelSurface(*made) : Handle(Geom_BSplineSurface)();
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
