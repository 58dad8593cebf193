#include "standin/step/spline_curves.h"

#include <Geom2dConvert.hxx>
#include <Geom2dConvert_ApproxCurve.hxx>
#include <Geom2d_BSplineCurve.hxx>
#include <Geom2d_BezierCurve.hxx>
#include <Geom2d_Circle.hxx>
#include <Geom2d_Ellipse.hxx>
#include <Geom2d_Line.hxx>
#include <Geom2d_TrimmedCurve.hxx>
#include <GeomConvert_ApproxCurve.hxx>
#include <Geom_BSplineCurve.hxx>
#include <Geom_BezierCurve.hxx>
#include <Geom_Circle.hxx>
#include <Geom_Ellipse.hxx>
#include <Geom_Line.hxx>
#include <Geom_Parabola.hxx>
#include <Geom_TrimmedCurve.hxx>
#include <algorithm>
#include <cmath>
#include <gp_Circ.hxx>
#include <gp_Elips.hxx>
#include <gp_Parab.hxx>

#include "standin/step/points.h"
#include "standin/step/revolved_surface.h"

namespace standin {

namespace {

// What an approximation may be off by, as a share of the curve's size.
constexpr double kCurveApproximation = 1e-7;
constexpr int kApproximationPieces = 200;
constexpr int kApproximationDegree = 8;

// B-splines and Bezier curves of both dimensions have the same operations.
template <typename Curve>
void copyPoles(const Curve& curve, SplineCurve& made) {
  made.degree = curve.Degree();
  for (int i = 1; i <= curve.NbPoles(); ++i) {
    made.poles.push_back(pointFrom(curve.Pole(i)));
    if (curve.IsRational()) made.weights.push_back(curve.Weight(i));
  }
  dropEqualWeights(made.weights);
}

template <typename Curve>
SplineCurve splineCopy(const Curve& curve) {
  SplineCurve made;
  copyPoles(curve, made);
  for (int i = 1; i <= curve.NbKnots(); ++i) {
    made.knots.insert(made.knots.end(), static_cast<std::size_t>(curve.Multiplicity(i)), curve.Knot(i));
  }
  return made;
}

template <typename Curve>
SplineCurve bezierCopy(const Curve& curve) {
  SplineCurve made;
  copyPoles(curve, made);
  made.knots.assign(static_cast<std::size_t>(made.degree) + 1, 0.0);
  made.knots.insert(made.knots.end(), static_cast<std::size_t>(made.degree) + 1, 1.0);
  return made;
}

template <typename Curve>
SplineCurve splineOver(const opencascade::handle<Curve>& curve, const ParameterRange& range) {
  if (!curve->IsPeriodic()) return restricted(splineCopy(*curve), {}, range);
  const SplinePeriod period{curve->Period(), curve->Multiplicity(1)};
  const auto open = opencascade::handle<Curve>::DownCast(curve->Copy());
  open->SetNotPeriodic();
  return restricted(splineCopy(*open), period, range);
}

// The unit circle's arc on an ellipse.
void place(SplineCurve& arc, const gp_XYZ& centre, const gp_XYZ& major, const gp_XYZ& minor) {
  for (Point& pole : arc.poles) pole = pointFrom(centre + major * pole[0] + minor * pole[1]);
}

gp_XYZ inPlane(const gp_XY& xy) { return {xy.X(), xy.Y(), 0.0}; }

// How large the curve is over the range, roughly; above zero.
template <typename Curve>
double sizeOf(const Curve& curve, const ParameterRange& range) {
  const auto start = curve.Value(range.first);
  const double size =
      std::max(start.Distance(curve.Value(range.last)), start.Distance(curve.Value(0.5 * (range.first + range.last))));
  return std::max(size, 1e-6);
}

SplineCurve parabolaOver(const gp_Parab& parabola, const ParameterRange& range) {
  const gp_XYZ origin = parabola.Location().XYZ();
  const gp_XYZ along = parabola.YAxis().Direction().XYZ();
  const gp_XYZ axis = parabola.XAxis().Direction().XYZ() * (1.0 / (4.0 * parabola.Focal()));
  const auto polar = [&](double s, double t) { return pointFrom(origin + along * (0.5 * (s + t)) + axis * (s * t)); };
  const auto [a, b] = range;
  return makeSpline(2, {a, a, a, b, b, b}, {}, {polar(a, a), polar(a, b), polar(b, b)});
}

}  // namespace

std::optional<SplineCurve> spaceCurve(const Handle(Geom_Curve) & curve, const ParameterRange& range) {
  if (const auto trimmed = Handle(Geom_TrimmedCurve)::DownCast(curve)) return spaceCurve(trimmed->BasisCurve(), range);
  if (Handle(Geom_Line)::DownCast(curve)) {
    return lineSpline(pointFrom(curve->Value(range.first)), pointFrom(curve->Value(range.last)), range);
  }
  if (const auto circle = Handle(Geom_Circle)::DownCast(curve)) {
    SplineCurve arc = angularArc(range);
    const gp_Ax2& position = circle->Position();
    place(arc, position.Location().XYZ(), position.XDirection().XYZ() * circle->Radius(),
          position.YDirection().XYZ() * circle->Radius());
    return arc;
  }
  if (const auto ellipse = Handle(Geom_Ellipse)::DownCast(curve)) {
    SplineCurve arc = angularArc(range);
    const gp_Ax2& position = ellipse->Position();
    place(arc, position.Location().XYZ(), position.XDirection().XYZ() * ellipse->MajorRadius(),
          position.YDirection().XYZ() * ellipse->MinorRadius());
    return arc;
  }
  if (const auto parabola = Handle(Geom_Parabola)::DownCast(curve)) return parabolaOver(parabola->Parab(), range);
  if (const auto spline = Handle(Geom_BSplineCurve)::DownCast(curve)) return splineOver(spline, range);
  if (const auto bezier = Handle(Geom_BezierCurve)::DownCast(curve)) return restricted(bezierCopy(*bezier), {}, range);
  const GeomConvert_ApproxCurve approximation(new Geom_TrimmedCurve(curve, range.first, range.last),
                                              kCurveApproximation * sizeOf(*curve, range), GeomAbs_C1,
                                              kApproximationPieces, kApproximationDegree);
  if (!approximation.HasResult()) return std::nullopt;
  return splineCopy(*approximation.Curve());
}

std::optional<PlaneCurve> planeCurve(const Handle(Geom2d_Curve) & curve, const ParameterRange& range) {
  if (const auto trimmed = Handle(Geom2d_TrimmedCurve)::DownCast(curve)) {
    return planeCurve(trimmed->BasisCurve(), range);
  }
  if (Handle(Geom2d_Line)::DownCast(curve)) {
    return lineSpline(pointFrom(curve->Value(range.first)), pointFrom(curve->Value(range.last)), range);
  }
  if (const auto circle = Handle(Geom2d_Circle)::DownCast(curve)) {
    SplineCurve arc = quadraticArc(range);
    const gp_Ax22d position = circle->Circ2d().Axis();
    place(arc, inPlane(position.Location().XY()), inPlane(position.XDirection().XY() * circle->Radius()),
          inPlane(position.YDirection().XY() * circle->Radius()));
    return arc;
  }
  if (const auto ellipse = Handle(Geom2d_Ellipse)::DownCast(curve)) {
    SplineCurve arc = quadraticArc(range);
    const gp_Ax22d position = ellipse->Elips2d().Axis();
    place(arc, inPlane(position.Location().XY()), inPlane(position.XDirection().XY() * ellipse->MajorRadius()),
          inPlane(position.YDirection().XY() * ellipse->MinorRadius()));
    return arc;
  }
  if (const auto spline = Handle(Geom2d_BSplineCurve)::DownCast(curve)) return splineOver(spline, range);
  if (const auto bezier = Handle(Geom2d_BezierCurve)::DownCast(curve)) {
    return restricted(bezierCopy(*bezier), {}, range);
  }
  const Geom2dConvert_ApproxCurve approximation(new Geom2d_TrimmedCurve(curve, range.first, range.last),
                                                kCurveApproximation * sizeOf(*curve, range), GeomAbs_C1,
                                                kApproximationPieces, kApproximationDegree);
  if (!approximation.HasResult()) return std::nullopt;
  return splineCopy(*approximation.Curve());
}

ParameterRange withinCurve(const Handle(Geom_Curve) & curve, const ParameterRange& range) {
  if (curve->IsPeriodic()) return range;
  return {std::max(range.first, curve->FirstParameter()), std::min(range.last, curve->LastParameter())};
}

}  // namespace standin
