#include "tools/rpk/exact/nurbs.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <span>

namespace rpk {
namespace {

constexpr std::size_t kMaxOrder = kMaxDegree + 1;

// The basis functions that are not zero at a parameter, and their derivatives: those of the control points from
// `first` on, as many as the order. The recurrence of Cox and de Boor.
struct Basis {
  std::size_t first = 0;
  std::array<double, kMaxOrder> values{};
  std::array<double, kMaxOrder> slopes{};
};

std::size_t findSpan(std::span<const double> knots, std::size_t degree, double t) {
  const auto begin = knots.begin() + static_cast<std::ptrdiff_t>(degree) + 1;
  const auto end = knots.end() - static_cast<std::ptrdiff_t>(degree) - 1;
  std::size_t span = static_cast<std::size_t>(std::upper_bound(begin, end, t) - knots.begin()) - 1;
  while (span > degree && knots[span] == knots[span + 1]) --span;  // beyond the end, or at a knot of full multiplicity
  return span;
}

Basis basisAt(std::span<const double> knots, int degree, double t) {
  const auto p = static_cast<std::size_t>(degree);
  const std::size_t span = findSpan(knots, p, t);
  Basis basis;
  basis.first = span - p;
  std::array<double, kMaxOrder> lower{};  // of one degree less
  basis.values[0] = 1;
  for (std::size_t level = 1; level <= p; ++level) {
    lower = basis.values;
    double saved = 0;
    for (std::size_t i = 0; i < level; ++i) {
      const double right = knots[span + i + 1] - t;
      const double left = t - knots[span + 1 + i - level];
      const double width = right + left;
      basis.values[i] = saved + (width != 0 ? right / width * lower[i] : 0);
      saved = width != 0 ? left / width * lower[i] : 0;
    }
    basis.values[level] = saved;
  }
  for (std::size_t i = 0; i <= p; ++i) {
    const auto part = [&](std::size_t j) {  // of the lower function j
      const double width = knots[span + j + 1] - knots[span + 1 + j - p];
      return width != 0 ? lower[j] / width : 0;
    };
    const double rise = i > 0 ? part(i - 1) : 0;
    const double fall = i < p ? part(i) : 0;
    basis.slopes[i] = static_cast<double>(p) * (rise - fall);
  }
  return basis;
}

// Numbers that products of a few of them keep finite, and weights that no sum of them makes zero.
constexpr double kLeast = 1e-30;
constexpr double kMost = 1e30;
bool usable(double value) { return std::abs(value) < kMost; }
bool usableWeight(double weight) { return weight > kLeast && weight < kMost; }

// Whether a spline of an order has the knots for `points` control points and a domain that is not empty. Knots that
// only rounding keeps apart become one: between them derivatives would leave the range of numbers.
bool soundKnots(std::vector<double>& knots, std::int64_t order, std::int64_t points) {
  constexpr double kRounding = 1e-12;  // of the domain
  if (order < 2 || order > static_cast<std::int64_t>(kMaxOrder) || points < order ||
      static_cast<std::int64_t>(knots.size()) != points + order || !std::all_of(knots.begin(), knots.end(), usable) ||
      !std::is_sorted(knots.begin(), knots.end())) {
    return false;
  }
  const auto width = [&] {
    return knots[static_cast<std::size_t>(points)] - knots[static_cast<std::size_t>(order - 1)];
  };
  const double rounding = kRounding * width();
  for (std::size_t i = 1; i < knots.size(); ++i) {
    if (knots[i] - knots[i - 1] <= rounding) knots[i] = knots[i - 1];
  }
  return width() > kLeast;
}

std::vector<double> doublesOf(const Object& object, const std::string& name) {
  const auto found = object.arrays.find(name);
  return found == object.arrays.end() ? std::vector<double>() : found->second.doubles();
}

std::vector<std::int32_t> integersOf(const Object& object, const std::string& name) {
  const auto found = object.arrays.find(name);
  return found == object.arrays.end() ? std::vector<std::int32_t>() : found->second.integers();
}

int orderOf(const Object& object, const std::string& name) {
  const auto found = object.values.find(name);
  if (found == object.values.end()) return 0;
  const std::vector<double> numbers = ArrayView::textValues(found->second).doubles();
  return numbers.size() == 1 && numbers[0] >= 0 && numbers[0] <= kMaxDegree + 1 ? static_cast<int>(numbers[0]) : 0;
}

bool readSurface(const Object& object, NurbsSurface& surface) {
  const int uOrder = orderOf(object, "uorder");
  const int vOrder = orderOf(object, "vorder");
  surface.uDegree = uOrder - 1;
  surface.vDegree = vOrder - 1;
  surface.uKnots = doublesOf(object, "uknot");
  surface.vKnots = doublesOf(object, "vknot");
  const auto uCount = static_cast<std::int64_t>(surface.uKnots.size()) - uOrder;
  const auto vCount = static_cast<std::int64_t>(surface.vKnots.size()) - vOrder;
  const std::vector<double> values = doublesOf(object, "Pw");
  if (!soundKnots(surface.uKnots, uOrder, uCount) || !soundKnots(surface.vKnots, vOrder, vCount) ||
      static_cast<std::int64_t>(values.size()) != 4 * uCount * vCount) {
    return false;
  }
  surface.points.resize(values.size() / 4);
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i % 4 == 3 ? !usableWeight(values[i]) : !usable(values[i])) return false;
    surface.points[i / 4][i % 4] = values[i];
  }
  return true;
}

