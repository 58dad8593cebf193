// Exact surfaces as a package holds them: rational B-spline surfaces with trimming loops in their parameter planes.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "tools/rpk/scene_summary.h"

namespace rpk {

// A point of the parameter plane.
using Parameter2 = std::array<double, 2>;

// Control points are not multiplied by their weights. The domain is that between the knots of index degree and
// size - degree - 1; a surface goes on beyond it by a twentieth of its range or a whole span, whichever is less, and
// farther off stays as it is there.
struct NurbsCurve {
  int degree = 1;
  std::vector<double> knots;
  std::vector<std::array<double, 3>> points;  // u, v, weight

  double first() const { return knots[static_cast<std::size_t>(degree)]; }
  double last() const { return knots[knots.size() - static_cast<std::size_t>(degree) - 1]; }
  Parameter2 at(double t) const;
};

struct NurbsPoint {
  Vector position;
  Vector du, dv;  // derivatives
};

struct NurbsSurface {
  int uDegree = 1;
  int vDegree = 1;
  std::vector<double> uKnots, vKnots;
  std::vector<std::array<double, 4>> points;  // x, y, z, weight; u runs fastest

  std::size_t uCount() const { return uKnots.size() - static_cast<std::size_t>(uDegree) - 1; }
  std::size_t vCount() const { return vKnots.size() - static_cast<std::size_t>(vDegree) - 1; }
  double uMin() const { return uKnots[static_cast<std::size_t>(uDegree)]; }
  double uMax() const { return uKnots[uKnots.size() - static_cast<std::size_t>(uDegree) - 1]; }
  double vMin() const { return vKnots[static_cast<std::size_t>(vDegree)]; }
  double vMax() const { return vKnots[vKnots.size() - static_cast<std::size_t>(vDegree) - 1]; }
  NurbsPoint at(double u, double v) const;
};

struct TrimLoop {
  std::vector<NurbsCurve> curves;
  bool inside = true;  // what the loop encloses belongs to the surface; false for a hole
};

struct TrimmedSurface {
  NurbsSurface surface;
  std::vector<TrimLoop> loops;  // none: the whole domain
};

// The surface of an object of geometry type "nurbs". Nothing when its arrays do not go together; `fault`, when given,
// then says why. A degree above kMaxDegree, weights and domains that are not above 1e-30 and numbers beyond 1e30 are
// refused, too.
inline constexpr int kMaxDegree = 25;
std::optional<TrimmedSurface> readTrimmedSurface(const Object& object, std::string* fault = nullptr);

}  // namespace rpk
