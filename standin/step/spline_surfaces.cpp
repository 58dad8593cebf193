#include "standin/step/spline_surfaces.h"

#include <GeomConvert_ApproxSurface.hxx>
#include <Geom_BSplineSurface.hxx>
#include <Geom_BezierSurface.hxx>
#include <Geom_OffsetSurface.hxx>
#include <Geom_Plane.hxx>
#include <Geom_RectangularTrimmedSurface.hxx>
#include <Geom_SurfaceOfLinearExtrusion.hxx>
#include <algorithm>
#include <cmath>

#include "standin/step/points.h"
#include "standin/step/revolved_surface.h"
#include "standin/step/spline_curves.h"

namespace standin {

namespace {

// Of the surface's size over the box.
constexpr double kSurfaceApproximation = 1e-6;
constexpr double kDeviation = 1e-5;

ExactSurface planeSpline(const Geom_Plane& plane, const ParameterBox& box) {
  ExactSurface made;
  made.uKnots = {box.u.first, box.u.first, box.u.last, box.u.last};
  made.vKnots = {box.v.first, box.v.first, box.v.last, box.v.last};
  for (const double u : {box.u.first, box.u.last}) {
    for (const double v : {box.v.first, box.v.last}) made.poles.push_back(pointFrom(plane.Value(u, v)));
  }
  return made;
}

std::optional<ExactSurface> extrusionSpline(const Geom_SurfaceOfLinearExtrusion& extrusion, const ParameterBox& box) {
  const std::optional<SplineCurve> curve = spaceCurve(extrusion.BasisCurve(), box.u);
  if (!curve) return std::nullopt;
  const gp_XYZ direction = extrusion.Direction().XYZ();
  ExactSurface made;
  made.uDegree = curve->degree;
  made.uKnots = curve->knots;
  made.vKnots = {box.v.first, box.v.first, box.v.last, box.v.last};
  for (std::size_t i = 0; i < curve->poles.size(); ++i) {
    const Point& pole = curve->poles[i];
    for (const double v : {box.v.first, box.v.last}) {
      made.poles.push_back({pole[0] + v * direction.X(), pole[1] + v * direction.Y(), pole[2] + v * direction.Z()});
      if (!curve->weights.empty()) made.weights.push_back(curve->weights[i]);
    }
  }
  return made;
}

template <typename Surface>
void copyPoles(const Surface& surface, ExactSurface& made) {
  made.uDegree = surface.UDegree();
  made.vDegree = surface.VDegree();
  // The weights of a surface that is not rational cannot be relied on.
  const bool rational = surface.IsURational() || surface.IsVRational();
  for (int i = 1; i <= surface.NbUPoles(); ++i) {
    for (int j = 1; j <= surface.NbVPoles(); ++j) {
      made.poles.push_back(pointFrom(surface.Pole(i, j)));
      if (rational) made.weights.push_back(surface.Weight(i, j));
    }
  }
  dropEqualWeights(made.weights);
}

ExactSurface splineCopy(const Geom_BSplineSurface& surface) {
  ExactSurface made;
  copyPoles(surface, made);
  for (int i = 1; i <= surface.NbUKnots(); ++i) {
    made.uKnots.insert(made.uKnots.end(), static_cast<std::size_t>(surface.UMultiplicity(i)), surface.UKnot(i));
  }
  for (int i = 1; i <= surface.NbVKnots(); ++i) {
    made.vKnots.insert(made.vKnots.end(), static_cast<std::size_t>(surface.VMultiplicity(i)), surface.VKnot(i));
  }
  return made;
}

ExactSurface splineOver(const Handle(Geom_BSplineSurface) & surface, const ParameterBox& box) {
  SplinePeriod u;
  SplinePeriod v;
  Handle(Geom_BSplineSurface) open = surface;
  if (surface->IsUPeriodic() || surface->IsVPeriodic()) {
    open = Handle(Geom_BSplineSurface)::DownCast(surface->Copy());
    if (surface->IsUPeriodic()) {
      u = {surface->UPeriod(), surface->UMultiplicity(1)};
      open->SetUNotPeriodic();
    }
    if (surface->IsVPeriodic()) {
      v = {surface->VPeriod(), surface->VMultiplicity(1)};
      open->SetVNotPeriodic();
    }
  }
  ExactSurface made = splineCopy(*open);
  if (!surface->IsURational() && !surface->IsVRational()) made.weights.clear();
  restrictSurface(made, u, v, box);
  return made;
}

ExactSurface bezierOver(const Geom_BezierSurface& surface, const ParameterBox& box) {
  ExactSurface made;
  copyPoles(surface, made);
  made.uKnots.assign(static_cast<std::size_t>(made.uDegree) + 1, 0.0);
  made.uKnots.insert(made.uKnots.end(), static_cast<std::size_t>(made.uDegree) + 1, 1.0);
  made.vKnots.assign(static_cast<std::size_t>(made.vDegree) + 1, 0.0);
  made.vKnots.insert(made.vKnots.end(), static_cast<std::size_t>(made.vDegree) + 1, 1.0);
  restrictSurface(made, {}, {}, box);
  return made;
}

double sizeOver(const Geom_Surface& surface, const ParameterBox& box) {
  const gp_Pnt corner = surface.Value(box.u.first, box.v.first);
  double size = 1e-6;
  for (int i = 0; i < 9; ++i) {
    const double u = box.u.first + box.u.width() * (i % 3) / 2.0;
    const int row = i / 3;
    const double v = box.v.first + box.v.width() * row / 2.0;
    size = std::max(size, corner.Distance(surface.Value(u, v)));
  }
  return size;
}

std::optional<ExactSurface> approximated(const Handle(Geom_Surface) & surface, const ParameterBox& box, double size) {
  ParameterBox own;
  surface->Bounds(own.u.first, own.u.last, own.v.first, own.v.last);
  const auto within = [](const ParameterRange& range, bool periodic, const ParameterRange& bounds) {
    if (periodic) return range;
    return ParameterRange{std::max(range.first, bounds.first), std::min(range.last, bounds.last)};
  };
  const ParameterRange u = within(box.u, surface->IsUPeriodic(), own.u);
  const ParameterRange v = within(box.v, surface->IsVPeriodic(), own.v);
  const Handle(Geom_Surface) piece = new Geom_RectangularTrimmedSurface(surface, u.first, u.last, v.first, v.last);
  const GeomConvert_ApproxSurface approximation(piece, kSurfaceApproximation * size, GeomAbs_C1, GeomAbs_C1, 8, 8, 100,
                                                1);
  if (!approximation.HasResult()) return std::nullopt;
  return splineOver(approximation.Surface(), box);
}

std::optional<ExactSurface> converted(const Handle(Geom_Surface) & surface, const ParameterBox& box, double size) {
  if (const auto plane = Handle(Geom_Plane)::DownCast(surface)) return planeSpline(*plane, box);
  if (const auto extrusion = Handle(Geom_SurfaceOfLinearExtrusion)::DownCast(surface)) {
    return extrusionSpline(*extrusion, box);
  }
  if (const auto spline = Handle(Geom_BSplineSurface)::DownCast(surface)) return splineOver(spline, box);
  if (const auto bezier = Handle(Geom_BezierSurface)::DownCast(surface)) return bezierOver(*bezier, box);
  if (const auto offset = Handle(Geom_OffsetSurface)::DownCast(surface)) {
    const Handle(Geom_Surface) simple = offset->Surface();  // of offset planes, cylinders and the like
    return simple.IsNull() ? approximated(surface, box, size) : converted(simple, box, size);
  }
  if (std::optional<ExactSurface> revolved = revolvedSpline(surface, box)) return revolved;
  return approximated(surface, box, size);
}

// Within the surface's own bounds: beyond them the two may go on differently.
bool isSame(const ExactSurface& made, const Geom_Surface& surface, const ParameterBox& box, double tolerance) {
  ParameterRange u, v;
  surface.Bounds(u.first, u.last, v.first, v.last);
  for (int i = 0; i < 9; ++i) {
    const int row = i / 3;
    const double atU = box.u.first + box.u.width() * (0.07 + 0.41 * (i % 3));
    const double atV = box.v.first + box.v.width() * (0.11 + 0.39 * row);
    if (!surface.IsUPeriodic() && !u.holds(atU)) continue;
    if (!surface.IsVPeriodic() && !v.holds(atV)) continue;
    const Point point = pointAt(made, atU, atV);
    if (!(surface.Value(atU, atV).Distance(gp_Pnt(point[0], point[1], point[2])) <= tolerance)) return false;
  }
  return true;
}

}  // namespace

std::optional<ExactSurface> surfaceSpline(const Handle(Geom_Surface) & surface, const ParameterBox& box) {
  if (const auto trimmed = Handle(Geom_RectangularTrimmedSurface)::DownCast(surface)) {
    return surfaceSpline(trimmed->BasisSurface(), box);
  }
  const double size = sizeOver(*surface, box);
  std::optional<ExactSurface> made = converted(surface, box, size);
  if (!made || !isSame(*made, *surface, box, kDeviation * size)) {
    made = approximated(surface, box, size);
    if (made && !isSame(*made, *surface, box, kDeviation * size)) made.reset();
  }
  if (!made) return made;
  dropEqualWeights(made->weights);
  const auto sound = [](double weight) { return std::isfinite(weight) && weight > 0.0; };
  if (!std::all_of(made->weights.begin(), made->weights.end(), sound)) return std::nullopt;
  return made;
}

}  // namespace standin
