// Placements: 4 x 4, row-major, row vectors (a point times a matrix), translation in elements 12 to 14.
#pragma once

#include <array>

namespace rendara {

using Matrix = std::array<double, 16>;

inline constexpr Matrix kIdentityMatrix = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

// Element (i, j) is the sum over k of first(i, k) times second(k, j), summed from +0.0 in the order of k.
Matrix multiply(const Matrix& first, const Matrix& second);

// The inverse of a rotation or reflection with a uniform scale and a translation: with s² the squared length of the
// first row, the transposed 3 x 3 divided by s², and the translation moved back through it. False, and the output
// untouched, when s² is below 1e-18.
bool invertSimilarity(const Matrix& matrix, Matrix& inverse);

}  // namespace rendara
