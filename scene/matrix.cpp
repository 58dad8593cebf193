#include "scene/matrix.h"

#include <cstddef>

namespace rendara {

Matrix multiply(const Matrix& first, const Matrix& second) {
  Matrix product{};
  for (std::size_t row = 0; row < 4; ++row) {
    for (std::size_t column = 0; column < 4; ++column) {
      double sum = 0.0;
      for (std::size_t k = 0; k < 4; ++k) {
        sum += first[row * 4 + k] * second[k * 4 + column];
      }
      product[row * 4 + column] = sum;
    }
  }
  return product;
}

bool invertSimilarity(const Matrix& matrix, Matrix& inverse) {
  const double squaredScale = matrix[0] * matrix[0] + matrix[1] * matrix[1] + matrix[2] * matrix[2];
  // Written so that a scale that is not a number fails too.
  if (!(squaredScale >= 1e-18)) {
    return false;
  }
  Matrix result{};
  for (std::size_t row = 0; row < 3; ++row) {
    for (std::size_t column = 0; column < 3; ++column) {
      result[row * 4 + column] = matrix[column * 4 + row] / squaredScale;
    }
  }
  for (std::size_t column = 0; column < 3; ++column) {
    double moved = 0.0;
    for (std::size_t k = 0; k < 3; ++k) {
      moved += matrix[12 + k] * matrix[column * 4 + k];
    }
    result[12 + column] = -moved / squaredScale;
  }
  result[15] = 1.0;
  inverse = result;
  return true;
}

}  // namespace rendara
