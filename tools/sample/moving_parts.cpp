// Parts of the crank mechanism.
#include <algorithm>
#include <cmath>

#include "tools/sample/mechanism.h"
#include "tools/sample/parts.h"
#include "tools/sample/shapes.h"

namespace sample {
namespace {

constexpr double kPinLength = 20;
constexpr double kWeb = 8;  // thickness of the outer webs; the middle one fills the space between the pins

// One crank web: an arm to the pin and a counterweight opposite, between two places along X.
TopoDS_Shape crankWeb(double from, double thickness, double direction) {
  const TopoDS_Shape arm = box({from, -13, -13}, {from + thickness, 13, 13});
  const TopoDS_Shape pinEnd = cylinder({from, direction * kCrankRadius, 0}, kX, 13, thickness);
  const TopoDS_Shape bridge = box({from, std::min(0.0, direction * kCrankRadius), -13},
                                  {from + thickness, std::max(0.0, direction * kCrankRadius), 13});
  TopoDS_Shape weight = cylinder({from, 0, 0}, kX, 35, thickness);
  const double side = -direction;
  weight = common(weight, box({from - 1, std::min(side * 8, side * 40), -24},
                              {from + thickness + 1, std::max(side * 8, side * 40), 24}));
  return fused(arm, {pinEnd, bridge, weight});
}

}  // namespace

TopoDS_Shape crankshaft() {
  const double pinStart = kThrowOffset - kPinLength / 2;
  const double webEnd = pinStart + kPinLength + kWeb;
  TopoDS_Shape shaft = fused(crankWeb(pinStart + kPinLength, kWeb, 1),
                             {cylinder({pinStart, kCrankRadius, 0}, kX, kCrankPinRadius, kPinLength)});
  // The middle web joins the two pins.
  const TopoDS_Shape slab = box({-pinStart, -kCrankRadius, -13}, {pinStart, kCrankRadius, 13});
  shaft = fused(shaft, {slab, cylinder({-pinStart, kCrankRadius, 0}, kX, 13, 2 * pinStart),
                        cylinder({-pinStart, -kCrankRadius, 0}, kX, 13, 2 * pinStart)});
  shaft = fused(shaft, {cylinder({-pinStart - kPinLength, -kCrankRadius, 0}, kX, kCrankPinRadius, kPinLength),
                        crankWeb(-pinStart - kPinLength - kWeb, kWeb, -1)});
  const TopoDS_Shape free = chamfered(cylinder({webEnd, 0, 0}, kX, kJournalRadius, 76 - webEnd), 1.5,
                                      [](const TopoDS_Edge& edge) { return middle(edge).X() > 75; });
  const TopoDS_Shape driven = chamfered(cylinder({-104, 0, 0}, kX, kJournalRadius, 104 - webEnd), 1.5,
                                        [](const TopoDS_Edge& edge) { return middle(edge).X() < -103; });
  shaft = fused(shaft, {free, driven});
  shaft = cut(shaft, {box({-100, -2.5, 7}, {-72, 2.5, 12})});
  return checkedSolid(shaft, "crankshaft");
}

TopoDS_Shape flywheel() {
  constexpr double kRim = 68;
  // The rim has a groove for a belt.
  TopoDS_Shape wheel = revolved({0, 0, 0}, kX,
                                {{kRim, -12},
                                 {kFlywheelRadius - 1, -12},
                                 {kFlywheelRadius, -11},
                                 {kFlywheelRadius, -7},
                                 {kFlywheelRadius - 9, -3},
                                 {kFlywheelRadius - 9, 3},
                                 {kFlywheelRadius, 7},
                                 {kFlywheelRadius, 11},
                                 {kFlywheelRadius - 1, 12},
                                 {kRim, 12}});
  const TopoDS_Shape hub =
      revolved({0, 0, 0}, kX, {{kJournalRadius, -13}, {20, -13}, {22, -11}, {22, 12}, {kJournalRadius, 12}});
  wheel = fused(wheel, {hub});
  constexpr int kSpokes = 5;
  for (int i = 0; i < kSpokes; ++i) {
    const double angle = radians(90 + i * 360.0 / kSpokes);
    const gp_Dir outwards(0, std::cos(angle), std::sin(angle));
    const gp_Pnt start(0, 19 * outwards.Y(), 19 * outwards.Z());
    wheel = fused(wheel, {cylinder(start, outwards, 7, kRim + 2 - 19)});
  }
  wheel = cut(wheel, {cylinder({-20, 0, 0}, kX, kJournalRadius, 40)});
  return checkedSolid(wheel, "flywheel");
}

TopoDS_Shape connectingRod() {
  constexpr double kHalfEye = 9;
  constexpr double kBigEye = 13.5;
  constexpr double kSmallEye = 10;
  TopoDS_Shape rod = prism({{-5, 5, -9}, {-5, kRodLength - 4, -6.5}, {-5, kRodLength - 4, 6.5}, {-5, 5, 9}}, kX, 10);
  const TopoDS_Shape groove =
      prism({{0, 20, -5.5}, {0, kRodLength - 16, -3.5}, {0, kRodLength - 16, 3.5}, {0, 20, 5.5}}, kX, 10);
  rod = cut(rod, {moved(groove, 2, 0, 0), moved(groove, -12, 0, 0)});
  rod = fused(rod, {cylinder({-kHalfEye, 0, 0}, kX, kBigEye, 2 * kHalfEye),
                    cylinder({-kHalfEye, kRodLength, 0}, kX, kSmallEye, 2 * kHalfEye)});
  // The lugs of the cap's screws.
  rod = fused(rod, {box({-6, -6, -19}, {6, 6, -11}), box({-6, -6, 11}, {6, 6, 19})});
  rod = cut(rod,
            {cylinder({-20, 0, 0}, kX, kCrankPinRadius, 40), cylinder({-20, kRodLength, 0}, kX, kWristPinRadius, 40)});
  return checkedSolid(rod, "connecting_rod");
}

TopoDS_Shape piston() {
  constexpr double kOuter = kBoreRadius - 0.05;
  constexpr double kRing = kOuter - 2;
  constexpr double kInner = 18.5;
  const TopoDS_Shape skirt = revolved({0, 0, 0}, kZ,
                                      {{0, 11.5},
                                       {kInner, 11.5},
                                       {kInner, -18},
                                       {kOuter, -18},
                                       {kOuter, 2},
                                       {kRing, 2},
                                       {kRing, 4},
                                       {kOuter, 4},
                                       {kOuter, 7},
                                       {kRing, 7},
                                       {kRing, 9},
                                       {kOuter, 9},
                                       {kOuter, 12},
                                       {kRing, 12},
                                       {kRing, 14},
                                       {kOuter, 14},
                                       {kOuter, 16},
                                       {0, 18}});
  const TopoDS_Shape bosses = common(cylinder({-30, 0, 0}, kX, 9.5, 60), cylinder({0, 0, -20}, kZ, kInner + 1, 40));
  TopoDS_Shape body = fused(skirt, {bosses});
  body = cut(body, {box({-9.5, -12, -30}, {9.5, 12, 11.5}), cylinder({-30, 0, 0}, kX, kWristPinRadius, 60)});
  return checkedSolid(body, "piston");
}

TopoDS_Shape wristPin() {
  const TopoDS_Shape pin =
      revolved({0, 0, 0}, kX,
               {{3.5, -19.5}, {5.5, -19.5}, {kWristPinRadius, -19}, {kWristPinRadius, 19}, {5.5, 19.5}, {3.5, 19.5}});
  return checkedSolid(pin, "wrist_pin");
}

}  // namespace sample
