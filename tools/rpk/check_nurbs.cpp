#include "tools/rpk/check_nurbs.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "tools/rpk/check_arrays.h"

namespace rpk {
namespace {

bool usable(const CheckedArray& array) { return array.given && array.usable && array.finite; }

// The value at an index, in one pass when the array is text.
std::optional<double> valueAt(const CheckedArray& array, std::size_t index) {
  if (index >= array.count) return std::nullopt;
  if (array.view.packed()) return array.view.number(index);
  NumberCursor cursor(array.view);
  for (; index > 0; --index) cursor.next();
  return cursor.next();
}

// One direction of the surface.
struct Direction {
  std::string_view axis;
  const CheckedNumber& least;
  const CheckedNumber& most;
  const CheckedNumber& order;
  const CheckedArray& knots;
};

bool checkKnotsRise(const CheckedArray& knots, std::string_view axis, CheckReporter& reporter) {
  NumberCursor cursor(knots.view);
  std::optional<double> last;
  for (std::size_t i = 0; const auto knot = cursor.next(); ++i) {
    if (last && *knot < *last) {
      reporter.report(CheckKind::kDecreasingKnots, reporter.placeOf(knots.view, knots.place, cursor.last()),
                      fmt::format("{}knot {} is {:g} after {:g}", axis, i, *knot, *last));
      return false;
    }
    last = knot;
  }
  return true;
}

void checkBound(const CheckedNumber& bound, std::optional<double> knot, double range, std::string_view name,
                CheckReporter& reporter) {
  if (!bound.value || !knot || std::abs(*bound.value - *knot) <= kBoundError * range) return;
  reporter.report(CheckKind::kParameterRange, bound.place,
                  fmt::format("{} is {:g}, its knot {:g}", name, *bound.value, *knot));
}

// The number of control points in one direction; nothing when order and knots do not tell.
std::optional<std::int64_t> checkDirection(const Direction& direction, CheckReporter& reporter) {
  if (!usable(direction.knots)) return std::nullopt;
  const bool rising = checkKnotsRise(direction.knots, direction.axis, reporter);
  if (!direction.order.value) return std::nullopt;
  const auto order = static_cast<std::int64_t>(*direction.order.value);
  const auto knots = static_cast<std::int64_t>(direction.knots.count);
  if (order < 2 || knots < 2 * order) {
    reporter.report(CheckKind::kControlPointCount, direction.order.place,
                    fmt::format("{}order {} does not go with {} knots", direction.axis, order, knots));
    return std::nullopt;
  }
  if (!rising) return knots - order;
  const auto first = valueAt(direction.knots, static_cast<std::size_t>(order - 1));
  const auto last = valueAt(direction.knots, static_cast<std::size_t>(knots - order));
  const double range = std::max(std::abs(last.value_or(0)), std::abs(first.value_or(0)));
  checkBound(direction.least, first, range, fmt::format("{}min", direction.axis), reporter);
  checkBound(direction.most, last, range, fmt::format("{}max", direction.axis), reporter);
  if (direction.least.value && direction.most.value && *direction.least.value >= *direction.most.value) {
    reporter.report(CheckKind::kParameterRange, direction.least.place,
                    fmt::format("{}min is not below {}max", direction.axis, direction.axis));
  }
  return knots - order;
}

void checkSurface(const CheckedNurbs& nurbs, CheckReporter& reporter) {
  const auto u = checkDirection({"u", nurbs.umin, nurbs.umax, nurbs.uorder, nurbs.uknot}, reporter);
  const auto v = checkDirection({"v", nurbs.vmin, nurbs.vmax, nurbs.vorder, nurbs.vknot}, reporter);
  if (!u || !v || !nurbs.controlPoints.given || !nurbs.controlPoints.usable) return;
  const auto values = static_cast<std::int64_t>(nurbs.controlPoints.count);
  if (values % 4 == 0 && values / 4 % *u == 0 && values / 4 / *u == *v) return;  // no product that could overflow
  reporter.report(CheckKind::kControlPointCount, nurbs.controlPoints.place,
                  fmt::format("{} values for {} x {} control points of 4", values, *u, *v));
}

struct Point {
  double u = 0;
  double v = 0;
};

double distance(const Point& first, const Point& second) { return std::hypot(first.u - second.u, first.v - second.v); }

// Where a trimming curve begins and ends. Only curves whose first and last knots are repeated as often as their order
// says begin and end at their outer control points.
struct Curve {
  Point begin;
  Point end;
  bool clamped = true;
};

// Goes round a loop from one end of its first curve. A loop may run either way and a writer that turns it round may
// keep the order of its curves, so each curve is joined by the end that is nearer.
class LoopWalk {
 public:
  LoopWalk(const Point& start, const Point& end) : start_(start), end_(end) {}

