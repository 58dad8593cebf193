#include "scene/matrix.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>

namespace rendara {
namespace {

TEST(MatrixInverse, UndoesRotationMirrorScaleAndTranslation) {
  const double c = std::cos(0.3) * 2.5;
  const double s = std::sin(0.3) * 2.5;
  const Matrix matrix = {c, s, 0, 0, -s, c, 0, 0, 0, 0, -2.5, 0, 7, -8, 9, 1};
  Matrix inverse{};
  ASSERT_TRUE(invertSimilarity(matrix, inverse));
  const Matrix product = multiply(matrix, inverse);
  for (std::size_t i = 0; i < 16; ++i) {
    EXPECT_NEAR(product[i], kIdentityMatrix[i], 1e-12) << i;
  }
}

TEST(MatrixInverse, FailsWithoutAScaleAndLeavesTheOutputAlone) {
  Matrix inverse = kIdentityMatrix;
  inverse[12] = 5;
  const Matrix before = inverse;
  Matrix flat{};
  EXPECT_FALSE(invertSimilarity(flat, inverse));
  flat[0] = std::nan("");
  EXPECT_FALSE(invertSimilarity(flat, inverse));
  EXPECT_EQ(inverse, before);
}

TEST(MatrixProduct, AppliesTheFirstMatrixFirst) {
  const Matrix quarterTurn = {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
  const Matrix moved = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 10, 0, 0, 1};
  EXPECT_EQ(multiply(moved, quarterTurn)[13], 10);
  EXPECT_EQ(multiply(quarterTurn, moved)[12], 10);
}

TEST(MatrixProduct, HasNoNegativeZeros) {
  Matrix negative = kIdentityMatrix;
  negative[1] = -0.0;
  for (const double value : multiply(negative, kIdentityMatrix)) {
    EXPECT_FALSE(std::signbit(value));
  }
}

}  // namespace
}  // namespace rendara
