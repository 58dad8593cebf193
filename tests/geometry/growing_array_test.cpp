#include "geometry/growing_array.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <stdexcept>

namespace rendara {
namespace {

TEST(GrowingArray, KeepsItsContentAndItsCapacity) {
  GrowingArray<int> array;
  for (int i = 0; i < 100000; ++i) {
    *array.extend(1) = i;
  }
  for (int i = 0; i < 100000; ++i) {
    ASSERT_EQ(array.data()[i], i);
  }
  const std::size_t capacity = array.capacity();
  array.clear();
  EXPECT_TRUE(array.empty());
  array.extend(1000);
  EXPECT_EQ(array.capacity(), capacity);
}

TEST(GrowingArray, NeverHoldsMoreThanOneMegabyteInReserve) {
  GrowingArray<float> array;
  for (int i = 0; i < 400; ++i) {
    array.extend(30000);
    ASSERT_LE((array.capacity() - array.size()) * sizeof(float), std::size_t{1} << 20);
  }
}

TEST(GrowingArray, TooLongLeavesTheArrayAsItWas) {
  GrowingArray<double> array;
  *array.extend(1) = 4.5;
  EXPECT_THROW(array.extend(std::numeric_limits<std::size_t>::max() / sizeof(double)), std::length_error);
  EXPECT_EQ(array.size(), 1U);
  EXPECT_EQ(array.data()[0], 4.5);
}

}  // namespace
}  // namespace rendara
