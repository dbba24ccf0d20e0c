// Zelto::CompareFloat and Zelto::WaitRemainingTime.
#include "component/zelto_time.h"

#include <algorithm>
#include <cmath>

#include "weftcore/osal.h"

namespace Zelto {

namespace {

// 2 to the power -23: the single-precision machine epsilon.
constexpr double kFloatEpsilon = 1.1920928955078125e-7;
constexpr int64_t kNanosecondsPerMillisecond = 1000000;

}  // namespace

bool CompareFloat(float a, float b) {
  // Difference and magnitudes in single precision, where the compared values
  // live; product and comparison in double, so the scaled epsilon itself
  // adds no rounding.
  const float difference = std::fabs(a - b);
  const float larger = std::max(std::fabs(a), std::fabs(b));
  const double scale = std::max(1.0, static_cast<double>(larger));
  return static_cast<double>(difference) < kFloatEpsilon * scale;
}

void WaitRemainingTime(std::chrono::steady_clock::time_point start, int32_t milliseconds) {
  const int64_t elapsedNanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(
                                         std::chrono::steady_clock::now() - start)
                                         .count();
  const int64_t elapsedMilliseconds = elapsedNanoseconds / kNanosecondsPerMillisecond;
  if (elapsedMilliseconds >= milliseconds) return;
  const int64_t remaining = (milliseconds - elapsedMilliseconds) * kNanosecondsPerMillisecond;
  weftcore::osal::OSSleep(static_cast<uint64_t>(remaining));
}

}  // namespace Zelto
