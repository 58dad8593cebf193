#include "standin/step/spline_area.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace standin {

namespace {

// Gauss and Legendre's points and weights on 0 to 1.
constexpr std::array<double, 5> kNodes = {0.046910077030668, 0.230765344947158, 0.5, 0.769234655052842,
                                          0.953089922969332};
constexpr std::array<double, 5> kShares = {0.118463442528095, 0.239314335249683, 0.284444444444444, 0.239314335249683,
                                           0.118463442528095};
// Pieces of a trimming curve for each of its spans, at most.
constexpr int kMostPieces = 64;
// Spans are cut finer and finer until the area changes by no more than this share, so many times at most.
constexpr double kSettled = 1e-4;
constexpr int kRefinements = 5;

template <typename Function>
double integrate(double from, double to, const Function& function) {
  double sum = 0.0;
  for (std::size_t i = 0; i < kNodes.size(); ++i) sum += kShares[i] * function(from + (to - from) * kNodes[i]);
  return sum * (to - from);
}

using Homogeneous = std::array<double, 4>;

// A pole and how it changes with the outer parameter.
struct MovingPole {
  Homogeneous value{};
  Homogeneous slope{};
};

// The point and slope of a curve in a parameter plane, by coordinate.
struct CurvePoint {
  std::array<double, 2> at{};
  std::array<double, 2> slope{};
};

CurvePoint curvePoint(const PlaneCurve& curve, double parameter) {
  const SplineBasis basis(curve.degree, curve.knots, parameter);
  std::array<double, 3> value{};
  std::array<double, 3> slope{};
  for (int i = 0; i <= curve.degree; ++i) {
    const std::size_t pole = basis.firstPole() + static_cast<std::size_t>(i);
    const double weight = curve.weights.empty() ? 1.0 : curve.weights[pole];
    const std::array<double, 3> own = {curve.poles[pole][0] * weight, curve.poles[pole][1] * weight, weight};
    for (std::size_t k = 0; k < 3; ++k) {
      value[k] += basis.value(i) * own[k];
      slope[k] += basis.derivative(i) * own[k];
    }
  }
  CurvePoint point;
  for (std::size_t k = 0; k < 2; ++k) {
    point.at[k] = value[k] / value[2];
    point.slope[k] = (slope[k] - slope[2] * point.at[k]) / value[2];
  }
  return point;
}

std::size_t knotsBetween(const std::vector<double>& knots, double low, double high) {
  std::size_t count = 0;
  for (std::size_t i = 0; i + 1 < knots.size(); ++i) {
    if (knots[i] > low && knots[i] < high && knots[i + 1] > knots[i]) ++count;
  }
  return count;
}

std::size_t spansOf(const std::vector<double>& knots) { return knotsBetween(knots, knots.front(), knots.back()) + 1; }

// Green's theorem: along the contours, the integral of (area element integrated over the inner parameter) times the
// change of the outer parameter. The inner parameter is the one with fewer spans.
class AreaIntegral {
 public:
  AreaIntegral(const ExactSurface& surface, int fineness)
      : surface_(surface),
        fineness_(fineness),
        inner_(spansOf(surface.uKnots) * static_cast<std::size_t>(surface.uDegree) <=
                       spansOf(surface.vKnots) * static_cast<std::size_t>(surface.vDegree)
                   ? 0U
                   : 1U),
        columns_(surface.vKnots.size() - static_cast<std::size_t>(surface.vDegree) - 1) {
    for (const double knot : knots(inner_)) {
      if (breaks_.empty()) breaks_.push_back(knot);
      const double last = breaks_.back();
      for (int i = 1; knot > last && i <= fineness_; ++i) {
        breaks_.push_back(i == fineness_ ? knot : last + (knot - last) * i / fineness_);
      }
    }
    poles_.resize(knots(inner_).size() - static_cast<std::size_t>(degree(inner_)) - 1);
  }

  double along(const TrimPiece& piece) {
    const PlaneCurve& curve = *piece.curve;
    const std::size_t outer = 1 - inner_;
    const auto [least, most] =
        std::minmax_element(curve.poles.begin(), curve.poles.end(),
                            [outer](const Point& left, const Point& right) { return left[outer] < right[outer]; });
    if ((*least)[outer] == (*most)[outer]) return 0.0;
    const std::size_t crossed = knotsBetween(knots(outer), (*least)[outer], (*most)[outer]);
    const std::size_t spans = spansOf(curve.knots);
    const int parts = fineness_ * std::clamp(static_cast<int>((2 * crossed + spans - 1) / spans),
                                             curve.degree > 1 ? 2 : 1, kMostPieces);
    double sum = 0.0;
    for (std::size_t i = 0; i + 1 < curve.knots.size(); ++i) {
      const double step = (curve.knots[i + 1] - curve.knots[i]) / parts;
      if (!(step > 0.0)) continue;
      for (int part = 0; part < parts; ++part) {
        const double from = curve.knots[i] + step * part;
        sum += integrate(from, from + step, [&](double t) {
          const CurvePoint point = curvePoint(curve, t);
          return upTo(point.at[inner_], point.at[outer]) * point.slope[outer];
        });
      }
    }
    if (inner_ == 1) sum = -sum;
    return piece.against ? -sum : sum;
  }

