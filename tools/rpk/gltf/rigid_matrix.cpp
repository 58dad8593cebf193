#include "tools/rpk/gltf/rigid_matrix.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "tools/rpk/vector_math.h"

namespace rpk {
namespace {

using Rows = std::array<Vector, 3>;

Vector scaled(const Vector& a, double factor) { return {a[0] * factor, a[1] * factor, a[2] * factor}; }

Rows rowsOf(const Matrix& matrix) {
  return {Vector{matrix[0], matrix[1], matrix[2]}, Vector{matrix[4], matrix[5], matrix[6]},
          Vector{matrix[8], matrix[9], matrix[10]}};
}

// A unit vector at right angles to a unit vector.
Vector perpendicular(const Vector& unit) {
  const Vector axis = std::abs(unit[0]) < 0.6 ? Vector{1, 0, 0} : Vector{0, 1, 0};
  const Vector across = cross(unit, axis);
  return scaled(across, 1 / std::sqrt(dot(across, across)));
}

// Brings rows of length 1 or 0 exactly to right angles, the shorter before scaling giving way to the longer, so that
// the noise in the direction of a row that all but vanished turns nothing else. A handedness is kept.
void completeRotation(Rows& rows, const Vector& lengths) {
  std::array<std::size_t, 3> order = {0, 1, 2};
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return lengths[a] > lengths[b]; });
  const auto [longest, middle, shortest] = order;
  if (lengths[longest] == 0) {
    rows = {Vector{1, 0, 0}, Vector{0, 1, 0}, Vector{0, 0, 1}};
    return;
  }
  const double along = dot(rows[middle], rows[longest]);
  for (std::size_t i = 0; i < 3; ++i) rows[middle][i] -= along * rows[longest][i];
  const double rest = std::sqrt(dot(rows[middle], rows[middle]));
  rows[middle] = rest < 0.5 ? perpendicular(rows[longest]) : scaled(rows[middle], 1 / rest);
  const Vector third = cross(rows[(shortest + 1) % 3], rows[(shortest + 2) % 3]);
  rows[shortest] = scaled(third, dot(third, rows[shortest]) < 0 ? -1 : 1);
}

// The rows are the images of the axes.
Quaternion quaternionOf(const Rows& r) {
  Quaternion q{};
  const double trace = r[0][0] + r[1][1] + r[2][2];
  if (trace > 0) {
    q = {r[1][2] - r[2][1], r[2][0] - r[0][2], r[0][1] - r[1][0], 1 + trace};
  } else {
    const std::size_t i = r[0][0] >= r[1][1] && r[0][0] >= r[2][2] ? 0 : r[1][1] >= r[2][2] ? 1 : 2;
    const std::size_t j = (i + 1) % 3;
    const std::size_t k = (i + 2) % 3;
    q[i] = 1 + r[i][i] - r[j][j] - r[k][k];
    q[j] = r[i][j] + r[j][i];
    q[k] = r[i][k] + r[k][i];
    q[3] = r[j][k] - r[k][j];
  }
  const double length = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]);
  for (double& part : q) part /= length;
  return q;
}

Matrix withRows(const Rows& rows, const Vector& translation) {
  Matrix matrix = kIdentity;
  for (std::size_t row = 0; row < 3; ++row) {
    for (std::size_t column = 0; column < 3; ++column) matrix[row * 4 + column] = rows[row][column];
    matrix[12 + row] = translation[row];
  }
  return matrix;
}

double largestNumber(const Rows& rows) {
  double largest = 0;
  for (const Vector& row : rows) {
    for (const double value : row) largest = std::max(largest, std::abs(value));
  }
  return largest;
}

// One rotation of Jacobi's method: makes element (p, q) of the symmetric matrix vanish and turns the axes with it.
void rotateAway(Rows& symmetric, Rows& axes, std::size_t p, std::size_t q) {
  const double off = symmetric[p][q];
  if (off == 0) return;
  const double theta = (symmetric[q][q] - symmetric[p][p]) / (2 * off);
  const double t = (theta >= 0 ? 1.0 : -1.0) / (std::abs(theta) + std::sqrt(theta * theta + 1));
  const double c = 1 / std::sqrt(t * t + 1);
  const double s = t * c;
  for (std::size_t i = 0; i < 3; ++i) {
    const double first = symmetric[i][p];
    const double second = symmetric[i][q];
    symmetric[i][p] = c * first - s * second;
    symmetric[i][q] = s * first + c * second;
  }
  const auto turn = [&](Rows& rows) {
    const Vector first = rows[p];
    const Vector second = rows[q];
    for (std::size_t i = 0; i < 3; ++i) {
      rows[p][i] = c * first[i] - s * second[i];
      rows[q][i] = s * first[i] + c * second[i];
    }
  };
  turn(symmetric);
  turn(axes);
}

// The axes of a symmetric matrix as the rows of a rotation.
Rows principalAxes(Rows symmetric) {
  Rows axes = {Vector{1, 0, 0}, Vector{0, 1, 0}, Vector{0, 0, 1}};
  for (int sweep = 0; sweep < 20; ++sweep) {
    rotateAway(symmetric, axes, 0, 1);
    rotateAway(symmetric, axes, 0, 2);
    rotateAway(symmetric, axes, 1, 2);
  }
  return axes;
}

