// Checksums of the flat mesh layout of the real frames in examples/redwood,
// shared by every suite that meshes them (builder, simulator, command-line tool)
// and recomputed without the C++ code by tests/mesh/redwood_checksums_check.py.
#pragma once

#include <zlib.h>

#include <cstddef>
#include <cstdint>

namespace ZeltoTest {

inline uint64_t Fnv1a64(const void* data, size_t size) {
  const auto* bytes = static_cast<const uint8_t*>(data);
  uint64_t hash = 14695981039346656037ull;
  for (size_t i = 0; i < size; ++i) hash = (hash ^ bytes[i]) * 1099511628211ull;
  return hash;
}
inline uint32_t Crc32(const void* data, size_t size) {  // zlib's: Python has it at C speed too
  return static_cast<uint32_t>(crc32(0, static_cast<const Bytef*>(data), static_cast<uInt>(size)));
}

// Frame 0 at level 0: 307200 vertices, 612162 triangles, a reset frame (re-fitted
// cells, last byte 1) and one that is not (default split, last byte 0).
constexpr uint64_t kRedwoodFrame0FlatSize = 11032353;
constexpr uint64_t kRedwoodFrame0FlatResetFnv1a64 = 0x56e2b720ec5b930dull;
constexpr uint64_t kRedwoodFrame0FlatNonResetFnv1a64 = 0xa898932290e45762ull;

// CRC-32 of frame f (depth/0000f.png) at levels 0, 2 and 5: [f][level 0, 2, 5][reset].
constexpr uint32_t kRedwoodMeshCrc32[5][3][2] = {
    {{0x00c8942cu, 0x8782dafdu}, {0x46a68d0eu, 0x2314ab0au}, {0xc10b280du, 0x59704d43u}},
    {{0x3eb574e6u, 0x65bc60ebu}, {0x9bfc65f4u, 0x86ee3b7au}, {0xee6ac0fau, 0x3cf607e1u}},
    {{0x8a732ddbu, 0xcdb7fd65u}, {0x25384096u, 0x79985f9du}, {0x65dc60e1u, 0xfd2c8dedu}},
    {{0x6f3e07cfu, 0x4fb0036fu}, {0xb938bd07u, 0x4b2a8a4fu}, {0xb5f70904u, 0x6706cc7fu}},
    {{0x7a57572au, 0x9a4f4a8fu}, {0x143c03f0u, 0x1111fd62u}, {0xa1a18443u, 0x5886cc34u}},
};

}  // namespace ZeltoTest
