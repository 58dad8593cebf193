#include "standin/step/spline.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>

namespace standin {

namespace {

// Knots nearer to an end than this share of the range are taken for the end.
constexpr double kSameKnot = 1e-9;
constexpr double kEqualWeights = 1e-13;

// A spline whose poles are points of any dimension: a curve's, or whole rows of a surface's, as homogeneous
// coordinates.
struct Rows {
  int degree = 0;
  std::vector<double> knots;
  std::size_t dimension = 0;
  std::vector<double> poles;  // one after the other

  std::size_t count() const { return poles.size() / dimension; }
};

// The last knot of a piece of the spline that holds the parameter.
std::size_t spanOf(int degree, const std::vector<double>& knots, double parameter) {
  const auto low = static_cast<std::ptrdiff_t>(degree);
  const auto high = static_cast<std::ptrdiff_t>(knots.size()) - degree - 1;
  const auto after = std::upper_bound(knots.begin() + low, knots.begin() + high, parameter);
  auto span = std::max(after - knots.begin() - 1, low);
  // The last piece that is not empty.
  while (span > low && !(knots[static_cast<std::size_t>(span)] < knots[static_cast<std::size_t>(span) + 1])) --span;
  return static_cast<std::size_t>(span);
}

struct Break {
  double knot;
  int multiplicity;
};

void addBreaks(const Rows& rows, double shift, const ParameterRange& inside, std::vector<Break>& breaks) {
  const auto degree = static_cast<std::size_t>(rows.degree);
  const ParameterRange own = domainOf(rows.degree, rows.knots);
  for (std::size_t i = degree + 1; i + degree + 1 < rows.knots.size(); ++i) {
    const double knot = rows.knots[i] + shift;
    if (!(rows.knots[i] > own.first && rows.knots[i] < own.last) || knot <= inside.first || knot >= inside.last)
      continue;
    if (!breaks.empty() && breaks.back().knot == knot) {
      ++breaks.back().multiplicity;
    } else {
      breaks.push_back({knot, 1});
    }
  }
}

// Rising, without the ends.
std::vector<Break> breaksWithin(const Rows& rows, const SplinePeriod& period, const ParameterRange& range) {
  const double margin = kSameKnot * range.width();
  const ParameterRange inside{range.first + margin, range.last - margin};
  std::vector<Break> breaks;
  if (!(period.length > 0.0)) {
    addBreaks(rows, 0.0, inside, breaks);
    return breaks;
  }
  const double start = domainOf(rows.degree, rows.knots).first;
  const double turns = std::floor((range.first - start) / period.length);
  for (double turn = turns; start + turn * period.length < range.last; ++turn) {
    const double seam = start + turn * period.length;
    if (seam > inside.first && seam < inside.last && period.seamMultiplicity > 0) {
      breaks.push_back({seam, period.seamMultiplicity});
    }
    addBreaks(rows, turn * period.length, inside, breaks);
  }
  return breaks;
}

// The value of the polar form of the spline's piece `span` at as many arguments as the degree says.
void polarForm(const Rows& rows, std::size_t span, const double* arguments, std::vector<double>& work, double* result) {
  const auto degree = static_cast<std::size_t>(rows.degree);
  const std::size_t first = span - degree;
  const auto begin = rows.poles.begin() + static_cast<std::ptrdiff_t>(first * rows.dimension);
  work.assign(begin, begin + static_cast<std::ptrdiff_t>((degree + 1) * rows.dimension));
  for (std::size_t level = 1; level <= degree; ++level) {
    for (std::size_t j = degree; j >= level; --j) {
      const double low = rows.knots[first + j];
      const double share = (arguments[level - 1] - low) / (rows.knots[first + j + degree - level + 1] - low);
      double* const pole = &work[j * rows.dimension];
      const double* const before = &work[(j - 1) * rows.dimension];
      for (std::size_t k = 0; k < rows.dimension; ++k) pole[k] += (1.0 - share) * (before[k] - pole[k]);
    }
  }
  std::copy_n(work.begin() + static_cast<std::ptrdiff_t>(degree * rows.dimension), rows.dimension, result);
}

// Each pole of a spline is the polar form of any of the pieces that it takes part in, at the knots inside its range.
Rows restrictedRows(const Rows& rows, const SplinePeriod& period, const ParameterRange& range) {
  const auto degree = static_cast<std::size_t>(rows.degree);
  Rows made{rows.degree, std::vector<double>(degree + 1, range.first), rows.dimension, {}};
  for (const Break& at : breaksWithin(rows, period, range)) {
    made.knots.insert(made.knots.end(), static_cast<std::size_t>(std::min(at.multiplicity, rows.degree)), at.knot);
  }
  made.knots.insert(made.knots.end(), degree + 1, range.last);
  const std::size_t count = made.knots.size() - degree - 1;
  made.poles.resize(count * rows.dimension);
  const double start = domainOf(rows.degree, rows.knots).first;
  std::vector<double> work;
  std::vector<double> arguments(degree);
  for (std::size_t i = 0; i < count; ++i) {
    std::size_t piece = i;
    double widest = 0.0;
    for (std::size_t k = std::max(i, degree); k <= std::min(i + degree, count - 1); ++k) {
      const double width = made.knots[k + 1] - made.knots[k];
      if (width > widest) {
        widest = width;
        piece = k;
      }
    }
    const double middle = 0.5 * (made.knots[piece] + made.knots[piece + 1]);
    const double shift = period.length > 0.0 ? std::floor((middle - start) / period.length) * period.length : 0.0;
    const std::size_t span = spanOf(rows.degree, rows.knots, middle - shift);
    for (std::size_t k = 0; k < degree; ++k) arguments[k] = made.knots[i + 1 + k] - shift;
    polarForm(rows, span, arguments.data(), work, &made.poles[i * rows.dimension]);
  }
  return made;
}

void appendHomogeneous(const Point& pole, double weight, std::vector<double>& list) {
  list.insert(list.end(), {pole[0] * weight, pole[1] * weight, pole[2] * weight, weight});
}

double weightAt(const std::vector<double>& weights, std::size_t i) { return weights.empty() ? 1.0 : weights[i]; }

void fromHomogeneous(const std::vector<double>& list, std::vector<Point>& poles, std::vector<double>& weights) {
  const bool rational = !weights.empty();
  poles.clear();
  weights.clear();
  for (std::size_t i = 0; i < list.size(); i += 4) {
    const double weight = rational ? list[i + 3] : 1.0;
    poles.push_back({list[i] / weight, list[i + 1] / weight, list[i + 2] / weight});
    if (rational) weights.push_back(weight);
  }
}

// A list of rows of `columns` blocks of 4 numbers as a list of columns.
std::vector<double> transposed(const std::vector<double>& list, std::size_t columns) {
  const std::size_t rows = list.size() / 4 / columns;
  std::vector<double> turned(list.size());
  for (std::size_t i = 0; i < rows; ++i) {
    for (std::size_t j = 0; j < columns; ++j) std::copy_n(&list[4 * (i * columns + j)], 4, &turned[4 * (j * rows + i)]);
  }
  return turned;
}

}  // namespace

SplineCurve makeSpline(int degree, std::vector<double> knots, std::vector<double> weights, std::vector<Point> poles) {
  SplineCurve made;
  made.degree = degree;
  made.knots = std::move(knots);
  made.weights = std::move(weights);
  made.poles = std::move(poles);
  return made;
}

void ParameterRange::add(double value) {
  first = std::min(first, value);
  last = std::max(last, value);
}

ParameterRange ParameterRange::empty() {
  return {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
}

SplineCurve restricted(const SplineCurve& curve, const SplinePeriod& period, const ParameterRange& range) {
  Rows rows{curve.degree, curve.knots, 4, {}};
  for (std::size_t i = 0; i < curve.poles.size(); ++i) {
    appendHomogeneous(curve.poles[i], weightAt(curve.weights, i), rows.poles);
  }
  Rows made = restrictedRows(rows, period, range);
  SplineCurve result = makeSpline(curve.degree, std::move(made.knots), curve.weights, {});
  fromHomogeneous(made.poles, result.poles, result.weights);
  return result;
}

void restrictSurface(ExactSurface& surface, const SplinePeriod& uPeriod, const SplinePeriod& vPeriod,
                     const ParameterBox& box) {
  const std::size_t columns = surface.vKnots.size() - static_cast<std::size_t>(surface.vDegree) - 1;
  Rows alongU{surface.uDegree, surface.uKnots, 4 * columns, {}};
  alongU.poles.reserve(4 * surface.poles.size());
  for (std::size_t i = 0; i < surface.poles.size(); ++i) {
    appendHomogeneous(surface.poles[i], weightAt(surface.weights, i), alongU.poles);
  }
  alongU = restrictedRows(alongU, uPeriod, box.u);
  const std::size_t rows = alongU.count();
  Rows alongV{surface.vDegree, surface.vKnots, 4 * rows, transposed(alongU.poles, columns)};
  alongV = restrictedRows(alongV, vPeriod, box.v);
  fromHomogeneous(transposed(alongV.poles, rows), surface.poles, surface.weights);
  surface.uKnots = std::move(alongU.knots);
  surface.vKnots = std::move(alongV.knots);
}

SplineCurve lineSpline(const Point& from, const Point& to, const ParameterRange& range) {
  return makeSpline(1, {range.first, range.first, range.last, range.last}, {}, {from, to});
}

SplineCurve quadraticArc(const ParameterRange& angles) {
  const int pieces = std::max(1, static_cast<int>(std::ceil(angles.width() / (std::numbers::pi / 2.0) - 1e-9)));
  const double step = angles.width() / pieces;
  const double weight = std::cos(0.5 * step);
  SplineCurve arc = makeSpline(2, {angles.first, angles.first, angles.first}, {}, {});
  for (int i = 0; i <= 2 * pieces; ++i) {
    const bool corner = i % 2 != 0;
    const double angle = i == 2 * pieces ? angles.last : angles.first + 0.5 * step * i;
    const double radius = corner ? 1.0 / weight : 1.0;
    arc.poles.push_back({radius * std::cos(angle), radius * std::sin(angle), 0.0});
    arc.weights.push_back(corner ? weight : 1.0);
    if (!corner && i > 0) arc.knots.insert(arc.knots.end(), i == 2 * pieces ? 3 : 2, angle);
  }
  return arc;
}

SplineCurve reversed(const SplineCurve& curve) {
  SplineCurve result = curve;
  std::reverse(result.poles.begin(), result.poles.end());
  std::reverse(result.weights.begin(), result.weights.end());
  std::reverse(result.knots.begin(), result.knots.end());
  const double sum = curve.knots.front() + curve.knots.back();
  for (double& knot : result.knots) knot = sum - knot;
  return result;
}

void dropEqualWeights(std::vector<double>& weights) {
  if (weights.empty()) return;
  const auto [least, most] = std::minmax_element(weights.begin(), weights.end());
  if (*most - *least <= kEqualWeights * std::abs(*most)) weights.clear();
}

ParameterRange domainOf(int degree, const std::vector<double>& knots) {
  return {knots[static_cast<std::size_t>(degree)], knots[knots.size() - static_cast<std::size_t>(degree) - 1]};
}

// The recurrence of Cox and de Boor, built up in place; the derivatives come from the functions of one degree less.
SplineBasis::SplineBasis(int degree, const std::vector<double>& knots, double parameter) {
  const std::size_t span = spanOf(degree, knots, parameter);
  const auto top = static_cast<std::size_t>(degree);
  firstPole_ = span - top;
  values_[0] = 1.0;
  derivatives_[0] = 0.0;
  for (std::size_t level = 1; level <= top; ++level) {
    double carried = 0.0;
    double carriedSlope = 0.0;
    for (std::size_t i = 0; i < level; ++i) {
      const double low = knots[span + 1 + i - level];
      const double high = knots[span + 1 + i];
      const double part = values_[i] / (high - low);
      if (level == top) {
        const double slope = static_cast<double>(level) * part;
        derivatives_[i] = carriedSlope - slope;
        carriedSlope = slope;
      }
      values_[i] = carried + (high - parameter) * part;
      carried = (parameter - low) * part;
    }
    values_[level] = carried;
    derivatives_[level] = carriedSlope;
  }
}

Point pointAt(const SplineCurve& curve, double parameter) {
  const SplineBasis basis(curve.degree, curve.knots, parameter);
  Point sum{};
  double weights = 0.0;
  for (int i = 0; i <= curve.degree; ++i) {
    const std::size_t pole = basis.firstPole() + static_cast<std::size_t>(i);
    const double share = basis.value(i) * weightAt(curve.weights, pole);
    for (std::size_t k = 0; k < 3; ++k) sum[k] += share * curve.poles[pole][k];
    weights += share;
  }
  for (double& coordinate : sum) coordinate /= weights;
  return sum;
}

Point pointAt(const ExactSurface& surface, double u, double v) {
  const SplineBasis alongU(surface.uDegree, surface.uKnots, u);
  const SplineBasis alongV(surface.vDegree, surface.vKnots, v);
  const std::size_t columns = surface.vKnots.size() - static_cast<std::size_t>(surface.vDegree) - 1;
  Point sum{};
  double weights = 0.0;
  for (int i = 0; i <= surface.uDegree; ++i) {
    for (int j = 0; j <= surface.vDegree; ++j) {
      const std::size_t pole = (alongU.firstPole() + static_cast<std::size_t>(i)) * columns + alongV.firstPole() +
                               static_cast<std::size_t>(j);
      const double share = alongU.value(i) * alongV.value(j) * weightAt(surface.weights, pole);
      for (std::size_t k = 0; k < 3; ++k) sum[k] += share * surface.poles[pole][k];
      weights += share;
    }
  }
  for (double& coordinate : sum) coordinate /= weights;
  return sum;
}

}  // namespace standin
