// Part 2.1, steps 8 and 9, with deviations (2) and (3) of
// docs/deviations.md: alternating records, array reuse, retired arrays
// that stay valid until ReleaseArrays, and a ReleaseArrays that frees once.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "flat_reader.h"
#include "mesh_harness.h"

namespace ZeltoTest {
namespace {

TEST(MeshBuilderBuffers, TheFirstCallWritesTheFirstRecordAndCallsAlternate) {
  MeshHarness harness;
  const std::vector<int16_t> points = ConstantPointCloud(3, 3, 1000);
  harness.Fill(points, 3, 3);
  EXPECT_EQ(harness.builder.first().vertexCount, 9);
  EXPECT_EQ(harness.builder.second().vertexCount, 0);
  EXPECT_EQ(VerticesOf(harness.builder.second()), nullptr);
  harness.Fill(points, 3, 3);
  EXPECT_EQ(harness.builder.second().vertexCount, 9);
  EXPECT_NE(VerticesOf(harness.builder.second()), nullptr);
}

TEST(MeshBuilderBuffers, UnchangedCountsReuseBothRecordsArrays) {
  MeshHarness harness;
  const std::vector<int16_t> points = ConstantPointCloud(5, 4, 1200);
  harness.Fill(points, 5, 4);
  harness.Fill(points, 5, 4);
  const ZeltoMesh::MeshFrameData first = harness.builder.first();
  const ZeltoMesh::MeshFrameData second = harness.builder.second();
  for (int call = 0; call < 6; ++call) harness.Fill(points, 5, 4);
  EXPECT_EQ(VerticesOf(harness.builder.first()), VerticesOf(first));
  EXPECT_EQ(TrianglesOf(harness.builder.first()), TrianglesOf(first));
  EXPECT_EQ(VerticesOf(harness.builder.second()), VerticesOf(second));
  EXPECT_EQ(TrianglesOf(harness.builder.second()), TrianglesOf(second));
}

TEST(MeshBuilderBuffers, ASizeChangeKeepsTheOldArraysValidUntilReleaseArrays) {
  MeshHarness harness;
  harness.Fill(ConstantPointCloud(3, 3, 1000), 3, 3);
  const ZeltoMesh::MeshFrameData old = harness.builder.first();
  harness.Fill(ConstantPointCloud(3, 3, 1000), 3, 3);
  // The first record comes round with other counts: new arrays.
  harness.Fill(ConstantPointCloud(4, 4, 2000), 4, 4);
  const ZeltoMesh::MeshFrameData resized = harness.builder.first();
  EXPECT_EQ(resized.vertexCount, 16);
  EXPECT_NE(VerticesOf(resized), VerticesOf(old));
  EXPECT_NE(TrianglesOf(resized), TrianglesOf(old));
  // A reference frame handed out earlier can still read the old mesh
  // (AddressSanitizer would report a use after free here).
  for (int i = 0; i < 9; ++i) EXPECT_EQ(old.vertices[3 * i + 2], 1.0f);
  EXPECT_EQ(std::vector<int32_t>(old.triangles, old.triangles + 6),
            (std::vector<int32_t>{0, 1, 3, 1, 4, 3}));
}

TEST(MeshBuilderBuffers, ReleaseArraysNullsAllFourPointersAndASecondCallFreesNothing) {
  MeshHarness harness;
  const std::vector<int16_t> points = ConstantPointCloud(3, 3, 1000);
  harness.Fill(points, 3, 3);
  harness.Fill(points, 3, 3);
  harness.Fill(ConstantPointCloud(2, 2, 1000), 2, 2);  // retires the first record's arrays
  harness.builder.ReleaseArrays();
  EXPECT_EQ(VerticesOf(harness.builder.first()), nullptr);
  EXPECT_EQ(TrianglesOf(harness.builder.first()), nullptr);
  EXPECT_EQ(VerticesOf(harness.builder.second()), nullptr);
  EXPECT_EQ(TrianglesOf(harness.builder.second()), nullptr);
  harness.builder.ReleaseArrays();  // a second Close: no double free
  // The counts stay; the next call allocates because the pointers are null.
  EXPECT_EQ(harness.builder.second().vertexCount, 9);
  const FillResult again = harness.Fill(points, 3, 3);
  ASSERT_TRUE(again.status.ok());
  EXPECT_NE(VerticesOf(harness.builder.second()), nullptr);
  EXPECT_EQ(again.bytes, ReferenceBytes(harness.builder.second()));
}

// The builder does not rewrite indices its record already holds; these
// cases prove that the delivered indices are still the spec's.
std::vector<int32_t> RecordIndices(const ZeltoMesh::MeshFrameData& record) {
  return std::vector<int32_t>(record.triangles, record.triangles + 3 * record.triangleCount);
}

TEST(MeshBuilderBuffers, ANonResetFrameAfterAResetFrameInTheSameRecordGoesBackToTheDefaultSplit) {
  MeshHarness harness;
  const std::vector<int16_t> points = PointCloud({1000, 2000, 1000, 1000});  // other diagonal
  harness.builder.resetTrianglePeriod = 2;
  harness.Fill(points, 2, 2);  // frame 1, first record, not reset
  harness.Fill(points, 2, 2);  // frame 2, second record, reset
  EXPECT_EQ(RecordIndices(harness.builder.second()), (std::vector<int32_t>{0, 1, 3, 0, 3, 2}));
  harness.builder.resetTrianglePeriod = 3;
  harness.Fill(points, 2, 2);  // frame 3, first record, reset
  EXPECT_EQ(RecordIndices(harness.builder.first()), (std::vector<int32_t>{0, 1, 3, 0, 3, 2}));
  harness.Fill(points, 2, 2);  // frame 4, second record, not reset
  EXPECT_EQ(RecordIndices(harness.builder.second()), (std::vector<int32_t>{0, 1, 2, 1, 3, 2}));
  harness.flatRawData = true;
  const FillResult flat = harness.Fill(points, 2, 2);  // frame 5, first record, not reset
  EXPECT_EQ(FlatView{flat.bytes}.indices(), (std::vector<int32_t>{0, 1, 2, 1, 3, 2}));
  EXPECT_EQ(RecordIndices(harness.builder.first()), (std::vector<int32_t>{0, 1, 2, 1, 3, 2}));
}

TEST(MeshBuilderBuffers, AGridOfOtherDimensionsWithTheSameCountsGetsItsOwnSplit) {
  MeshHarness harness;
  harness.builder.resetTrianglePeriod = 0;
  harness.Fill(ConstantPointCloud(4, 3, 1000), 4, 3);  // first record: nx 4, 12 triangles
  harness.Fill(ConstantPointCloud(4, 3, 1000), 4, 3);
  const int32_t* triangles = harness.builder.first().triangles;
  harness.Fill(ConstantPointCloud(3, 4, 1000), 3, 4);  // first record again: nx 3, 12 triangles
  ASSERT_EQ(TrianglesOf(harness.builder.first()), triangles);  // same count: reused
  EXPECT_EQ(RecordIndices(harness.builder.first()),
            (std::vector<int32_t>{0, 1, 3, 1, 4, 3, 1, 2, 4, 2, 5, 4, 3, 4, 6, 4, 7, 6,
                                  4, 5, 7, 5, 8, 7, 6, 7, 9, 7, 10, 9, 7, 8, 10, 8, 11, 10}));
}

TEST(MeshBuilderBuffers, FlatFramesIntoAMisalignedBlockAreTheSameBytes) {
  // A block at an odd address cannot take float stores: the builder copies
  // through OSMemcpy instead. The bytes must not differ.
  std::vector<int16_t> depth;
  for (int i = 0; i < 7 * 5; ++i) depth.push_back(static_cast<int16_t>(900 + 37 * (i % 11)));
  const std::vector<int16_t> points = PointCloud(depth);
  for (int32_t period : {0, 1}) {
    MeshHarness aligned;
    MeshHarness misaligned;
    aligned.flatRawData = misaligned.flatRawData = true;
    misaligned.allocator.misalignment = 1;
    aligned.builder.resetTrianglePeriod = misaligned.builder.resetTrianglePeriod = period;
    for (int call = 0; call < 3; ++call) {
      const FillResult expected = aligned.Fill(points, 7, 5);
      const FillResult actual = misaligned.Fill(points, 7, 5);
      ASSERT_TRUE(actual.status.ok());
      EXPECT_EQ(actual.bytes, expected.bytes) << "period " << period << " call " << call;
    }
  }
}

}  // namespace
}  // namespace ZeltoTest
