#include "tools/rpk/exact/trim_loops.h"

#include <algorithm>
#include <cmath>

namespace rpk {
namespace {

double distance(const Parameter2& a, const Parameter2& b) { return std::hypot(a[0] - b[0], a[1] - b[1]); }

ChainedLoop chainFrom(const TrimLoop& loop, bool backwards) {
  ChainedLoop chain;
  for (const NurbsCurve& curve : loop.curves) {
    ChainedLoop::Piece piece{&curve, backwards};
    if (!chain.pieces.empty()) {
      const Parameter2 end = chain.pieces.back().at(1);
      piece.backwards = distance(end, curve.at(curve.last())) < distance(end, curve.at(curve.first()));
      chain.gap = std::max(chain.gap, distance(end, piece.at(0)));
    }
    chain.pieces.push_back(piece);
  }
  if (!chain.pieces.empty()) {
    chain.gap = std::max(chain.gap, distance(chain.pieces.back().at(1), chain.pieces.front().at(0)));
  }
  return chain;
}

std::size_t spanCount(const NurbsCurve& curve) {
  std::size_t spans = 0;
  const auto degree = static_cast<std::size_t>(curve.degree);
  for (std::size_t i = degree; i + degree + 1 < curve.knots.size(); ++i) {
    if (curve.knots[i] < curve.knots[i + 1]) ++spans;
  }
  return spans;
}

// By most of some of its corners: loops may touch.
bool mostlyWithin(const Polygon& polygon, const Polygon& other) {
  constexpr std::size_t kCorners = 7;
  std::size_t within = 0;
  for (std::size_t i = 0; i < kCorners && !polygon.empty(); ++i) {
    if (contains(other, polygon[i * polygon.size() / kCorners])) ++within;
  }
  return 2 * within > kCorners;
}

}  // namespace

Parameter2 ChainedLoop::Piece::at(double share) const {
  const double along = backwards ? 1 - share : share;
  return curve->at(curve->first() + (curve->last() - curve->first()) * along);
}

ChainedLoop chainLoop(const TrimLoop& loop) {
  ChainedLoop forwards = chainFrom(loop, false);
  ChainedLoop backwards = chainFrom(loop, true);
  return backwards.gap < forwards.gap ? backwards : forwards;
}

double signedArea(const Polygon& polygon) {
  double twice = 0;
  for (std::size_t i = 0; i < polygon.size(); ++i) {
    const Parameter2& a = polygon[i];
    const Parameter2& b = polygon[(i + 1) % polygon.size()];
    twice += a[0] * b[1] - a[1] * b[0];
  }
  return twice / 2;
}

bool contains(const Polygon& polygon, const Parameter2& point) {
  bool within = false;
  for (std::size_t i = 0; i < polygon.size(); ++i) {
    const Parameter2& a = polygon[i];
    const Parameter2& b = polygon[(i + 1) % polygon.size()];
    if ((a[1] > point[1]) == (b[1] > point[1])) continue;
    if (point[0] < a[0] + (b[0] - a[0]) * (point[1] - a[1]) / (b[1] - a[1])) within = !within;
  }
  return within;
}

Polygon samplePolygon(const ChainedLoop& loop, std::size_t steps) {
  Polygon polygon;
  for (const ChainedLoop::Piece& piece : loop.pieces) {
    const std::size_t count = spanCount(*piece.curve) * steps;
    for (std::size_t i = 0; i < count; ++i) {
      polygon.push_back(piece.at(static_cast<double>(i) / static_cast<double>(count)));
    }
  }
  return polygon;
}

std::vector<bool> flagsThatHold(const std::vector<TrimLoop>& loops, const std::vector<Polygon>& polygons) {
  std::vector<bool> hold;
  for (std::size_t i = 0; i < loops.size(); ++i) {
    std::size_t depth = 0;
    for (std::size_t other = 0; other < loops.size(); ++other) {
      if (other != i && mostlyWithin(polygons[i], polygons[other])) ++depth;
    }
    hold.push_back(loops[i].inside == (depth % 2 == 0));
  }
  return hold;
}

}  // namespace rpk
