// Part 2.1, steps 4 to 10: the exact bytes of both layouts for a 4 x 3
// image, written out by hand (float bit patterns computed once from the
// formula of step 4 in single precision).
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "le_bytes.h"
#include "mesh_harness.h"

namespace ZeltoTest {
namespace {

// Depth in millimetres; 0 and 9 become 32001, 10 is kept.
//   row 0: 1000 2000    0 1000
//   row 1: 2000 1000 1000    9
//   row 2:   10 1000 2000 1000
const std::vector<int16_t> kDepth4x3 = {1000, 2000, 0,    1000, 2000, 1000,
                                        1000, 9,    10,   1000, 2000, 1000};
// fx 2, fy 4, cx 1.5, cy 1.
const Intrinsics kIntrinsics{2.0f, 4.0f, 1.5f, 1.0f};

// x, y, z of the twelve vertices at level 0, row by row.
LeBytes& Level0Vertices(LeBytes& bytes) {
  return bytes
      .F32Bits({0xBF400000, 0xBE800000, 0x3F800000})   // u0 v0: -0.75 -0.25 1
      .F32Bits({0xBF000000, 0xBF000000, 0x40000000})   // u1 v0: -0.5 -0.5 2
      .F32Bits({0x41000106, 0xC1000106, 0x42000106})   // u2 v0 depth 0: 8.00025 -8.00025 32.001
      .F32Bits({0x3F400000, 0xBE800000, 0x3F800000})   // u3 v0: 0.75 -0.25 1
      .F32Bits({0xBFC00000, 0x00000000, 0x40000000})   // u0 v1: -1.5 0 2
      .F32Bits({0xBE800000, 0x00000000, 0x3F800000})   // u1 v1: -0.25 0 1
      .F32Bits({0x3E800000, 0x00000000, 0x3F800000})   // u2 v1: 0.25 0 1
      .F32Bits({0x41C00189, 0x00000000, 0x42000106})   // u3 v1 depth 9: 24.00075 0 32.001
      .F32Bits({0xBBF5C28F, 0x3B23D70A, 0x3C23D70A})   // u0 v2 depth 10: -0.0075 0.0025 0.01
      .F32Bits({0xBE800000, 0x3E800000, 0x3F800000})   // u1 v2: -0.25 0.25 1
      .F32Bits({0x3F000000, 0x3F000000, 0x40000000})   // u2 v2: 0.5 0.5 2
      .F32Bits({0x3F400000, 0x3E800000, 0x3F800000});  // u3 v2: 0.75 0.25 1
}

// Level 1 samples u 0, 2 and v 0, 2: a 2 x 2 grid.
LeBytes& Level1Vertices(LeBytes& bytes) {
  return bytes
      .F32Bits({0xBF400000, 0xBE800000, 0x3F800000})   // u0 v0
      .F32Bits({0x41000106, 0xC1000106, 0x42000106})   // u2 v0 (depth 0)
      .F32Bits({0xBBF5C28F, 0x3B23D70A, 0x3C23D70A})   // u0 v2 (depth 10)
      .F32Bits({0x3F000000, 0x3F000000, 0x40000000});  // u2 v2
}

// The six cells of the 4 x 3 grid (nx 4), default split b, b+1, b+4, b+1, b+5, b+4.
LeBytes& Level0DefaultSplit(LeBytes& bytes) {
  return bytes.I32s({0, 1, 4, 1, 5, 4})
      .I32s({1, 2, 5, 2, 6, 5})
      .I32s({2, 3, 6, 3, 7, 6})
      .I32s({4, 5, 8, 5, 9, 8})
      .I32s({5, 6, 9, 6, 10, 9})
      .I32s({6, 7, 10, 7, 11, 10});
}

// Reset frame: cells (0, 1) and (1, 2) have dA = 1 and dB of 31.001 and
// 30.001 m: other diagonal b, b+1, b+5, b, b+5, b+4. Cell (1, 0) has dA 1 and
// dB 0.99: neither exceeds the other by 0.05, unchanged. The rest have
// dA >= dB: default.
LeBytes& Level0RefittedSplit(LeBytes& bytes) {
  return bytes.I32s({0, 1, 4, 1, 5, 4})
      .I32s({1, 2, 6, 1, 6, 5})
      .I32s({2, 3, 6, 3, 7, 6})
      .I32s({4, 5, 8, 5, 9, 8})
      .I32s({5, 6, 9, 6, 10, 9})
      .I32s({6, 7, 11, 6, 11, 10});
}

FillResult FillOnce(MeshHarness& harness, int32_t level, int32_t period, bool flat,
                    const Intrinsics& k = kIntrinsics) {
  harness.builder.meshReductionLevel = level;
  harness.builder.resetTrianglePeriod = period;
  harness.flatRawData = flat;
  return harness.Fill(PointCloud(kDepth4x3), 4, 3, k);
}

constexpr int32_t kNeverReset = 0;
constexpr int32_t kAlwaysReset = 1;

TEST(MeshLayoutBytes, FlatLevel0NonResetFrame) {
  MeshHarness harness;
  const FillResult result = FillOnce(harness, 0, kNeverReset, true);
  ASSERT_TRUE(result.status.ok()) << result.status.message();
  LeBytes expected;
  expected.I32(12);
  Level0Vertices(expected).I32(12);
  Level0DefaultSplit(expected).U8(0);
  ASSERT_EQ(expected.size(), 297u);  // 12 x 12 + 12 x 12 + 9
  EXPECT_EQ(result.bytes, expected.bytes());
}

TEST(MeshLayoutBytes, FlatLevel0ResetFrame) {
  MeshHarness harness;
  const FillResult result = FillOnce(harness, 0, kAlwaysReset, true);
  ASSERT_TRUE(result.status.ok()) << result.status.message();
  LeBytes expected;
  expected.I32(12);
  Level0Vertices(expected).I32(12);
  Level0RefittedSplit(expected).U8(1);
  EXPECT_EQ(result.bytes, expected.bytes());
}

TEST(MeshLayoutBytes, FlatLevel1NonResetFrame) {
  MeshHarness harness;
  const FillResult result = FillOnce(harness, 1, kNeverReset, true);
  ASSERT_TRUE(result.status.ok()) << result.status.message();
  LeBytes expected;
  expected.I32(4);
  Level1Vertices(expected).I32(2).I32s({0, 1, 2, 1, 3, 2}).U8(0);
  ASSERT_EQ(expected.size(), 81u);  // 12 x 4 + 12 x 2 + 9
  EXPECT_EQ(result.bytes, expected.bytes());
}

TEST(MeshLayoutBytes, FlatLevel1ResetFrame) {
  MeshHarness harness;
  const FillResult result = FillOnce(harness, 1, kAlwaysReset, true);
  ASSERT_TRUE(result.status.ok()) << result.status.message();
  // dA = |1 - 2| = 1, dB = |32.001 - 0.01| = 31.991: the other diagonal.
  LeBytes expected;
  expected.I32(4);
  Level1Vertices(expected).I32(2).I32s({0, 1, 3, 0, 3, 2}).U8(1);
  EXPECT_EQ(result.bytes, expected.bytes());
}

TEST(MeshLayoutBytes, ReferenceLevel0NonResetFrame) {
  MeshHarness harness;
  const FillResult result = FillOnce(harness, 0, kNeverReset, false);
  ASSERT_TRUE(result.status.ok()) << result.status.message();
  const ZeltoMesh::MeshFrameData& record = harness.builder.first();
  LeBytes expected;
  expected.I32(12)
      .U64(reinterpret_cast<uintptr_t>(record.vertices))
      .I32(12)
      .U64(reinterpret_cast<uintptr_t>(record.triangles))
      .U8(0)
      .U8(0)
      .U8(0)
      .U8(0);
  EXPECT_EQ(result.bytes, expected.bytes());
  LeBytes vertices;
  Level0Vertices(vertices);
  EXPECT_EQ(0, std::memcmp(record.vertices, vertices.bytes().data(), vertices.size()));
  LeBytes triangles;
  Level0DefaultSplit(triangles);
  EXPECT_EQ(0, std::memcmp(record.triangles, triangles.bytes().data(), triangles.size()));
}

TEST(MeshLayoutBytes, ReferenceLevel1ResetFrame) {
  MeshHarness harness;
  const FillResult result = FillOnce(harness, 1, kAlwaysReset, false);
  ASSERT_TRUE(result.status.ok()) << result.status.message();
  const ZeltoMesh::MeshFrameData& record = harness.builder.first();
  LeBytes expected;
  expected.I32(4)
      .U64(reinterpret_cast<uintptr_t>(record.vertices))
      .I32(2)
      .U64(reinterpret_cast<uintptr_t>(record.triangles))
      .U8(1)
      .U8(0)
      .U8(0)
      .U8(0);
  EXPECT_EQ(result.bytes, expected.bytes());
  LeBytes vertices;
  Level1Vertices(vertices);
  EXPECT_EQ(0, std::memcmp(record.vertices, vertices.bytes().data(), vertices.size()));
  const std::vector<int32_t> triangles(record.triangles, record.triangles + 6);
  EXPECT_EQ(triangles, (std::vector<int32_t>{0, 1, 3, 0, 3, 2}));
}

// fx = 0 makes z / fx infinite: x is -inf left of cx, +inf right of it and
// NaN (0 x inf) in the column u = cx = 1. Which NaN the hardware makes is not
// portable (x86-64 and arm64 differ), so those four bytes are checked for
// being a NaN; every other byte is exact.
TEST(MeshLayoutBytes, FlatLevel0ZeroFocalLengthGivesInfinityAndNan) {
  MeshHarness harness;
  const Intrinsics k{0.0f, 4.0f, 1.0f, 1.0f};
  const FillResult result = FillOnce(harness, 0, kAlwaysReset, true, k);
  ASSERT_TRUE(result.status.ok()) << result.status.message();
  constexpr uint32_t kNan = 0x7FC00000;  // placeholder, compared as "is NaN"
  LeBytes expected;
  expected.I32(12)
      .F32Bits({0xFF800000, 0xBE800000, 0x3F800000})  // u0 v0
      .F32Bits({kNan, 0xBF000000, 0x40000000})        // u1 v0
      .F32Bits({0x7F800000, 0xC1000106, 0x42000106})  // u2 v0
      .F32Bits({0x7F800000, 0xBE800000, 0x3F800000})  // u3 v0
      .F32Bits({0xFF800000, 0x00000000, 0x40000000})  // u0 v1
      .F32Bits({kNan, 0x00000000, 0x3F800000})        // u1 v1
      .F32Bits({0x7F800000, 0x00000000, 0x3F800000})  // u2 v1
      .F32Bits({0x7F800000, 0x00000000, 0x42000106})  // u3 v1
      .F32Bits({0xFF800000, 0x3B23D70A, 0x3C23D70A})  // u0 v2
      .F32Bits({kNan, 0x3E800000, 0x3F800000})        // u1 v2
      .F32Bits({0x7F800000, 0x3F000000, 0x40000000})  // u2 v2
      .F32Bits({0x7F800000, 0x3E800000, 0x3F800000})  // u3 v2
      .I32(12);
  // The depths, not x, decide the split: the same cells as with fx 2.
  Level0RefittedSplit(expected).U8(1);
  ASSERT_EQ(result.bytes.size(), expected.size());
  const std::vector<size_t> nanOffsets = {4 + 12 * 1, 4 + 12 * 5, 4 + 12 * 9};
  std::vector<uint8_t> actual = result.bytes;
  for (size_t offset : nanOffsets) {
    uint32_t bits = 0;
    std::memcpy(&bits, actual.data() + offset, sizeof bits);
    EXPECT_EQ(bits & 0x7F800000u, 0x7F800000u) << "offset " << offset;
    EXPECT_NE(bits & 0x007FFFFFu, 0u) << "offset " << offset;
    std::memcpy(actual.data() + offset, &kNan, sizeof kNan);
  }
  EXPECT_EQ(actual, expected.bytes());
}

}  // namespace
}  // namespace ZeltoTest
