// Zelto::TruncateToInt32: the float-to-integer rule of Parts 3.1 and 3.2.
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

#include "masking/zelto_vector3.h"

namespace {

using Zelto::TruncateToInt32;

constexpr int32_t kMax = std::numeric_limits<int32_t>::max();
constexpr int32_t kMin = std::numeric_limits<int32_t>::min();

TEST(TruncateToInt32, PlusInfinitySaturatesAtMax) {
  EXPECT_EQ(TruncateToInt32(std::numeric_limits<float>::infinity()), kMax);
}

TEST(TruncateToInt32, MinusInfinitySaturatesAtMin) {
  EXPECT_EQ(TruncateToInt32(-std::numeric_limits<float>::infinity()), kMin);
}

TEST(TruncateToInt32, NanGivesZero) {
  EXPECT_EQ(TruncateToInt32(std::numeric_limits<float>::quiet_NaN()), 0);
  EXPECT_EQ(TruncateToInt32(-std::numeric_limits<float>::quiet_NaN()), 0);
}

TEST(TruncateToInt32, LargestFloatBelowTwoToThe31IsExact) {
  EXPECT_EQ(TruncateToInt32(2147483520.0f), 2147483520);
}

TEST(TruncateToInt32, TwoToThe31SaturatesAtMax) {
  EXPECT_EQ(TruncateToInt32(2147483648.0f), kMax);
}

TEST(TruncateToInt32, MinusTwoToThe31IsExactlyMin) {
  EXPECT_EQ(TruncateToInt32(-2147483648.0f), kMin);
}

TEST(TruncateToInt32, FirstFloatBelowMinusTwoToThe31SaturatesAtMin) {
  EXPECT_EQ(TruncateToInt32(-2147483904.0f), kMin);
}

TEST(TruncateToInt32, MinusHalfTruncatesToZero) {
  EXPECT_EQ(TruncateToInt32(-0.5f), 0);
}

TEST(TruncateToInt32, MinusOneStaysMinusOne) {
  EXPECT_EQ(TruncateToInt32(-1.0f), -1);
}

TEST(TruncateToInt32, FractionsTruncateTowardZero) {
  EXPECT_EQ(TruncateToInt32(1.9f), 1);
  EXPECT_EQ(TruncateToInt32(-1.9f), -1);
  EXPECT_EQ(TruncateToInt32(639.5f), 639);
}

}  // namespace