  void add(const Curve& curve) {
    const bool backwards = distance(end_, curve.end) < distance(end_, curve.begin);
    join(backwards ? curve.end : curve.begin);
    end_ = backwards ? curve.begin : curve.end;
  }
  void close() { join(start_); }
  double widest() const { return widest_; }
  std::int64_t widestAt() const { return widestAt_; }  // the curve before the gap

 private:
  void join(const Point& next) {
    const double gap = distance(end_, next);
    if (gap > widest_) widestAt_ = curve_;
    widest_ = std::max(widest_, gap);
    ++curve_;
  }

  Point start_;
  Point end_;
  std::int64_t curve_ = 0;
  double widest_ = 0;
  std::int64_t widestAt_ = 0;
};

// Goes through the trimming arrays in step: contours, their curves, the knots and control points of these.
class TrimPass {
 public:
  TrimPass(const CheckedNurbs& nurbs, CheckReporter& reporter)
      : nurbs_(nurbs),
        reporter_(reporter),
        orders_(nurbs.edgeOrder.view),
        knotCounts_(nurbs.edgeKnotCount.view),
        least_(nurbs.edgeMin.view),
        most_(nurbs.edgeMax.view),
        knots_(nurbs.edgeKnots.view),
        points_(nurbs.edgePoints.view) {
    if (nurbs.umin.value && nurbs.umax.value && nurbs.vmin.value && nurbs.vmax.value) {
      gap_ = kTrimGap * std::hypot(*nurbs.umax.value - *nurbs.umin.value, *nurbs.vmax.value - *nurbs.vmin.value);
    }
  }

  void run() {
    NumberCursor contours(nurbs_.trimEdges.view);
    for (std::size_t contour = 0; const auto edges = contours.next(); ++contour) {
      readContour(contour, static_cast<std::int64_t>(*edges));
    }
  }

 private:
  void readContour(std::size_t contour, std::int64_t edges);
  Curve readCurve();
  // Whether the first and the last knots are repeated `order` times.
  bool readKnots(std::int64_t order, std::int64_t count);
  void reportGap(std::size_t contour, double widest, std::int64_t edge);

