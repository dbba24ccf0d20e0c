// The exact bytes both mesh layouts deliver for a 4 x 3 image, written out by hand (float bit
// patterns computed once in single precision), and the channel record that carries them.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "mesh_harness.h"

namespace ZeltoTest {
namespace {

constexpr uint32_t kNan = 0x7FC00000;  // any NaN: which one the hardware makes is not portable

// x, y, z of the 4 x 3 vertices at level 0 with fx 2, fy 4, cx 1.5, cy 1. With fx 0 (and
// cx 1) z / fx is infinite: x is -inf left of u = 1, NaN (0 x inf) at it, +inf right of it.
std::vector<uint32_t> VertexBits(bool zeroFx, std::vector<int> vertices) {
  const uint32_t level0[12][3] = {
      {0xBF400000, 0xBE800000, 0x3F800000}, {0xBF000000, 0xBF000000, 0x40000000},  // -.75 -.25 1
      {0x41000106, 0xC1000106, 0x42000106}, {0x3F400000, 0xBE800000, 0x3F800000},  // depth 0
      {0xBFC00000, 0x00000000, 0x40000000}, {0xBE800000, 0x00000000, 0x3F800000},
      {0x3E800000, 0x00000000, 0x3F800000}, {0x41C00189, 0x00000000, 0x42000106},  // depth 9
      {0xBBF5C28F, 0x3B23D70A, 0x3C23D70A}, {0xBE800000, 0x3E800000, 0x3F800000},  // depth 10: .01
      {0x3F000000, 0x3F000000, 0x40000000}, {0x3F400000, 0x3E800000, 0x3F800000}};
  std::vector<uint32_t> bits;
  for (int n : vertices) {
    const uint32_t x = n % 4 == 0 ? 0xFF800000 : n % 4 == 1 ? kNan : 0x7F800000;
    bits.insert(bits.end(), {zeroFx ? x : level0[n][0], level0[n][1], level0[n][2]});
  }
  return bits;
}
const std::vector<int> kLevel0 = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
const std::vector<int> kLevel1 = {0, 2, 8, 10};  // u 0, 2 of rows 0 and 2
// Six cells of nx 4, each b, b+1, b+4, b+1, b+5, b+4.
const std::vector<int32_t> kDefault = {0, 1, 4, 1, 5, 4, 1, 2, 5, 2, 6, 5, 2,  3,  6, 3, 7,  6,
                                       4, 5, 8, 5, 9, 8, 5, 6, 9, 6, 10, 9, 6, 7, 10, 7, 11, 10};
// Reset: cells (0, 1) and (1, 2) have dA 1 against dB 31.001 and 30.001 m, the other diagonal
// b, b+1, b+5, b, b+5, b+4. Cell (1, 0): dA 1, dB 0.99, within 0.05: default. Others dA >= dB.
const std::vector<int32_t> kRefitted = {0, 1, 4, 1, 5, 4, 1, 2, 6, 1, 6, 5, 2,  3,  6, 3, 7,  6,
                                        4, 5, 8, 5, 9, 8, 5, 6, 9, 6, 10, 9, 6, 7, 11, 6, 11, 10};

TEST(MeshLayout, DeliversTheExactBytesOfBothLayouts) {
  struct Case {
    const char* name;
    int32_t level;
    bool reset, flat, frameRate30, zeroFx;  // frameRate30 chooses the flat layout on its own
    std::vector<int32_t> indices;
  };
  const Case cases[] = {
      {"flat, level 0, not reset", 0, false, true, false, false, kDefault},
      {"flat, level 0, reset", 0, true, true, false, false, kRefitted},
      {"flat at 30 fps, level 1, not reset", 1, false, false, true, false, {0, 1, 2, 1, 3, 2}},
      {"flat, level 1, reset: dA 1, dB 31.991", 1, true, true, false, false, {0, 1, 3, 0, 3, 2}},
      {"reference, level 0, not reset", 0, false, false, false, false, kDefault},
      {"reference, level 1, reset", 1, true, false, false, false, {0, 1, 3, 0, 3, 2}},
      {"flat, fx 0: the depths still decide the split", 0, true, true, false, true, kRefitted},
  };
  const std::vector<int16_t> points =  // millimetres; 0 and 9 become 32001, 10 is kept
      PointCloud({1000, 2000, 0, 1000, 2000, 1000, 1000, 9, 10, 1000, 2000, 1000});
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    MeshHarness harness;
    harness.builder.meshReductionLevel = row.level;
    harness.builder.resetTrianglePeriod = row.reset ? 1 : 0;
    harness.flatRawData = row.flat;
    harness.frameRate30 = row.frameRate30;
    if (row.zeroFx) harness.intrinsics = {0.0f, 4.0f, 1.0f, 1.0f};
    FillResult result = harness.Fill(points.data(), 4, 3);
    ASSERT_EQ(result.channelCount, 1u) << result.status.message();
    EXPECT_EQ(result.channel.channelId, 0u);
    EXPECT_EQ(result.channel.offset, 0u);
    EXPECT_EQ(result.channel.type, "kRawDataTypeMesh");
    EXPECT_EQ(result.channel.capturedTimestamp, 0u);
    EXPECT_EQ(harness.allocator.live, 0);
    const std::vector<uint32_t> vertices = VertexBits(row.zeroFx, row.level ? kLevel1 : kLevel0);
    ASSERT_GE(result.flat.size(), 4 * vertices.size() + 4);
    zelto_test::LeBytes expected;
    expected.I32(static_cast<int32_t>(vertices.size() / 3));
    for (size_t i = 0; i < vertices.size(); ++i) {
      expected.U32(vertices[i]);
      const size_t at = 4 + 4 * i;
      if (std::isnan(FieldOf<float>(result.flat, at))) std::memcpy(&result.flat[at], &kNan, 4);
    }
    expected.I32(static_cast<int32_t>(row.indices.size() / 3));
    for (int32_t index : row.indices) expected.I32(index);
    EXPECT_EQ(zelto_test::Hex(result.flat), zelto_test::Hex(expected.U8(row.reset).bytes()));
    if (!row.flat && !row.frameRate30) {  // the record: counts, addresses, reset flag, padding
      ASSERT_EQ(result.bytes.size(), 28u);
      EXPECT_EQ(Bytes(result.bytes.begin() + 25, result.bytes.end()), Bytes(3, 0));
    }
  }
}

}  // namespace
}  // namespace ZeltoTest
