// The curves that trim an exact surface, in its parameter plane, as plain numbers: reversal and orientation.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

namespace rendara {

// A B-spline curve; its knots are as many as its control points and its degree and 1 together.
struct TrimCurve {
  int degree = 0;
  std::vector<double> knots;
  std::vector<std::array<double, 3>> points;  // u, v, and the weight, which u and v are not multiplied by
  bool readable = true;                       // false: the CAD system named a curve and did not give it
};

// The same points in the opposite order over the same range of parameters: the knots mirrored, k'[0] = k[0] and
// k'[i] = k'[i-1] + (k[n-i] - k[n-i-1]) for n knots.
TrimCurve reversed(const TrimCurve& curve);

// Takes the control points of all curves, one curve after the other, for a closed polygon A, B, C ... and counts its
// corners: +1 where (A.x - B.x)(C.y - B.y) - (A.y - B.y)(C.x - B.x) is above zero, -1 where it is below. The walk goes
// round twice, so the count is twice that of the corners. A convex polygon that runs clockwise counts above zero.
std::ptrdiff_t orientationCount(std::span<const TrimCurve> contour);

// Whether a contour is to be reversed, by its traversal value (1 outside, -1 inside, others unknown) and its count.
bool mustReverse(int traversal, std::ptrdiff_t count);

// Replaces each curve by its reversed copy; their order stays.
void reverseContour(std::span<TrimCurve> contour);

}  // namespace rendara
