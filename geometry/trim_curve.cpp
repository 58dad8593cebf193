#include "geometry/trim_curve.h"

#include <algorithm>
#include <iterator>

namespace rendara {
namespace {

using Corner = std::array<double, 3>;

int turn(const Corner& a, const Corner& b, const Corner& c) {
  const double area = (a[0] - b[0]) * (c[1] - b[1]) - (a[1] - b[1]) * (c[0] - b[0]);
  return static_cast<int>(area > 0.0) - static_cast<int>(area < 0.0);
}

}  // namespace

TrimCurve reversed(const TrimCurve& curve) {
  TrimCurve copy;
  copy.degree = curve.degree;
  copy.readable = curve.readable;
  copy.points.assign(curve.points.rbegin(), curve.points.rend());
  copy.knots = curve.knots;
  const std::size_t count = curve.knots.size();
  for (std::size_t i = 1; i < count; ++i) {
    copy.knots[i] = copy.knots[i - 1] + (curve.knots[count - i] - curve.knots[count - i - 1]);
  }
  return copy;
}

std::ptrdiff_t orientationCount(std::span<const TrimCurve> contour) {
  std::vector<Corner> corners;
  for (const TrimCurve& curve : contour) {
    corners.insert(corners.end(), curve.points.begin(), curve.points.end());
  }
  const std::size_t size = corners.size();
  std::ptrdiff_t count = 0;
  for (std::size_t step = 0; step < 2 * size; ++step) {
    count += turn(corners[step % size], corners[(step + 1) % size], corners[(step + 2) % size]);
  }
  return count;
}

bool mustReverse(int traversal, std::ptrdiff_t count) {
  return (traversal == 1 && count >= 0) || (traversal == -1 && count < 0);
}

void reverseContour(std::span<TrimCurve> contour) {
  std::transform(contour.begin(), contour.end(), contour.begin(), reversed);
}

}  // namespace rendara