  const CheckedNurbs& nurbs_;
  CheckReporter& reporter_;
  NumberCursor orders_, knotCounts_, least_, most_, knots_, points_;
  double gap_ = std::numeric_limits<double>::infinity();
  std::size_t curve_ = 0;
  bool decreaseTold_ = false;
  bool boundTold_ = false;
};

void TrimPass::readContour(std::size_t contour, std::int64_t edges) {
  if (edges <= 0) return;
  const Curve first = readCurve();
  bool clamped = first.clamped;
  LoopWalk forwards(first.begin, first.end);
  LoopWalk backwards(first.end, first.begin);
  for (std::int64_t edge = 1; edge < edges; ++edge) {
    const Curve curve = readCurve();
    clamped = clamped && curve.clamped;
    forwards.add(curve);
    backwards.add(curve);
  }
  forwards.close();
  backwards.close();
  const LoopWalk& better = backwards.widest() < forwards.widest() ? backwards : forwards;
  if (clamped && better.widest() > gap_) reportGap(contour, better.widest(), better.widestAt());
}

void TrimPass::reportGap(std::size_t contour, double widest, std::int64_t edge) {
  reporter_.report(CheckKind::kOpenTrim, nurbs_.trimEdges.place,
                   fmt::format("loop {} is open: curve {} ends {:.3g} before the next one, with {:.3g} allowed",
                               contour, edge, widest, gap_));
}

Curve TrimPass::readCurve() {
  const auto order = static_cast<std::int64_t>(orders_.next().value_or(0));
  const auto knots = static_cast<std::int64_t>(knotCounts_.next().value_or(0));
  Curve curve;
  curve.clamped = readKnots(order, knots);
  for (std::int64_t i = 0; i < knots - order; ++i) {
    const auto u = points_.next();
    const auto v = points_.next();
    const auto weight = points_.next();
    if (!weight) break;
    curve.end = {*u, *v};
    if (i == 0) curve.begin = curve.end;
  }
  ++curve_;
  return curve;
}

bool TrimPass::readKnots(std::int64_t order, std::int64_t count) {
  double first = 0;
  double last = 0;
  std::int64_t leading = 0;   // knots that equal the first
  std::int64_t trailing = 0;  // knots that equal the last
  double least = std::numeric_limits<double>::infinity();
  double most = -least;
  for (std::int64_t i = 0; i < count; ++i) {
    const auto knot = knots_.next();
    if (!knot) return false;
    if (i == 0) first = *knot;
    if (i > 0 && *knot < last && !decreaseTold_) {
      decreaseTold_ = true;
      reporter_.report(CheckKind::kDecreasingKnots,
                       reporter_.placeOf(nurbs_.edgeKnots.view, nurbs_.edgeKnots.place, knots_.last()),
                       fmt::format("knot {} of trimming curve {} is {:g} after {:g}", i, curve_, *knot, last));
    }
    if (*knot == first && leading == i) ++leading;
    trailing = i > 0 && *knot == last ? trailing + 1 : 1;
    last = *knot;
    least = std::min(least, *knot);
    most = std::max(most, *knot);
  }
  const double range = std::max(std::abs(least), std::abs(most));
  const bool bounded = std::abs(least_.next().value_or(0) - least) <= kBoundError * range &&
                       std::abs(most_.next().value_or(0) - most) <= kBoundError * range;
  if (!bounded && !boundTold_) {
    boundTold_ = true;
    reporter_.report(
        CheckKind::kParameterRange, nurbs_.edgeMin.place,
        fmt::format("the bounds of trimming curve {} are not its knots {:g} to {:g}", curve_, least, most));
  }
  return leading >= order && trailing >= order;
}

// The sum of an array's values, far beyond any array's length at most; nothing when one of them is below the least.
std::optional<std::int64_t> sumOf(const CheckedArray& array, double least) {
  constexpr std::int64_t kMostSummed = std::int64_t{1} << 56;
  NumberCursor cursor(array.view);
  std::int64_t sum = 0;
  while (const auto value = cursor.next()) {
    if (*value < least) return std::nullopt;
    sum = std::min(sum + static_cast<std::int64_t>(*value), kMostSummed);
  }
  return sum;
}

struct NamedArray {
  std::string_view name;
  const CheckedArray& array;
  std::optional<std::int64_t> count;  // that it must have
};

// Whether all trimming arrays go with each other, so that they can be gone through in step.
bool checkTrimCounts(const CheckedNurbs& nurbs, CheckReporter& reporter) {
  const auto curves = sumOf(nurbs.trimEdges, 0);
  const auto knots = sumOf(nurbs.edgeKnotCount, 1);
  const auto orders = sumOf(nurbs.edgeOrder, 1);
  const auto wrong = [&](const Place& place, std::string_view what) {
    reporter.report(CheckKind::kTrimCounts, place, what);
    return false;
  };
  if (!curves) return wrong(nurbs.trimEdges.place, "a loop of fewer than 0 curves");
  if (!knots) return wrong(nurbs.edgeKnotCount.place, "a trimming curve without knots");
  if (!orders) return wrong(nurbs.edgeOrder.place, "a trimming curve of order 0");
  const auto loops = static_cast<std::int64_t>(nurbs.trimEdges.count);
  const std::array<NamedArray, 7> arrays = {{{"trim_inside", nurbs.trimInside, loops},
                                             {"edge_order", nurbs.edgeOrder, curves},
                                             {"edge_nknots", nurbs.edgeKnotCount, curves},
                                             {"edge_min", nurbs.edgeMin, curves},
                                             {"edge_max", nurbs.edgeMax, curves},
                                             {"edge_knot", nurbs.edgeKnots, knots},
                                             {"edge_uvw", nurbs.edgePoints, 3 * (*knots - *orders)}}};
  for (const NamedArray& entry : arrays) {
    if (static_cast<std::int64_t>(entry.array.count) == *entry.count) continue;
    return wrong(entry.array.place, fmt::format("\"{}\" has {} values where the loops and curves before it need {}",
                                                entry.name, entry.array.count, *entry.count));
  }
  return true;
}

void checkInside(const CheckedArray& inside, CheckReporter& reporter) {
  NumberCursor cursor(inside.view);
  while (const auto value = cursor.next()) {
    if (*value == 0 || *value == 1) continue;
    reporter.report(CheckKind::kBadValue, reporter.placeOf(inside.view, inside.place, cursor.last()),
                    fmt::format("\"trim_inside\" is {:g}, neither 0 nor 1", *value));
    return;
  }
}

void checkTrims(const CheckedNurbs& nurbs, CheckReporter& reporter) {
  const std::array<const CheckedArray*, 8> arrays = {&nurbs.trimEdges,     &nurbs.trimInside, &nurbs.edgeOrder,
                                                     &nurbs.edgeKnotCount, &nurbs.edgeMin,    &nurbs.edgeMax,
                                                     &nurbs.edgeKnots,     &nurbs.edgePoints};
  const auto given = std::count_if(arrays.begin(), arrays.end(), [](const auto* array) { return array->given; });
  if (given == 0) return;
  if (given < static_cast<std::ptrdiff_t>(arrays.size())) {
    reporter.report(CheckKind::kTrimCounts, nurbs.place,
                    fmt::format("{} of the {} trimming arrays are missing",
                                arrays.size() - static_cast<std::size_t>(given), arrays.size()));
    return;
  }
  if (!std::all_of(arrays.begin(), arrays.end(), [](const auto* array) { return usable(*array); })) return;
  checkInside(nurbs.trimInside, reporter);
  if (checkTrimCounts(nurbs, reporter)) TrimPass(nurbs, reporter).run();
}

}  // namespace

void checkNurbs(const CheckedNurbs& nurbs, CheckReporter& reporter) {
  checkSurface(nurbs, reporter);
  checkTrims(nurbs, reporter);
}

}  // namespace rpk
