// Four-lane int32 and float32 vectors (GCC/Clang vector extensions): SSE2 on
// x86-64, NEON on arm64, from the same portable source. Lane arithmetic is
// IEEE single precision exactly as in scalar code.
#pragma once

#include <cstdint>
#include <cstring>

namespace ZeltoMesh {

using Float4 = float __attribute__((vector_size(16)));
using Int4 = int32_t __attribute__((vector_size(16)));

// The bits of one vector as another of the same size.
template <typename To, typename From>
To BitCast(From value) {
  static_assert(sizeof(To) == sizeof(From), "same size");
  To result;
  std::memcpy(&result, &value, sizeof result);
  return result;
}

// Unaligned load.
inline Float4 LoadFloat4(const float* source) {
  Float4 value;
  std::memcpy(&value, source, sizeof value);
  return value;
}

inline Float4 Broadcast(float value) { return Float4{value, value, value, value}; }
inline Int4 Broadcast(int32_t value) { return Int4{value, value, value, value}; }

// Unaligned stores. The 4-byte-aligned, may_alias twins of the vector types
// compile to one unaligned vector store (a memcpy of a vector did not always).
using UnalignedFloat4 = float __attribute__((vector_size(16), aligned(4), may_alias));
using UnalignedInt4 = int32_t __attribute__((vector_size(16), aligned(4), may_alias));
inline void Store(float* target, Float4 value) {
  *reinterpret_cast<UnalignedFloat4*>(target) = value;
}
inline void Store(int32_t* target, Int4 value) {
  *reinterpret_cast<UnalignedInt4*>(target) = value;
}

// Lanes where `mask` is all ones take `ifSet`, the others `ifClear`.
inline Int4 Select(Int4 mask, Int4 ifSet, Int4 ifClear) {
  return (ifSet & mask) | (ifClear & ~mask);
}

// x, y, z of four points as 12 interleaved floats x0 y0 z0 x1 ... z3.
inline void StoreInterleaved3(float* target, Float4 x, Float4 y, Float4 z) {
  const Float4 x0y0x1y1 = __builtin_shufflevector(x, y, 0, 4, 1, 5);
  const Float4 y1z1y2z2 = __builtin_shufflevector(y, z, 1, 5, 2, 6);
  const Float4 x3y3x3y3 = __builtin_shufflevector(x, y, 3, 7, 3, 7);
  Store(target + 0, __builtin_shufflevector(x0y0x1y1, z, 0, 1, 4, 2));  // x0 y0 z0 x1
  Store(target + 4, __builtin_shufflevector(y1z1y2z2, x, 0, 1, 6, 2));  // y1 z1 x2 y2
  Store(target + 8, __builtin_shufflevector(z, x3y3x3y3, 2, 4, 5, 3));  // z2 x3 y3 z3
}

}  // namespace ZeltoMesh
