// The "Edge cases worth testing" of Part 2.1 and the builder's edge cases of
// Part 2.2, one test each, named after the bullet.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <vector>

#include "component/zelto_mesh_constants.h"
#include "flat_reader.h"
#include "mesh_harness.h"

namespace ZeltoTest {
namespace {

using Bits3 = std::array<uint32_t, 3>;

TEST(MeshBuilderEdgeCases, Width640Height480Level0Has307200Vertices612162TrianglesFlatSize11032353) {
  MeshHarness harness;
  harness.flatRawData = true;
  const std::vector<int16_t> points = ConstantPointCloud(640, 480, 1000);
  const FillResult result = harness.Fill(points, 640, 480, {525.0f, 525.0f, 319.5f, 239.5f});
  ASSERT_TRUE(result.status.ok()) << result.status.message();
  ASSERT_EQ(result.channelCount, 1u);
  EXPECT_EQ(result.channel.size, 11032353u);
  ASSERT_EQ(result.bytes.size(), 11032353u);
  const FlatView flat{result.bytes};
  EXPECT_EQ(flat.vertexCount(), 307200);
  EXPECT_EQ(flat.triangleCount(), 612162);  // 2 x 639 x 479
  EXPECT_EQ(harness.builder.first().vertexCount, 307200);
  EXPECT_EQ(harness.builder.first().triangleCount, 612162);
}

TEST(MeshBuilderEdgeCases, Width640Level2HasNx214AndTheLastColumnSamplesU639) {
  MeshHarness harness;
  harness.flatRawData = true;
  harness.builder.meshReductionLevel = 2;
  std::vector<int16_t> depth(640 * 4, 1000);
  depth[636] = 1500;  // row 0, u 636: grid column 212
  depth[639] = 2000;  // row 0, u 639: grid column 213, the last
  const FillResult result = harness.Fill(PointCloud(depth), 640, 4, {500.0f, 500.0f, 320.0f, 2.0f});
  ASSERT_TRUE(result.status.ok()) << result.status.message();
  const FlatView flat{result.bytes};
  EXPECT_EQ(flat.vertexCount(), 214 * 2);  // nx = ceil(640 / 3), ny = ceil(4 / 3)
  EXPECT_EQ(flat.triangleCount(), 2 * 213 * 1);
  // ((639 - 320) x (2000 / 500)) / 1000 = 1.276, ((0 - 2) x 4) / 1000 = -0.008, 2.
  EXPECT_EQ(flat.vertexBits(213), (Bits3{0x3FA353F8, 0xBC03126F, 0x40000000}));
  // ((636 - 320) x 3) / 1000 = 0.948, ((0 - 2) x 3) / 1000 = -0.006, 1.5.
  EXPECT_EQ(flat.vertexBits(212), (Bits3{0x3F72B021, 0xBBC49BA6, 0x3FC00000}));
}

TEST(MeshBuilderEdgeCases, ReductionLevelGivingNx1HasNoTrianglesAndFlatSize12VPlus9) {
  MeshHarness harness;
  harness.flatRawData = true;
  harness.builder.meshReductionLevel = 3;  // step 4
  // 3 x 6: nx = ceil(0.75) = 1, ny = ceil(1.5) = 2.
  const FillResult result = harness.Fill(ConstantPointCloud(3, 6, 1000), 3, 6);
  ASSERT_TRUE(result.status.ok()) << result.status.message();
  const FlatView flat{result.bytes};
  EXPECT_EQ(flat.vertexCount(), 2);
  EXPECT_EQ(flat.triangleCount(), 0);
  EXPECT_EQ(result.bytes.size(), 12u * 2 + 9);
  EXPECT_EQ(harness.builder.first().triangleCount, 0);
  // 6 x 3 the other way round: nx = 2, ny = 1.
  const FillResult wide = harness.Fill(ConstantPointCloud(6, 3, 1000), 6, 3);
  const FlatView wideFlat{wide.bytes};
  EXPECT_EQ(wideFlat.vertexCount(), 2);
  EXPECT_EQ(wideFlat.triangleCount(), 0);
  EXPECT_EQ(wide.bytes.size(), 12u * 2 + 9);
}

TEST(MeshBuilderEdgeCases, DepthZeroMinus5And9GiveZ32001mAndDepth10IsKept) {
  MeshHarness harness;
  harness.flatRawData = true;
  const FillResult result =
      harness.Fill(PointCloud({0, -5, 9, 10}), 4, 1, {1.0f, 1.0f, 0.0f, 0.0f});
  ASSERT_TRUE(result.status.ok()) << result.status.message();
  const FlatView flat{result.bytes};
  constexpr uint32_t k32001mm = 0x42000106;  // 32001 / 1000 = 32.001f
  constexpr uint32_t k10mm = 0x3C23D70A;     // 10 / 1000 = 0.01f
  EXPECT_EQ(flat.vertexBits(0)[2], k32001mm);
  EXPECT_EQ(flat.vertexBits(1), (Bits3{k32001mm, 0x00000000, k32001mm}));  // x = (1 x 32001) / 1000
  EXPECT_EQ(flat.vertexBits(2)[2], k32001mm);
  EXPECT_EQ(flat.vertexBits(3)[2], k10mm);
}

std::vector<int> ResetFramesAmongFirstNine(int32_t period) {
  MeshHarness harness;
  harness.builder.resetTrianglePeriod = period;
  std::vector<int> resetFrames;
  const std::vector<int16_t> points = ConstantPointCloud(2, 2, 1000);
  for (int frame = 1; frame <= 9; ++frame) {
    const FillResult result = harness.Fill(points, 2, 2);
    EXPECT_TRUE(result.status.ok());
    const ZeltoMesh::MeshFrameData& record =
        frame % 2 == 1 ? harness.builder.first() : harness.builder.second();
    EXPECT_EQ(result.bytes.at(24), record.resetTriangle);
    if (record.resetTriangle == 1) resetFrames.push_back(frame);
  }
  EXPECT_EQ(harness.builder.frameCounter(), 9);
  return resetFrames;
}

TEST(MeshBuilderEdgeCases, Period1MakesEveryFrameAResetFrame) {
  EXPECT_EQ(ResetFramesAmongFirstNine(1), (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

TEST(MeshBuilderEdgeCases, Period3MakesFrames3_6_9ResetFrames) {
  EXPECT_EQ(ResetFramesAmongFirstNine(3), (std::vector<int>{3, 6, 9}));
}

TEST(MeshBuilderEdgeCases, Period0MakesNoResetFrame) {
  EXPECT_EQ(ResetFramesAmongFirstNine(0), (std::vector<int>{}));
}

TEST(MeshBuilderEdgeCases, TheDefaultPeriod4MakesFrames4And8ResetFrames) {
  EXPECT_EQ(ResetFramesAmongFirstNine(4), (std::vector<int>{4, 8}));
}

// One 2 x 2 cell (b = 0, nx = 2) on a reset frame, depths in millimetres
// top-left, top-right, bottom-left, bottom-right.
std::vector<int32_t> CellIndices(int16_t topLeft, int16_t topRight, int16_t bottomLeft,
                                 int16_t bottomRight, int32_t period = 1) {
  MeshHarness harness;
  harness.flatRawData = true;
  harness.builder.resetTrianglePeriod = period;
  const FillResult result =
      harness.Fill(PointCloud({topLeft, topRight, bottomLeft, bottomRight}), 2, 2);
  EXPECT_TRUE(result.status.ok());
  return FlatView{result.bytes}.indices();
}

TEST(MeshBuilderEdgeCases, CellWithBottomRight2mKeepsTheDefaultSplit) {
  // dA = |1 - 2| = 1, dB = |1 - 1| = 0.
  EXPECT_EQ(CellIndices(1000, 1000, 1000, 2000), (std::vector<int32_t>{0, 1, 2, 1, 3, 2}));
}

TEST(MeshBuilderEdgeCases, CellWithTopRight2mTakesTheOtherDiagonal) {
  // dA = |1 - 1| = 0, dB = |2 - 1| = 1: (b, b+1, b+nx+1), (b, b+nx+1, b+nx).
  EXPECT_EQ(CellIndices(1000, 2000, 1000, 1000), (std::vector<int32_t>{0, 1, 3, 0, 3, 2}));
  // The same depths on a frame that is not a reset frame: the default split.
  EXPECT_EQ(CellIndices(1000, 2000, 1000, 1000, 0), (std::vector<int32_t>{0, 1, 2, 1, 3, 2}));
}

TEST(MeshBuilderEdgeCases, CellWhereNeitherJumpExceedsTheOtherBy5cmIsUnchanged) {
  // dA = 0, dB = 0.04: not more than 0.05 apart.
  EXPECT_EQ(CellIndices(1000, 1040, 1000, 1000), (std::vector<int32_t>{0, 1, 2, 1, 3, 2}));
  // dA = 0, dB = 0.06: more than 0.05 apart, the other diagonal.
  EXPECT_EQ(CellIndices(1000, 1060, 1000, 1000), (std::vector<int32_t>{0, 1, 3, 0, 3, 2}));
}

TEST(MeshBuilderEdgeCases, TwoSuccessiveCallsReturnRecordsAtAlternatingAddressesAndReuseArrays) {
  MeshHarness harness;
  const std::vector<int16_t> points = ConstantPointCloud(4, 3, 1000);
  const FillResult first = harness.Fill(points, 4, 3);
  const ZeltoMesh::MeshFrameData firstRecord = harness.builder.first();
  const FillResult second = harness.Fill(points, 4, 3);
  const ZeltoMesh::MeshFrameData secondRecord = harness.builder.second();
  const FillResult third = harness.Fill(points, 4, 3);
  ASSERT_TRUE(first.status.ok() && second.status.ok() && third.status.ok());
  EXPECT_EQ(first.bytes, ReferenceBytes(firstRecord));
  EXPECT_EQ(second.bytes, ReferenceBytes(secondRecord));
  EXPECT_NE(VerticesOf(firstRecord), VerticesOf(secondRecord));
  EXPECT_NE(TrianglesOf(firstRecord), TrianglesOf(secondRecord));
  // The third call comes back to the first record and its arrays.
  EXPECT_EQ(VerticesOf(harness.builder.first()), VerticesOf(firstRecord));
  EXPECT_EQ(TrianglesOf(harness.builder.first()), TrianglesOf(firstRecord));
  EXPECT_EQ(third.bytes, ReferenceBytes(harness.builder.first()));
}

// Part 2.2.
TEST(MeshBuilderEdgeCases, ReductionLevelAtLeastAsLargeAsTheImageGivesASingleVertexAndNoTriangles) {
  for (int32_t level : {639, 640, 1000, 2147483646}) {
    MeshHarness harness;
    harness.flatRawData = true;
    harness.builder.meshReductionLevel = level;
    const FillResult result = harness.Fill(ConstantPointCloud(640, 480, 1500), 640, 480,
                                           {525.0f, 525.0f, 319.5f, 239.5f});
    ASSERT_TRUE(result.status.ok()) << level;
    const FlatView flat{result.bytes};
    EXPECT_EQ(flat.vertexCount(), 1) << level;
    EXPECT_EQ(flat.triangleCount(), 0) << level;
    EXPECT_EQ(result.bytes.size(), 21u) << level;
    // Pixel (0, 0): ((0 - 319.5) x (1500 / 525)) / 1000, ((0 - 239.5) x (1500 / 525)) / 1000, 1.5.
    EXPECT_EQ(flat.vertexBits(0), (Bits3{0xBF69B102, 0xBF2F2D59, 0x3FC00000})) << level;
  }
}

TEST(MeshBuilderEdgeCases, Level2147483647WrapsTheStepAndGivesAnEmptyMesh) {
  MeshHarness harness;
  harness.flatRawData = true;
  harness.builder.meshReductionLevel = 2147483647;
  harness.builder.resetTrianglePeriod = 1;
  const FillResult result = harness.Fill(ConstantPointCloud(640, 480, 1500), 640, 480);
  ASSERT_TRUE(result.status.ok()) << result.status.message();
  // vertexCount 0, triangleCount 0, reset flag 1: nine bytes.
  EXPECT_EQ(result.bytes, (std::vector<uint8_t>{0, 0, 0, 0, 0, 0, 0, 0, 1}));
  EXPECT_EQ(harness.builder.first().vertexCount, 0);
  EXPECT_EQ(harness.builder.first().triangleCount, 0);
}

TEST(MeshBuilderEdgeCases, WidthOrHeightBelow1WritesNoVertexButStillAppendsAChannel) {
  MeshHarness harness;
  harness.flatRawData = true;
  const int16_t unused = 0;
  // Width 0: nx = 0, an empty mesh.
  const FillResult empty = harness.FillFrom(&unused, 0, 3);
  ASSERT_TRUE(empty.status.ok()) << empty.status.message();
  EXPECT_EQ(empty.bytes, (std::vector<uint8_t>{0, 0, 0, 0, 0, 0, 0, 0, 0}));
  // Width -2, height -3: nx = -2, ny = -3, six vertices none of which is
  // sampled (they go out as zeros), no triangles.
  const FillResult negative = harness.FillFrom(&unused, -2, -3);
  ASSERT_TRUE(negative.status.ok()) << negative.status.message();
  std::vector<uint8_t> expected(4 + 72 + 4 + 1, 0);
  expected[0] = 6;
  EXPECT_EQ(negative.bytes, expected);
}

TEST(MeshBuilderEdgeCases, TheChannelIsChannel0OfTypeKRawDataTypeMeshAtOffset0WithTimestamp0) {
  MeshHarness harness;
  const FillResult result = harness.Fill(ConstantPointCloud(2, 2, 1000), 2, 2);
  ASSERT_TRUE(result.status.ok());
  ASSERT_EQ(result.channelCount, 1u);
  EXPECT_EQ(result.channel.channelId, 0u);
  EXPECT_EQ(result.channel.size, 28u);
  EXPECT_EQ(result.channel.offset, 0u);
  EXPECT_EQ(result.channel.type, "kRawDataTypeMesh");
  EXPECT_EQ(result.channel.capturedTimestamp, 0u);
  EXPECT_EQ(harness.allocator.live, 0);
}

TEST(MeshBuilderEdgeCases, FrameRate30AloneChoosesTheFlatLayout) {
  MeshHarness harness;
  harness.frameRate30 = true;
  const FillResult result = harness.Fill(ConstantPointCloud(2, 2, 1000), 2, 2);
  ASSERT_TRUE(result.status.ok());
  EXPECT_EQ(result.bytes.size(), 12u * 4 + 12u * 2 + 9);
}

}  // namespace
}  // namespace ZeltoTest
