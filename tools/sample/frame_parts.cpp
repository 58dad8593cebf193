// Parts that stand still: plate, crankcase, barrels and heads.
#include <cmath>

#include "tools/sample/mechanism.h"
#include "tools/sample/parts.h"
#include "tools/sample/shapes.h"

namespace sample {
namespace {

bool isNear(double value, double wanted) { return std::abs(value - wanted) < 1e-6; }

// A plate with round vertical edges.
TopoDS_Shape roundPlate(const gp_Pnt& low, const gp_Pnt& high, double radius) {
  return rounded(box(low, high), radius, [](const TopoDS_Edge& edge) { return isStraight(edge, kZ); });
}

}  // namespace

TopoDS_Shape basePlate() {
  TopoDS_Shape plate = roundPlate({-118, -150, 0}, {98, 150, kBasePlateTop}, 18);
  plate = rounded(plate, 2, [](const TopoDS_Edge& edge) { return isNear(middle(edge).Z(), kBasePlateTop); });
  for (const double y : {-130.0, 130.0}) {
    for (const double x : {-100.0, 80.0}) {
      plate = cut(plate, {cylinder({x, y, -1}, kZ, 4, 20), cylinder({x, y, kBasePlateTop - 4}, kZ, 7.5, 10)});
    }
  }
  // Threaded holes of the crankcase's bolts.
  for (const double y : {-36.0, 36.0}) {
    plate = cut(plate, {cylinder({-69, y, 2}, kZ, 3, 20), cylinder({69, y, 2}, kZ, 3, 20)});
  }
  return checkedSolid(plate, "base_plate");
}

TopoDS_Shape crankcase() {
  const double top = kCrankHeight + 46;
  const double length = kWallHalfLength;
  const double width = kWallHalfWidth;
  TopoDS_Shape body = roundPlate({-length, -width, kBasePlateTop}, {length, width, top}, 10);
  body = fused(body, {roundPlate({-78, -width, kBasePlateTop}, {78, width, kBasePlateTop + 8}, 8),
                      cylinder({-length - 8, 0, kCrankHeight}, kX, 22, 2 * length + 16)});
  const TopoDS_Shape cavity = roundPlate({-length + 10, -width + 8, 24}, {length - 10, width - 8, top + 10}, 6);
  body = cut(body, {cavity, cylinder({-80, 0, kCrankHeight}, kX, kJournalRadius, 160),
                    cylinder({kThrowOffset, 0, kCrankHeight}, kY, 28, 80),
                    cylinder({-kThrowOffset, -80, kCrankHeight}, kY, 28, 80)});
  for (const double y : {-36.0, 36.0}) {
    body = cut(body, {cylinder({-69, y, 0}, kZ, 3.2, 40), cylinder({69, y, 0}, kZ, 3.2, 40)});
  }
  // The bore of the oil plug.
  body = cut(body, {cylinder({-30, 30, 36}, kY, 5, 30)});
  return checkedSolid(body, "crankcase");
}

TopoDS_Shape crankcaseCover() {
  const double top = kCrankHeight + 46;
  TopoDS_Shape cover =
      roundPlate({-kWallHalfLength, -kWallHalfWidth, top}, {kWallHalfLength, kWallHalfWidth, top + 6}, 10);
  cover = fused(cover, {cylinder({0, 0, top + 6}, kZ, 14, 6)});
  return checkedSolid(cover, "crankcase_cover");
}

TopoDS_Shape barrel() {
  constexpr double kLiner = 28;
  constexpr double kFin = 40;
  std::vector<gp_Pnt2d> outline = {{kBoreRadius, kWallHalfWidth - 8}, {kLiner, kWallHalfWidth - 8}};
  outline.emplace_back(kLiner, kWallHalfWidth);
  outline.emplace_back(36, kWallHalfWidth);
  outline.emplace_back(36, kWallHalfWidth + 8);
  outline.emplace_back(kLiner, kWallHalfWidth + 8);
  constexpr int kFins = 7;
  for (int fin = 0; fin < kFins; ++fin) {
    const double place = kWallHalfWidth + 14 + 7.5 * fin;
    outline.emplace_back(kLiner, place);
    outline.emplace_back(kFin, place + 0.5);
    outline.emplace_back(kFin, place + 2.5);
    outline.emplace_back(kLiner, place + 3);
  }
  outline.emplace_back(kLiner, kHeadFace);
  outline.emplace_back(kBoreRadius, kHeadFace);
  TopoDS_Shape body = revolved({0, 0, 0}, kZ, outline);
  TopoDS_Shape flange = roundPlate({-40, -40, kHeadFace - 8}, {40, 40, kHeadFace}, 9);
  flange = cut(flange, {cylinder({0, 0, 0}, kZ, kBoreRadius + 1, 200)});
  body = fused(body, {flange});
  for (const double x : {-kHeadBoltPlace, kHeadBoltPlace}) {
    body = cut(body, {cylinder({x, -kHeadBoltPlace, kHeadFace - 10}, kZ, 3, 20),
                      cylinder({x, kHeadBoltPlace, kHeadFace - 10}, kZ, 3, 20)});
  }
  return checkedSolid(body, "cylinder_barrel");
}

TopoDS_Shape cylinderHead() {
  TopoDS_Shape head = roundPlate({-40, -40, 0}, {40, 40, kHeadPlateThickness}, 9);
  const TopoDS_Shape block = roundPlate({-22, -34, 0}, {22, 34, 28}, 6);
  head = fused(head, {block, cylinder({0, -30, 7}, gp_Dir(0, -1, 0), 9, 18)});
  // Cooling fins beside the block.
  for (const double x : {-38.0, -33.0, -28.0, 26.0, 31.0, 36.0}) {
    head = fused(head, {box({x, -20, 6}, {x + 2, 20, 26})});
  }
  // The outlet's boss is flat where it would stand out below.
  head = cut(head, {box({-50, -60, -10}, {50, 60, 0})});
  head = cut(head, {cylinder({0, -60, 7}, kY, 5, 50), cylinder({0, 0, -1}, kZ, 10, 5)});
  for (const double x : {-kHeadBoltPlace, kHeadBoltPlace}) {
    head = cut(head, {cylinder({x, -kHeadBoltPlace, -1}, kZ, 3.2, 40), cylinder({x, kHeadBoltPlace, -1}, kZ, 3.2, 40)});
  }
  return checkedSolid(head, "cylinder_head");
}

TopoDS_Shape valveCover() {
  TopoDS_Shape cover = roundPlate({-22, -34, 0}, {22, 34, 14}, 6);
  cover = rounded(cover, 4, [](const TopoDS_Edge& edge) { return isNear(middle(edge).Z(), 14); });
  cover = cut(cover, {roundPlate({-19, -31, -1}, {19, 31, 9}, 4)});
  for (const double y : {-18.0, -6.0, 6.0, 18.0}) {
    cover = cut(cover, {box({-30, y - 2, 12.4}, {30, y + 2, 20})});
  }
  return checkedSolid(cover, "valve_cover");
}

TopoDS_Shape foot() {
  // A rubber ring: its barrel shape is a part of a torus.
  TopoDS_Shape body = cylinder({0, 0, -16}, kZ, 16, 16);
  body = rounded(body, 5, [](const TopoDS_Edge& edge) { return !isStraight(edge, kZ) && middle(edge).Z() < -15; });
  body = cut(body, {cylinder({0, 0, -20}, kZ, 6, 14), cylinder({0, 0, -20}, kZ, 3.5, 30)});
  return checkedSolid(body, "foot");
}

TopoDS_Shape transportBracket() {
  const double top = kCrankHeight + 30;
  TopoDS_Shape bracket = fused(box({84, -24, kBasePlateTop}, {88, 24, top}), {box({64, -24, top - 4}, {88, 24, top})});
  bracket = fused(bracket,
                  {box({58, -24, top - 4}, {66, 24, top}), box({84, -24, kBasePlateTop}, {96, 24, kBasePlateTop + 4})});
  bracket = rounded(bracket, 3, [](const TopoDS_Edge& edge) {
    const gp_Pnt point = middle(edge);
    return isStraight(edge, kY) && isNear(point.X(), 88) && point.Z() > 100;
  });
  bracket = cut(bracket, {cylinder({80, 0, kCrankHeight}, kX, 14, 20)});
  return checkedSolid(bracket, "transport_bracket");
}

}  // namespace sample