 private:
  const std::vector<double>& knots(std::size_t axis) const { return axis == 0 ? surface_.uKnots : surface_.vKnots; }
  int degree(std::size_t axis) const { return axis == 0 ? surface_.uDegree : surface_.vDegree; }

  // The integral of the area element from the start of the inner parameter.
  double upTo(double end, double outerValue) {
    fixOuter(outerValue);
    double sum = 0.0;
    for (std::size_t i = 0; i + 1 < breaks_.size() && breaks_[i] < end; ++i) {
      const bool isLast = i + 2 == breaks_.size();
      sum += integrate(breaks_[i], isLast ? end : std::min(end, breaks_[i + 1]), [&](double t) { return element(t); });
    }
    if (end < breaks_.front()) sum -= integrate(end, breaks_.front(), [&](double t) { return element(t); });
    return sum;
  }

  // The poles of the curve on which the outer parameter keeps its value.
  void fixOuter(double value) {
    const std::size_t outer = 1 - inner_;
    const SplineBasis basis(degree(outer), knots(outer), value);
    for (std::size_t i = 0; i < poles_.size(); ++i) {
      poles_[i] = {};
      for (int j = 0; j <= degree(outer); ++j) {
        const std::size_t across = basis.firstPole() + static_cast<std::size_t>(j);
        const std::size_t at = outer == 0 ? across * columns_ + i : i * columns_ + across;
        const double weight = surface_.weights.empty() ? 1.0 : surface_.weights[at];
        const Point& pole = surface_.poles[at];
        const Homogeneous own = {pole[0] * weight, pole[1] * weight, pole[2] * weight, weight};
        for (std::size_t k = 0; k < 4; ++k) {
          poles_[i].value[k] += basis.value(j) * own[k];
          poles_[i].slope[k] += basis.derivative(j) * own[k];
        }
      }
    }
  }

  // The length of the product of both tangents.
  double element(double parameter) const {
    const SplineBasis basis(degree(inner_), knots(inner_), parameter);
    Homogeneous value{};
    Homogeneous inner{};
    Homogeneous outer{};
    for (int i = 0; i <= degree(inner_); ++i) {
      const MovingPole& pole = poles_[basis.firstPole() + static_cast<std::size_t>(i)];
      for (std::size_t k = 0; k < 4; ++k) {
        value[k] += basis.value(i) * pole.value[k];
        inner[k] += basis.derivative(i) * pole.value[k];
        outer[k] += basis.value(i) * pole.slope[k];
      }
    }
    Point a{};
    Point b{};
    for (std::size_t k = 0; k < 3; ++k) {
      const double point = value[k] / value[3];
      a[k] = (inner[k] - inner[3] * point) / value[3];
      b[k] = (outer[k] - outer[3] * point) / value[3];
    }
    return std::hypot(a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]);
  }

  const ExactSurface& surface_;
  const int fineness_;
  std::size_t inner_;
  std::size_t columns_;
  std::vector<double> breaks_;
  std::vector<MovingPole> poles_;
};

}  // namespace

double trimmedArea(const ExactSurface& surface, const std::vector<TrimPiece>& pieces) {
  double area = 0.0;
  for (int i = 0, fineness = 1; i <= kRefinements; ++i, fineness *= 2) {
    AreaIntegral integral(surface, fineness);
    double finer = 0.0;
    for (const TrimPiece& piece : pieces) finer += integral.along(piece);
    const bool settled = i > 0 && std::abs(finer - area) <= kSettled * std::abs(finer);
    area = finer;
    if (settled) break;
  }
  return area;
}

double parameterArea(const std::vector<TrimPiece>& pieces) {
  double sum = 0.0;
  for (const TrimPiece& piece : pieces) {
    double own = 0.0;
    const std::vector<double>& knots = piece.curve->knots;
    for (std::size_t i = 0; i + 1 < knots.size(); ++i) {
      if (!(knots[i + 1] > knots[i])) continue;
      own += integrate(knots[i], knots[i + 1], [&](double t) {
        const CurvePoint point = curvePoint(*piece.curve, t);
        return 0.5 * (point.at[0] * point.slope[1] - point.at[1] * point.slope[0]);
      });
    }
    sum += piece.against ? -own : own;
  }
  return sum;
}

}  // namespace standin
