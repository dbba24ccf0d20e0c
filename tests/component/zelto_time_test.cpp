// Part 1.4: Zelto::CompareFloat and Zelto::WaitRemainingTime.
#include <chrono>
#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "component/zelto_time.h"
#include "tests/component/pacing_seams.h"

namespace zelto_test {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using Sleeps = std::vector<uint64_t>;

const std::chrono::steady_clock::time_point kStart{std::chrono::seconds(50)};

TEST(CompareFloat, EqualValuesCompareEqual) {
  EXPECT_TRUE(Zelto::CompareFloat(0.0f, 0.0f));
  EXPECT_TRUE(Zelto::CompareFloat(1.0f, 1.0f));
  EXPECT_TRUE(Zelto::CompareFloat(-3.5f, -3.5f));
  EXPECT_TRUE(Zelto::CompareFloat(0.0f, -0.0f));
}

TEST(CompareFloat, BelowMagnitudeOneTheToleranceIsOneEpsilonStrictly) {
  const float epsilon = std::numeric_limits<float>::epsilon();  // 2^-23
  // Both magnitudes below 1: the scale is 1, the difference exactly epsilon.
  EXPECT_FALSE(Zelto::CompareFloat(0.5f, 0.5f + epsilon));
  EXPECT_TRUE(Zelto::CompareFloat(0.5f, 0.5f + epsilon / 2));
}

TEST(CompareFloat, TheLargerMagnitudeWidensTheTolerance) {
  const float epsilon = std::numeric_limits<float>::epsilon();
  // The difference is epsilon, but the scale is 1 + epsilon.
  EXPECT_TRUE(Zelto::CompareFloat(1.0f, 1.0f + epsilon));
  EXPECT_FALSE(Zelto::CompareFloat(1.0f, 1.0f + 2 * epsilon));
}

TEST(CompareFloat, BelowOneTheScaleIsNeverLessThanOne) {
  EXPECT_TRUE(Zelto::CompareFloat(0.0f, 1.0e-7f));
  EXPECT_FALSE(Zelto::CompareFloat(0.0f, 1.2e-7f));
  EXPECT_TRUE(Zelto::CompareFloat(1.0e-3f, 1.0e-3f + 1.0e-7f));
}

TEST(CompareFloat, ForLargeValuesTheToleranceScalesWithTheLargerMagnitude) {
  // At 1e6 the tolerance is about 0.119 and one float step is 0.0625.
  EXPECT_TRUE(Zelto::CompareFloat(1.0e6f, 1.0e6f + 0.0625f));
  EXPECT_FALSE(Zelto::CompareFloat(1.0e6f, 1.0e6f + 0.125f));
  EXPECT_TRUE(Zelto::CompareFloat(-1.0e6f - 0.0625f, -1.0e6f));
}

TEST(CompareFloat, NaNAndInfinityNeverCompareEqual) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float infinity = std::numeric_limits<float>::infinity();
  EXPECT_FALSE(Zelto::CompareFloat(nan, nan));
  EXPECT_FALSE(Zelto::CompareFloat(nan, 1.0f));
  EXPECT_FALSE(Zelto::CompareFloat(1.0f, nan));
  EXPECT_FALSE(Zelto::CompareFloat(infinity, infinity));
}

TEST(WaitRemainingTime, SleepsWhatRemainsInWholeElapsedMilliseconds) {
  SleepRecorder sleeps;
  Zelto::WaitRemainingTime(kStart, 5, kStart + microseconds(2500));
  EXPECT_EQ((Sleeps{3000000}), sleeps.Sleeps());
}

TEST(WaitRemainingTime, ElapsedIsTruncatedToWholeMilliseconds) {
  SleepRecorder sleeps;
  Zelto::WaitRemainingTime(kStart, 5, kStart + nanoseconds(4999999));
  EXPECT_EQ((Sleeps{1000000}), sleeps.Sleeps());
}

TEST(WaitRemainingTime, NothingRemainsNoSleep) {
  SleepRecorder sleeps;
  Zelto::WaitRemainingTime(kStart, 5, kStart + milliseconds(5));
  Zelto::WaitRemainingTime(kStart, 5, kStart + milliseconds(9));
  Zelto::WaitRemainingTime(kStart, 0, kStart);
  EXPECT_TRUE(sleeps.Sleeps().empty());
}

TEST(WaitRemainingTime, AtTheStartTheWholeTimeIsSlept) {
  SleepRecorder sleeps;
  Zelto::WaitRemainingTime(kStart, 7, kStart);
  EXPECT_EQ((Sleeps{7000000}), sleeps.Sleeps());
}

TEST(WaitRemainingTime, TheSteadyClockFormReturnsAtOnceForALongPastStart) {
  SleepRecorder sleeps;
  Zelto::WaitRemainingTime(std::chrono::steady_clock::now() - std::chrono::hours(1), 5);
  EXPECT_TRUE(sleeps.Sleeps().empty());
}

}  // namespace
}  // namespace zelto_test
