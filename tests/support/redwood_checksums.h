// FNV-1a 64-bit checksums of the flat layout (Part 2.1) of the first redwood
// depth frame (examples/redwood/depth/00000.png, converted by
// support/redwood_frame.h) at reduction level 0, for every suite that
// produces that mesh: the builder's unit tests, the simulator and the
// command-line tool's end-to-end test.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ZeltoTest {

constexpr uint64_t kFnv1a64Offset = 14695981039346656037ull;
constexpr uint64_t kFnv1a64Prime = 1099511628211ull;

inline uint64_t Fnv1a64(const void* data, size_t size) {
  const auto* bytes = static_cast<const unsigned char*>(data);
  uint64_t hash = kFnv1a64Offset;
  for (size_t i = 0; i < size; ++i) {
    hash ^= bytes[i];
    hash *= kFnv1a64Prime;
  }
  return hash;
}

// Cross-checked by tests/mesh/redwood_checksums_check.py, an independent
// Python implementation (zlib PNG decoding, float32 through struct).
// 640 x 480, fx = fy = 525, cx = 319.5, cy = 239.5: 307200 vertices,
// 612162 triangles, 11032353 bytes.
constexpr uint64_t kRedwoodFrame0FlatSize = 11032353;
// A reset frame (re-fitted split, last byte 1): period 1, first call.
constexpr uint64_t kRedwoodFrame0FlatResetFnv1a64 = 0x56e2b720ec5b930dull;
// A frame that is not a reset frame (default split, last byte 0): period
// 1000, first call.
constexpr uint64_t kRedwoodFrame0FlatNonResetFnv1a64 = 0xa898932290e45762ull;

}  // namespace ZeltoTest
