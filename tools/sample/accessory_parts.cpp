// Fasteners, pipes, gauge, guard and nameplate.
#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakeSolid.hxx>
#include <BRepBuilderAPI_MakeWire.hxx>
#include <BRepBuilderAPI_Sewing.hxx>
#include <BRepCheck_Analyzer.hxx>
#include <BRepGProp.hxx>
#include <BRepLib.hxx>
#include <BRepOffsetAPI_MakePipe.hxx>
#include <GProp_GProps.hxx>
#include <Geom_BSplineCurve.hxx>
#include <Geom_BSplineSurface.hxx>
#include <TColStd_Array1OfInteger.hxx>
#include <TColStd_Array1OfReal.hxx>
#include <TColgp_Array1OfPnt.hxx>
#include <TColgp_Array2OfPnt.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Shell.hxx>
#include <TopoDS_Solid.hxx>
#include <array>
#include <cmath>
#include <gp_Circ.hxx>
#include <gp_Pln.hxx>
#include <numbers>
#include <stdexcept>

#include "tools/sample/mechanism.h"
#include "tools/sample/parts.h"
#include "tools/sample/shapes.h"

namespace sample {
namespace {

TopoDS_Wire circle(const gp_Pnt& centre, const gp_Dir& axis, double radius) {
  return BRepBuilderAPI_MakeWire(BRepBuilderAPI_MakeEdge(gp_Circ(gp_Ax2(centre, axis), radius)).Edge()).Wire();
}

// Uniform knots of degree 3, held at both ends.
struct ClampedKnots {
  explicit ClampedKnots(int poles) : knots(1, poles - 2), multiplicities(1, poles - 2) {
    for (int i = 1; i <= poles - 2; ++i) {
      knots.SetValue(i, i - 1);
      multiplicities.SetValue(i, i == 1 || i == poles - 2 ? 4 : 1);
    }
  }
  TColStd_Array1OfReal knots;
  TColStd_Array1OfInteger multiplicities;
};

// Across the guard: how far a point lies out from its middle line, and where along X. Both rims are turned inwards.
struct ProfilePoint {
  double out;
  double x;
};
constexpr std::array<ProfilePoint, 9> kGuardProfile = {
    {{-9, -17}, {-4, -18.5}, {-1, -17}, {2, -10}, {3, 0}, {2, 10}, {-1, 17}, {-4, 18.5}, {-9, 17}}};

// A point of the arch: up a leg, over the wheel, down the other leg; `share` runs from 0 to 1.
gp_Pnt archPoint(double share, const ProfilePoint& profile) {
  const double radius = kFlywheelRadius + 13;
  const double leg = kCrankHeight - kBasePlateTop;
  const double arc = radius * std::numbers::pi;
  const double along = share * (2 * leg + arc);
  const double x = kFlywheelPlace + profile.x;
  const double reach = radius + profile.out;
  if (along < leg) {
    return {x, reach, kBasePlateTop + along};
  }
  if (along > leg + arc) {
    return {x, -reach, kCrankHeight - (along - leg - arc)};
  }
  const double angle = (along - leg) / radius;
  return {x, reach * std::cos(angle), kCrankHeight + reach * std::sin(angle)};
}

}  // namespace

TopoDS_Shape boltM6() {
  TopoDS_Shape head = hexagon({0, 0, 0}, kZ, 10, 4.2);
  // The corners are turned off.
  head = common(head, revolved({0, 0, 0}, kZ, {{0, 0}, {5.9, 0}, {5.9, 3.6}, {5.0, 4.2}, {0, 4.2}}));
  TopoDS_Shape shank = chamfered(cylinder({0, 0, -20}, kZ, 3, 20), 0.8, [](const TopoDS_Edge& edge) {
    return !isStraight(edge, kZ) && middle(edge).Z() < -19;
  });
  return checkedSolid(fused(head, {shank, cylinder({0, 0, -1}, kZ, 3, 2)}), "bolt_m6");
}

TopoDS_Shape unionNut() {
  TopoDS_Shape nut = hexagon({0, 0, 0}, kZ, 17, 9);
  nut = common(nut, revolved({0, 0, 0}, kZ, {{0, 0}, {9.8, 0}, {9.8, 7.5}, {8.2, 9}, {0, 9}}));
  return checkedSolid(cut(nut, {cylinder({0, 0, -1}, kZ, 6, 20)}), "union_nut");
}

TopoDS_Shape oilPlug() {
  TopoDS_Shape plug =
      fused(cylinder({0, 0, -8}, kZ, 5, 9), {cylinder({0, 0, 0}, kZ, 9, 2), hexagon({0, 0, 1}, kZ, 13, 7)});
  return checkedSolid(plug, "oil_plug");
}

TopoDS_Shape airPipe() {
  const gp_Pnt start(kThrowOffset, kHeadFace + 7, kCrankHeight + 48);
  const gp_Pnt end(0, kTeeHalfSize, kTeeHeight);
  // The pipe leaves along the first two poles and arrives along the last two.
  TColgp_Array1OfPnt poles(1, 6);
  poles.SetValue(1, start);
  poles.SetValue(2, start.Translated(gp_Vec(0, 0, 26)));
  poles.SetValue(3, {start.X(), start.Y() - 4, end.Z() + 6});
  poles.SetValue(4, {start.X() - 6, 96, end.Z() + 6});
  poles.SetValue(5, {end.X(), 56, end.Z()});
  poles.SetValue(6, end);
  const ClampedKnots knots(poles.Length());
  Handle(Geom_BSplineCurve) curve = new Geom_BSplineCurve(poles, knots.knots, knots.multiplicities, 3);
  const TopoDS_Wire spine = BRepBuilderAPI_MakeWire(BRepBuilderAPI_MakeEdge(curve).Edge()).Wire();
  BRepBuilderAPI_MakeFace ring(gp_Pln(start, kZ), circle(start, kZ, 6));
  ring.Add(TopoDS::Wire(circle(start, kZ, 4.5).Reversed()));
  return checkedSolid(BRepOffsetAPI_MakePipe(spine, ring.Face()).Shape(), "air_pipe");
}

TopoDS_Shape teeBlock() {
  const double half = kTeeHalfSize;
  TopoDS_Shape block = rounded(box({-half, -half, kTeeHeight - half}, {half, half, kTeeHeight + half}), 3,
                               [](const TopoDS_Edge&) { return true; });
  block = cut(block, {cylinder({0, -40, kTeeHeight}, kY, 4.5, 80), cylinder({0, 0, kTeeHeight}, kZ, 4, 40)});
  return checkedSolid(block, "tee_block");
}

TopoDS_Shape pressureGauge() {
  TopoDS_Shape gauge = fused(cylinder({0, 0, -6}, kZ, 4, 20), {hexagon({0, 0, 0}, kZ, 12, 6)});
  const TopoDS_Shape can =
      revolved({0, 0, kGaugeAxis}, kX,
               {{0, -9}, {20, -9}, {22, -7}, {22, 4}, {24, 4}, {24, 8}, {22.5, 9.5}, {20, 9.5}, {20, 5}, {0, 5}});
  gauge = fused(gauge, {can});
  // The needle, and marks from 225 degrees over the top to -45 degrees.
  const double needle = radians(60);
  const gp_Dir along(0, std::cos(needle), std::sin(needle));
  const gp_Dir across(0, -std::sin(needle), std::cos(needle));
  const auto dialPoint = [&](double out, double aside) {
    return gp_Pnt(5, out * along.Y() + aside * across.Y(), kGaugeAxis + out * along.Z() + aside * across.Z());
  };
  gauge =
      fused(gauge, {prism({dialPoint(-5, -1.2), dialPoint(15, -0.4), dialPoint(15, 0.4), dialPoint(-5, 1.2)}, kX, 1.4),
                    cylinder({5, 0, kGaugeAxis}, kX, 2.5, 2)});
  constexpr int kMarks = 9;
  for (int i = 0; i < kMarks; ++i) {
    const double angle = radians(225 - i * 270.0 / (kMarks - 1));
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    const auto markPoint = [&](double out, double aside) {
      return gp_Pnt(5, out * c - aside * s, kGaugeAxis + out * s + aside * c);
    };
    gauge = fused(
        gauge,
        {prism({markPoint(15.5, -0.6), markPoint(18.5, -0.6), markPoint(18.5, 0.6), markPoint(15.5, 0.6)}, kX, 0.5)});
  }
  return checkedSolid(gauge, "pressure_gauge");
}

TopoDS_Shape flywheelGuard() {
  // The points are poles, not points of the surface, which so becomes smooth; on the arch it runs a little inside them.
  constexpr int kStations = 31;
  constexpr int kAcross = static_cast<int>(kGuardProfile.size());
  TColgp_Array2OfPnt poles(1, kStations, 1, kAcross);
  for (int i = 1; i <= kStations; ++i) {
    for (int j = 1; j <= kAcross; ++j) {
      poles.SetValue(i, j, archPoint((i - 1.0) / (kStations - 1), kGuardProfile[static_cast<std::size_t>(j - 1)]));
    }
  }
  const ClampedKnots along(kStations);
  const ClampedKnots across(kAcross);
  Handle(Geom_BSplineSurface) surface =
      new Geom_BSplineSurface(poles, along.knots, across.knots, along.multiplicities, across.multiplicities, 3, 3);
  const TopoDS_Shape guard = BRepBuilderAPI_MakeFace(surface, 1e-6).Shape();
  if (!BRepCheck_Analyzer(guard).IsValid()) {
    throw std::runtime_error("flywheel_guard is no valid face");
  }
  return guard;
}

TopoDS_Shape nameplate() {
  // The front is no plane but a B-spline patch of the same shape: a plane's parameters are lengths, the patch's run
  // from 0 to 1, so that a texture covers it once.
  const double w = kNameplateWidth;
  const double h = kNameplateHeight;
  constexpr double kThickness = 1.2;
  TColgp_Array2OfPnt corners(1, 2, 1, 2);
  corners.SetValue(1, 1, {kThickness, 0, 0});
  corners.SetValue(2, 1, {kThickness, w, 0});
  corners.SetValue(1, 2, {kThickness, 0, h});
  corners.SetValue(2, 2, {kThickness, w, h});
  TColStd_Array1OfReal knots(1, 2);
  knots.SetValue(1, 0);
  knots.SetValue(2, 1);
  TColStd_Array1OfInteger multiplicities(1, 2);
  multiplicities.Init(2);
  Handle(Geom_BSplineSurface) front =
      new Geom_BSplineSurface(corners, knots, knots, multiplicities, multiplicities, 1, 1);
  BRepBuilderAPI_Sewing sewing(1e-6);
  sewing.Add(BRepBuilderAPI_MakeFace(front, 1e-6).Shape());
  for (TopExp_Explorer faces(box({0, 0, 0}, {kThickness, w, h}), TopAbs_FACE); faces.More(); faces.Next()) {
    GProp_GProps properties;
    BRepGProp::SurfaceProperties(faces.Current(), properties);
    if (properties.CentreOfMass().X() < 0.9 * kThickness) {
      sewing.Add(faces.Current());
    }
  }
  sewing.Perform();
  TopoDS_Solid solid = BRepBuilderAPI_MakeSolid(TopoDS::Shell(sewing.SewedShape())).Solid();
  BRepLib::OrientClosedSolid(solid);
  return checkedSolid(solid, "nameplate");
}

}  // namespace sample
