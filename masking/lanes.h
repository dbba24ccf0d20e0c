// The vocabulary the masking arithmetic is written in, for one point (float,
// bool) and for four points at once (FloatLanes, IntLanes), so that one
// template holds the arithmetic for both and a point is masked alike in
// either. The four-lane types are compiler vector types: x86-64 runs them as
// SSE2 and arm64 as NEON, lane by lane with IEEE single-precision operations
// in the order they are written, which the scalar instructions also do.
#pragma once

#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#elif defined(__aarch64__)
#include <arm_neon.h>
#endif

namespace Zelto {

constexpr int kLaneCount = 4;
using FloatLanes = float __attribute__((vector_size(4 * kLaneCount)));
// Also what a comparison of FloatLanes yields: -1 in the lanes where it holds.
using IntLanes = int32_t __attribute__((vector_size(4 * kLaneCount)));
using UintLanes = uint32_t __attribute__((vector_size(4 * kLaneCount)));

// The integer type that goes with a float type.
template <class F>
struct IntegerOf;
template <>
struct IntegerOf<float> {
  using type = int32_t;
};
template <>
struct IntegerOf<FloatLanes> {
  using type = IntLanes;
};
template <class F>
using IntegerOfT = typename IntegerOf<F>::type;

// `value` in every lane.
template <class T>
constexpr T Splat(float value) {
  return T{value};
}
template <>
constexpr FloatLanes Splat<FloatLanes>(float value) {
  return FloatLanes{value, value, value, value};
}
template <class T>
constexpr T Splat(int32_t value) {
  return T{value};
}
template <>
constexpr IntLanes Splat<IntLanes>(int32_t value) {
  return IntLanes{value, value, value, value};
}

// Where `take` holds, `a`; elsewhere `b`.
inline float Select(bool take, float a, float b) { return take ? a : b; }
inline int32_t Select(bool take, int32_t a, int32_t b) { return take ? a : b; }
inline IntLanes Select(IntLanes take, IntLanes a, IntLanes b) { return (a & take) | (b & ~take); }
inline FloatLanes Select(IntLanes take, FloatLanes a, FloatLanes b) {
  // Same-size vector casts reinterpret the bits.
  return FloatLanes(Select(take, IntLanes(a), IntLanes(b)));
}

// Where either condition holds.
inline bool Either(bool a, bool b) { return a || b; }
inline IntLanes Either(IntLanes a, IntLanes b) { return a | b; }

// Exact: every int32 a float conversion rounds to nearest, as one point's
// conversion does.
inline float ToFloat(int32_t value) { return static_cast<float>(value); }
inline FloatLanes ToFloat(IntLanes value) { return __builtin_convertvector(value, FloatLanes); }

// Only for values already in [-2^31, 2^31): the conversion is undefined
// outside that range.
inline int32_t TruncateInRange(float value) { return static_cast<int32_t>(value); }
inline IntLanes TruncateInRange(FloatLanes value) {
  return __builtin_convertvector(value, IntLanes);
}

// Bit k set where lane k of `condition` holds (is -1).
inline unsigned LaneBits(IntLanes condition) {
#if defined(__SSE2__)
  return static_cast<unsigned>(_mm_movemask_ps(__m128(condition)));
#elif defined(__aarch64__)
  const UintLanes bit = {1, 2, 4, 8};
  return vaddvq_u32(uint32x4_t(UintLanes(condition) & bit));
#else
  unsigned bits = 0;
  for (int lane = 0; lane < kLaneCount; ++lane) bits |= (condition[lane] & 1u) << lane;
  return bits;
#endif
}

}  // namespace Zelto
