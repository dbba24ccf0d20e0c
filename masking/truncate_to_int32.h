// TruncateToInt32: the one float-to-integer conversion of the masking
// arithmetic, defined for every float.
#pragma once

#include <cstdint>
#include <limits>

#include "masking/lanes.h"

namespace Zelto {

// Truncates toward zero, saturates at the signed 32-bit limits and gives 0
// for NaN, for one float or (written out for any machine) four lanes.
// A plain cast is undefined out of range and for NaN, and x86-64 and arm64
// yield different integers for it. Saturating, with NaN as 0 (what arm64's
// conversion does in hardware), makes a frame mask the same points on a
// developer's x86-64 machine as on the device.
template <class F>
IntegerOfT<F> TruncateToInt32(F value) {
  using I = IntegerOfT<F>;
  // 2^31 is the first float above INT32_MAX; -2^31 itself is in range.
  constexpr float kLimit = 2147483648.0f;
  const auto high = value >= kLimit;
  const auto isNan = value != value;
  const F low = Select(value < -kLimit, Splat<F>(-kLimit), value);
  const F inRange = Select(Either(isNan, high), Splat<F>(0.0f), low);
  return Select(high, Splat<I>(std::numeric_limits<int32_t>::max()), TruncateInRange(inRange));
}

// The same for four lanes, in the machine's own conversion where it is
// close: it runs for every point and every mask.
inline IntLanes TruncateToInt32(FloatLanes value) {
#if defined(__SSE2__)
  // x86-64 converts NaN and everything out of range to INT32_MIN: NaN is
  // cleared to 0, and INT32_MIN is flipped to INT32_MAX where the value was
  // 2^31 or more.
  const IntLanes converted = IntLanes(_mm_cvttps_epi32(__m128(value)));
  return (converted & ~(value != value)) ^ (value >= 2147483648.0f);
#elif defined(__aarch64__)
  // arm64's conversion is exactly this one.
  return IntLanes(vcvtq_s32_f32(float32x4_t(value)));
#else
  return TruncateToInt32<FloatLanes>(value);
#endif
}

}  // namespace Zelto
