#include "tools/rpk/report/placement_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>

#include "tools/rpk/vector_math.h"

namespace rpk {
namespace {

// Placements are written with six digits.
constexpr double kRounding = 1e-4;

using Rows = std::array<Vector, 3>;

Rows rowsOf(const Matrix& matrix) {
  return {{{matrix[0], matrix[1], matrix[2]}, {matrix[4], matrix[5], matrix[6]}, {matrix[8], matrix[9], matrix[10]}}};
}

Rows ofUnitLength(Rows rows) {
  for (Vector& row : rows) {
    const double size = length(row);
    for (double& value : row) value = size > 0 ? value / size : 0;
  }
  return rows;
}

// The rows are the images of the axes, so this is the axis of the turn, as long as twice the sine of its angle.
Vector doubledSine(const Rows& rows) {
  return {rows[1][2] - rows[2][1], rows[2][0] - rows[0][2], rows[0][1] - rows[1][0]};
}

double angleOf(const Rows& rows) {
  const double doubledCosine = rows[0][0] + rows[1][1] + rows[2][2] - 1;
  return std::atan2(length(doubledSine(rows)), doubledCosine) * 180 / std::numbers::pi;
}

Vector axisOf(const Rows& rows) {
  const Vector sine = doubledSine(rows);
  if (length(sine) > 1e-3) return ofUnitLength({sine, sine, sine})[0];
  // Half a turn: the sine vanishes, and each row plus its own axis points along the axis of the turn.
  Vector best{};
  for (std::size_t i = 0; i < 3; ++i) {
    Vector candidate = rows[i];
    candidate[i] += 1;
    if (length(candidate) > length(best)) best = candidate;
  }
  return ofUnitLength({best, best, best})[0];
}

std::string rotationText(const Rows& rows) {
  // Two decimals, and no minus before a zero.
  const auto rounded = [](double part) { return std::round(part * 100) / 100 + 0.0; };
  double angle = angleOf(rows);
  if (!(angle > 0.005)) return {};
  const Vector axis = axisOf(rows);
  for (std::size_t i = 0; i < 3; ++i) {
    if (std::abs(axis[i]) < 1 - kRounding) continue;
    if (axis[i] < 0 && angle < 180 - 0.005) angle = -angle;
    return fmt::format("{:.5g} deg about {}", std::round(angle * 100) / 100, "xyz"[i]);
  }
  return fmt::format("{:.5g} deg about ({:.2g} {:.2g} {:.2g})", std::round(angle * 100) / 100, rounded(axis[0]),
                     rounded(axis[1]), rounded(axis[2]));
}

bool affine(const Matrix& matrix) {
  return std::abs(matrix[3]) < kRounding && std::abs(matrix[7]) < kRounding && std::abs(matrix[11]) < kRounding &&
         std::abs(matrix[15] - 1) < kRounding;
}

}  // namespace

std::string numberText(double number) {
  if (std::abs(number) < 1e-7) return "0";
  return fmt::format("{:.6g}", number);
}

std::string vectorText(const Vector& vector) {
  return fmt::format("({}, {}, {})", numberText(vector[0]), numberText(vector[1]), numberText(vector[2]));
}

std::string turnText(const Matrix& placement) {
  if (!std::all_of(placement.begin(), placement.end(), [](double value) { return std::isfinite(value); })) {
    return "no numbers";
  }
  if (!affine(placement)) return "not affine";
  Rows rows = rowsOf(placement);
  const Vector lengths = {length(rows[0]), length(rows[1]), length(rows[2])};
  const double scale = (lengths[0] + lengths[1] + lengths[2]) / 3;
  if (!(lengths[0] > 0 && lengths[1] > 0 && lengths[2] > 0)) return "flattened";
  rows = ofUnitLength(rows);
  if (std::abs(dot(rows[0], rows[1])) > kRounding || std::abs(dot(rows[1], rows[2])) > kRounding ||
      std::abs(dot(rows[2], rows[0])) > kRounding) {
    return "skewed";
  }
  std::string text;
  const auto add = [&](const std::string& more) {
    if (!more.empty()) text += (text.empty() ? "" : ", ") + more;
  };
  const bool mirrored = dot(cross(rows[0], rows[1]), rows[2]) < 0;
  if (mirrored) {
    // What is left is a mirroring of all three axes.
    for (Vector& row : rows) row = {-row[0], -row[1], -row[2]};
    add("mirrored");
  }
  add(rotationText(rows));
  const auto [least, most] = std::minmax_element(lengths.begin(), lengths.end());
  if (*most - *least > kRounding * *most) {
    add(fmt::format("stretched by {:.4g} {:.4g} {:.4g}", lengths[0], lengths[1], lengths[2]));
  } else if (std::abs(scale - 1) > kRounding) {
    add(fmt::format("scaled by {:.5g}", scale));
  }
  return text;
}

double degreesBetween(const Matrix& first, const Matrix& second) {
  const Rows before = ofUnitLength(rowsOf(first));
  const Rows after = ofUnitLength(rowsOf(second));
  Rows turn{};
  for (std::size_t row = 0; row < 3; ++row) {
    for (std::size_t column = 0; column < 3; ++column) {
      for (std::size_t k = 0; k < 3; ++k) turn[row][column] += before[k][row] * after[k][column];
    }
  }
  return angleOf(turn);
}

Vector translationOf(const Matrix& placement) { return {placement[12], placement[13], placement[14]}; }

std::string colourText(const Vector& colour) {
  std::string text = "#";
  for (const double part : colour) {
    // Not a number counts as 0.
    const double limited = part > 0 ? std::min(part, 1.0) : 0;
    text += fmt::format("{:02x}", std::lround(limited * 255));
  }
  return text;
}

}  // namespace rpk
