// Three floats, with the arithmetic that drawing needs.
#pragma once

#include <cmath>

namespace rpk {

struct Vec3 {
  float x = 0;
  float y = 0;
  float z = 0;
};

inline Vec3 operator+(const Vec3& a, const Vec3& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline Vec3 operator-(const Vec3& a, const Vec3& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline Vec3 operator-(const Vec3& a) { return {-a.x, -a.y, -a.z}; }
inline Vec3 operator*(const Vec3& a, float factor) { return {a.x * factor, a.y * factor, a.z * factor}; }
inline float dot(const Vec3& a, const Vec3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline Vec3 cross(const Vec3& a, const Vec3& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline float length(const Vec3& a) { return std::sqrt(dot(a, a)); }
inline Vec3 mix(const Vec3& a, const Vec3& b, float share) { return a * (1 - share) + b * share; }

// Of length 1, or `otherwise` when the vector has no direction.
inline Vec3 unit(const Vec3& a, const Vec3& otherwise) {
  const float size = length(a);
  return size > 0 && std::isfinite(size) ? a * (1 / size) : otherwise;
}

}  // namespace rpk
