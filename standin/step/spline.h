// B-splines as lists of knots and poles: evaluation, and the same spline over another range of its parameter. Knots are
// written out as often as they count. Weights are absent where they would all be equal.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "standin/cad/model.h"

namespace standin {

// A curve in space has the same record as one in a parameter plane; its third coordinate counts.
using SplineCurve = PlaneCurve;

SplineCurve makeSpline(int degree, std::vector<double> knots, std::vector<double> weights, std::vector<Point> poles);

struct ParameterRange {
  double first = 0.0;
  double last = 0.0;

  double width() const { return last - first; }
  void add(double value);
  bool holds(double value) const { return value >= first && value <= last; }
  // None yet: add() makes it one.
  static ParameterRange empty();
};

// The range of a parameter plane that a surface needs.
struct ParameterBox {
  ParameterRange u, v;
};

// How a spline goes on beyond its ends: with its end pieces, or from the start again.
struct SplinePeriod {
  double length = 0.0;       // 0: not periodic
  int seamMultiplicity = 0;  // of the knot where the ends meet
};

// The same points at the same parameters over another range, with the ends clamped. Beyond the ends of a spline that
// is not periodic its end pieces are continued.
SplineCurve restricted(const SplineCurve& curve, const SplinePeriod& period, const ParameterRange& range);
// Of a surface; what is not its shape stays as it is.
void restrictSurface(ExactSurface& surface, const SplinePeriod& uPeriod, const SplinePeriod& vPeriod,
                     const ParameterBox& box);

// From `from` at range.first to `to` at range.last.
SplineCurve lineSpline(const Point& from, const Point& to, const ParameterRange& range);
// The arc of the unit circle in x and y over a range of angles; its parameter is not the angle but for the ends of the
// pieces.
SplineCurve quadraticArc(const ParameterRange& angles);
// The curve of the same shape that runs the other way over the same range.
SplineCurve reversed(const SplineCurve& curve);
// Drops weights that are all equal.
void dropEqualWeights(std::vector<double>& weights);

// The range over which a spline is defined.
ParameterRange domainOf(int degree, const std::vector<double>& knots);
Point pointAt(const SplineCurve& curve, double parameter);
Point pointAt(const ExactSurface& surface, double u, double v);

// The basis functions that are not zero at a parameter, and their derivatives. Beyond the ends those of the end pieces.
class SplineBasis {
 public:
  static constexpr int kMaxDegree = 25;  // Open CASCADE's

  SplineBasis(int degree, const std::vector<double>& knots, double parameter);

  std::size_t firstPole() const { return firstPole_; }
  double value(int i) const { return values_[static_cast<std::size_t>(i)]; }
  double derivative(int i) const { return derivatives_[static_cast<std::size_t>(i)]; }

 private:
  std::size_t firstPole_ = 0;
  std::array<double, kMaxDegree + 1> values_;
  std::array<double, kMaxDegree + 1> derivatives_;
};

}  // namespace standin