Pose poseOf(Rows rows, const Vector& translation) {
  Pose pose;
  pose.translation = translation;
  for (std::size_t i = 0; i < 3; ++i) {
    const double size = std::max({std::abs(rows[i][0]), std::abs(rows[i][1]), std::abs(rows[i][2])});
    if (size == 0) {
      pose.scale[i] = 0;
      continue;
    }
    rows[i] = scaled(rows[i], 1 / size);  // no square may vanish or overflow
    const double length = std::sqrt(dot(rows[i], rows[i]));
    rows[i] = scaled(rows[i], 1 / length);
    pose.scale[i] = size * length;
  }
  completeRotation(rows, pose.scale);
  if (dot(cross(rows[0], rows[1]), rows[2]) < 0) {
    pose.scale[0] = -pose.scale[0];
    rows[0] = scaled(rows[0], -1);
  }
  pose.rotation = quaternionOf(rows);
  return pose;
}

bool rightAngle(const Vector& a, const Vector& b) {
  constexpr double kTolerance = 1e-5;
  const double limit = kTolerance * std::sqrt(dot(a, a) * dot(b, b));
  return std::abs(dot(a, b)) <= limit;
}

}  // namespace

std::optional<Matrix> cleanPlacement(const Matrix& matrix) {
  constexpr double kLargest = 1e30;
  Matrix clean = matrix;
  clean[3] = clean[7] = clean[11] = 0;
  clean[15] = 1;
  const bool usable = std::all_of(clean.begin(), clean.end(), [](double value) { return std::abs(value) <= kLargest; });
  if (!usable) return std::nullopt;
  return clean;
}

std::optional<Pose> toPose(const Matrix& placement) {
  Rows rows = rowsOf(placement);
  const double largest = largestNumber(rows);
  if (largest > 0) {
    for (Vector& row : rows) row = scaled(row, 1 / largest);
  }
  if (!rightAngle(rows[0], rows[1]) || !rightAngle(rows[0], rows[2]) || !rightAngle(rows[1], rows[2])) {
    return std::nullopt;
  }
  return poseOf(rowsOf(placement), {placement[12], placement[13], placement[14]});
}

// With the matrix as L and the axes of L times its transpose as the rows of A, A × L has rows at right angles, and
// L = transpose of A × (A × L).
Matrix toMatrix(const Pose& pose) {
  const auto& [x, y, z, w] = pose.rotation;
  const std::array<Vector, 3> axes = {{{1 - 2 * (y * y + z * z), 2 * (x * y + z * w), 2 * (x * z - y * w)},
                                       {2 * (x * y - z * w), 1 - 2 * (x * x + z * z), 2 * (y * z + x * w)},
                                       {2 * (x * z + y * w), 2 * (y * z - x * w), 1 - 2 * (x * x + y * y)}}};
  Matrix matrix = kIdentity;
  for (std::size_t row = 0; row < 3; ++row) {
    for (std::size_t column = 0; column < 3; ++column) matrix[row * 4 + column] = pose.scale[row] * axes[row][column];
    matrix[12 + row] = pose.translation[row];
  }
  return matrix;
}

SplitPlacement splitPlacement(const Matrix& placement) {
  if (const auto whole = toPose(placement)) return {std::nullopt, *whole};
  const Rows rows = rowsOf(placement);
  const double factor = 1 / largestNumber(rows);
  Rows square{};
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) square[i][j] = dot(scaled(rows[i], factor), scaled(rows[j], factor));
  }
  Rows axes = principalAxes(square);
  if (dot(cross(axes[0], axes[1]), axes[2]) < 0) axes[0] = scaled(axes[0], -1);
  Rows turned{};
  Rows transposed{};
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      turned[i][j] = axes[i][0] * rows[0][j] + axes[i][1] * rows[1][j] + axes[i][2] * rows[2][j];
      transposed[i][j] = axes[j][i];
    }
  }
  return {poseOf(transposed, {0, 0, 0}), poseOf(turned, {placement[12], placement[13], placement[14]})};
}

Matrix upRotation(double upVector) {
  constexpr Vector kNone = {0, 0, 0};
  constexpr Vector kX = {1, 0, 0};
  constexpr Vector kY = {0, 1, 0};
  constexpr Vector kZ = {0, 0, 1};
  constexpr Vector kMinusX = {-1, 0, 0};
  constexpr Vector kMinusY = {0, -1, 0};
  constexpr Vector kMinusZ = {0, 0, -1};
  if (upVector == 0) return withRows({kY, kMinusX, kZ}, kNone);
  if (upVector == 2) return withRows({kX, kMinusZ, kY}, kNone);
  if (upVector == 3) return withRows({kMinusY, kX, kZ}, kNone);
  if (upVector == 4) return withRows({kX, kMinusY, kMinusZ}, kNone);
  if (upVector == 5) return withRows({kX, kZ, kMinusY}, kNone);
  return kIdentity;
}

}  // namespace rpk
