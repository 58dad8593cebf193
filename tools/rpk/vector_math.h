// What is computed with the points and directions of a package.
#pragma once

#include <cmath>
#include <optional>

#include "tools/rpk/scene_summary.h"

namespace rpk {

inline double dot(const Vector& a, const Vector& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

inline Vector cross(const Vector& a, const Vector& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

inline double length(const Vector& a) { return std::hypot(a[0], a[1], a[2]); }

inline double distance(const Vector& a, const Vector& b) { return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]); }

// Nothing for a direction that is none.
inline std::optional<Vector> unit(const Vector& a) {
  const double size = length(a);
  if (!std::isfinite(size) || size < 1e-30) return std::nullopt;
  return Vector{a[0] / size, a[1] / size, a[2] / size};
}

}  // namespace rpk