// The curves of all loops, in order.
bool readCurves(const Object& object, std::vector<NurbsCurve>& curves) {
  const std::vector<std::int32_t> orders = integersOf(object, "edge_order");
  const std::vector<std::int32_t> knotCounts = integersOf(object, "edge_nknots");
  const std::vector<double> knots = doublesOf(object, "edge_knot");
  const std::vector<double> points = doublesOf(object, "edge_uvw");
  if (orders.size() != knotCounts.size()) return false;
  std::size_t knot = 0;
  std::size_t value = 0;
  for (std::size_t i = 0; i < orders.size(); ++i) {
    const std::int64_t count = knotCounts[i];
    const std::int64_t pointCount = count - orders[i];
    if (count < 0 || pointCount < 1 || static_cast<std::size_t>(count) > knots.size() - knot ||
        3 * static_cast<std::size_t>(pointCount) > points.size() - value) {
      return false;
    }
    NurbsCurve& curve = curves.emplace_back();
    curve.degree = orders[i] - 1;
    const auto begin = knots.begin() + static_cast<std::ptrdiff_t>(knot);
    curve.knots.assign(begin, begin + static_cast<std::ptrdiff_t>(count));
    if (!soundKnots(curve.knots, orders[i], pointCount)) return false;
    for (std::int64_t j = 0; j < pointCount; ++j, value += 3) {
      if (!usable(points[value]) || !usable(points[value + 1]) || !usableWeight(points[value + 2])) return false;
      curve.points.push_back({points[value], points[value + 1], points[value + 2]});
    }
    knot += static_cast<std::size_t>(count);
  }
  return knot == knots.size() && value == points.size();
}

bool readLoops(const Object& object, std::vector<TrimLoop>& loops) {
  const std::vector<std::int32_t> counts = integersOf(object, "trim_nedges");
  const std::vector<std::int32_t> inside = integersOf(object, "trim_inside");
  std::vector<NurbsCurve> curves;
  if (counts.size() != inside.size() || !readCurves(object, curves)) return false;
  std::size_t next = 0;
  for (std::size_t i = 0; i < counts.size(); ++i) {
    if (counts[i] < 0 || static_cast<std::size_t>(counts[i]) > curves.size() - next) return false;
    TrimLoop& loop = loops.emplace_back();
    loop.inside = inside[i] != 0;
    for (std::int32_t j = 0; j < counts[i]; ++j) loop.curves.push_back(std::move(curves[next++]));
  }
  return next == curves.size();
}

// A little beyond the domain a spline goes on as it ends, by no more than its last span; farther off it says nothing.
double withinReach(double parameter, std::span<const double> knots, int degree) {
  const auto first = static_cast<std::size_t>(degree);
  const std::size_t last = knots.size() - first - 1;
  const double margin = 0.05 * (knots[last] - knots[first]);
  const double afterFirst = *std::upper_bound(knots.begin(), knots.end(), knots[first]);
  const double beforeLast = *std::prev(std::lower_bound(knots.begin(), knots.end(), knots[last]));
  return std::clamp(parameter, knots[first] - std::min(margin, afterFirst - knots[first]),
                    knots[last] + std::min(margin, knots[last] - beforeLast));
}

}  // namespace

Parameter2 NurbsCurve::at(double t) const {
  const Basis basis = basisAt(knots, degree, t);
  double u = 0;
  double v = 0;
  double weight = 0;
  for (std::size_t i = 0; i <= static_cast<std::size_t>(degree); ++i) {
    const auto& point = points[basis.first + i];
    const double factor = basis.values[i] * point[2];
    u += factor * point[0];
    v += factor * point[1];
    weight += factor;
  }
  return {u / weight, v / weight};
}

NurbsPoint NurbsSurface::at(double u, double v) const {
  const Basis along = basisAt(uKnots, uDegree, withinReach(u, uKnots, uDegree));
  const Basis across = basisAt(vKnots, vDegree, withinReach(v, vKnots, vDegree));
  // Weighted sums of the positions (and of the weights, last), and of their derivatives.
  std::array<double, 4> sum{};
  std::array<double, 4> sumU{};
  std::array<double, 4> sumV{};
  const std::size_t columns = uCount();
  for (std::size_t j = 0; j <= static_cast<std::size_t>(vDegree); ++j) {
    const auto* row = points.data() + (across.first + j) * columns + along.first;
    for (std::size_t i = 0; i <= static_cast<std::size_t>(uDegree); ++i) {
      const auto& point = row[i];
      const double value = along.values[i] * across.values[j] * point[3];
      const double byU = along.slopes[i] * across.values[j] * point[3];
      const double byV = along.values[i] * across.slopes[j] * point[3];
      for (std::size_t k = 0; k < 4; ++k) {
        const double part = k < 3 ? point[k] : 1;
        sum[k] += value * part;
        sumU[k] += byU * part;
        sumV[k] += byV * part;
      }
    }
  }
  // Beyond the domain weights can add up to nothing.
  const bool isBeyond = u < uMin() || u > uMax() || v < vMin() || v > vMax();
  if (isBeyond && !(sum[3] > 0)) return at(std::clamp(u, uMin(), uMax()), std::clamp(v, vMin(), vMax()));
  NurbsPoint result{};
  for (std::size_t k = 0; k < 3; ++k) {
    result.position[k] = sum[k] / sum[3];
    result.du[k] = (sumU[k] - result.position[k] * sumU[3]) / sum[3];
    result.dv[k] = (sumV[k] - result.position[k] * sumV[3]) / sum[3];
  }
  return result;
}

std::optional<TrimmedSurface> readTrimmedSurface(const Object& object, std::string* fault) {
  TrimmedSurface result;
  const char* what = nullptr;
  if (!readSurface(object, result.surface)) {
    what = "orders, knots and control points do not go together";
  } else if (!readLoops(object, result.loops)) {
    what = "the trimming arrays do not go together";
  }
  if (!what) return result;
  if (fault) *fault = what;
  return std::nullopt;
}

}  // namespace rpk
