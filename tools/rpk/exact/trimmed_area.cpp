#include "tools/rpk/exact/trimmed_area.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "tools/rpk/exact/trim_loops.h"

namespace rpk {
namespace {

struct Node {
  double place;  // 0 to 1
  double weight;
};
// Gauss-Legendre with five nodes.
constexpr std::array<Node, 5> kNodes = {{{0.046910077030668, 0.118463442528095},
                                         {0.230765344947158, 0.239314335249683},
                                         {0.5, 0.284444444444444},
                                         {0.769234655052842, 0.239314335249683},
                                         {0.953089922969332, 0.118463442528095}}};
// A knot span is integrated in one piece, and in twice as many until the area settles, or until it comes no nearer to
// settling, as in surfaces that are none.
constexpr int kMostPieces = 64;
constexpr int kPatience = 4;  // pieces up to which the area may still do as it likes
constexpr double kSettled = 2e-5;
constexpr double kNearer = 0.7;
constexpr double kMostEvaluations = 1e7;

double stretch(const NurbsSurface& surface, double u, double v) {
  const NurbsPoint point = surface.at(u, v);
  const Vector& a = point.du;
  const Vector& b = point.dv;
  return std::hypot(a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]);
}

// The knots of the domain that differ.
std::vector<double> breaks(const std::vector<double>& knots, int degree) {
  const auto order = static_cast<std::ptrdiff_t>(degree);
  std::vector<double> values(knots.begin() + order, knots.end() - order);
  values.erase(std::unique(values.begin(), values.end()), values.end());
  return values;
}

template <typename Function>
double integrate(double from, double to, int pieces, Function function) {
  double sum = 0;
  for (int piece = 0; piece < pieces; ++piece) {
    const double start = from + (to - from) * piece / pieces;
    const double width = (to - from) / pieces;
    for (const Node& node : kNodes) sum += node.weight * width * function(start + width * node.place);
  }
  return sum;
}

class AreaIntegral {
 public:
  AreaIntegral(const NurbsSurface& surface, int pieces)
      : surface_(surface), pieces_(pieces), uBreaks_(breaks(surface.uKnots, surface.uDegree)) {}

  // F(u, v).
  double upTo(double u, double v) const {
    double sum = 0;
    for (std::size_t i = 0; i + 1 < uBreaks_.size(); ++i) {
      const bool last = i + 2 == uBreaks_.size();
      const double from = uBreaks_[i];
      const double to = last ? u : std::min(u, uBreaks_[i + 1]);
      if (to <= from && i > 0) break;
      sum += integrate(from, to, pieces_, [&](double at) { return stretch(surface_, at, v); });
    }
    return sum;
  }

  double along(const ChainedLoop::Piece& piece) const {
    double sum = 0;
    const NurbsCurve& curve = *piece.curve;
    const std::vector<double> knots = breaks(curve.knots, curve.degree);
    const double range = curve.last() - curve.first();
    for (std::size_t i = 0; i + 1 < knots.size(); ++i) {
      const double from = (knots[i] - curve.first()) / range;
      const double to = (knots[i + 1] - curve.first()) / range;
      sum += integrate(from, to, pieces_, [&](double share) { return slope(curve, share) * valueAt(curve, share); });
    }
    return piece.backwards ? -sum : sum;
  }

 private:
  // dv by the share of the way.
  static double slope(const NurbsCurve& curve, double share) {
    constexpr double kStep = 1e-5;
    const double range = curve.last() - curve.first();
    const double low = std::max(0.0, share - kStep);
    const double high = std::min(1.0, share + kStep);
    return (curve.at(curve.first() + range * high)[1] - curve.at(curve.first() + range * low)[1]) / (high - low);
  }
  double valueAt(const NurbsCurve& curve, double share) const {
    const Parameter2 point = curve.at(curve.first() + (curve.last() - curve.first()) * share);
    return upTo(point[0], point[1]);
  }

  const NurbsSurface& surface_;
  int pieces_;
  std::vector<double> uBreaks_;
};

// How often the surface is evaluated to integrate in single pieces.
double evaluationsOf(const TrimmedSurface& trimmed) {
  const auto spans = [](const std::vector<double>& knots) { return static_cast<double>(knots.size()); };
  double along = trimmed.loops.empty() ? spans(trimmed.surface.vKnots) : 0;
  for (const TrimLoop& loop : trimmed.loops) {
    for (const NurbsCurve& curve : loop.curves) along += spans(curve.knots);
  }
  return along * spans(trimmed.surface.uKnots) * static_cast<double>(kNodes.size() * kNodes.size());
}

double areaInPieces(const TrimmedSurface& trimmed, const std::vector<ChainedLoop>& chains, int pieces) {
  const NurbsSurface& surface = trimmed.surface;
  const AreaIntegral integral(surface, pieces);
  double area = 0;
  if (chains.empty()) {
    const std::vector<double> vBreaks = breaks(surface.vKnots, surface.vDegree);
    for (std::size_t i = 0; i + 1 < vBreaks.size(); ++i) {
      area += integrate(vBreaks[i], vBreaks[i + 1], pieces, [&](double v) { return integral.upTo(surface.uMax(), v); });
    }
    return area;
  }
  for (std::size_t i = 0; i < chains.size(); ++i) {
    double around = 0;
    for (const ChainedLoop::Piece& piece : chains[i].pieces) around += integral.along(piece);
    area += trimmed.loops[i].inside ? std::abs(around) : -std::abs(around);
  }
  return area;
}

}  // namespace

double trimmedArea(const TrimmedSurface& trimmed) {
  std::vector<ChainedLoop> chains;
  for (const TrimLoop& loop : trimmed.loops) chains.push_back(chainLoop(loop));
  const double evaluations = evaluationsOf(trimmed);
  double area = areaInPieces(trimmed, chains, 1);
  double before = std::numeric_limits<double>::infinity();
  for (int pieces = 2; pieces <= kMostPieces && evaluations * pieces * pieces <= kMostEvaluations; pieces *= 2) {
    const double finer = areaInPieces(trimmed, chains, pieces);
    const double change = std::abs(finer - area);
    area = finer;
    const bool nearer = change < kNearer * before;
    if (change <= kSettled * std::abs(finer) || (pieces > kPatience && !nearer)) break;
    before = change;
  }
  return area;
}

}  // namespace rpk
