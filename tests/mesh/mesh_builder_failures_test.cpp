// Part 2.1, Failure handling, and the safe-thing deviations of
// docs/deviations.md: every failure is a status, never an exception,
// and a failed call appends no channel and leaks no frame memory.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "mesh_harness.h"
#include "weftcore/host/heap_allocator.h"

namespace ZeltoTest {
namespace {

void ExpectFailure(const FillResult& result, weftcore::Cause cause, const std::string& message) {
  EXPECT_TRUE(result.status.IsError());
  EXPECT_EQ(result.status.level(), weftcore::kLevelError);
  EXPECT_EQ(result.status.cause(), cause);
  EXPECT_EQ(result.status.message(), message);
  EXPECT_EQ(result.status.block(), "ZeltoMesh");
  EXPECT_EQ(result.channelCount, 0u);
}

TEST(MeshBuilderFailures, NullPointCloudFailsWithCause2AndLeavesTheCounter) {
  MeshHarness harness;
  const FillResult result = harness.FillFrom(nullptr, 4, 3);
  ExpectFailure(result, weftcore::kCauseInvalidArgument, "point cloud is null.");
  EXPECT_EQ(harness.builder.frameCounter(), 0);
  EXPECT_EQ(harness.allocator.allocations, 0);
  // The toggle did not move either: the next call still writes the first record.
  harness.Fill(ConstantPointCloud(2, 2, 1000), 2, 2);
  EXPECT_NE(VerticesOf(harness.builder.first()), nullptr);
  EXPECT_EQ(VerticesOf(harness.builder.second()), nullptr);
}

TEST(MeshBuilderFailures, NullFrameOrAllocatorFailsWithNullPointer) {
  ZeltoMesh::MeshBuilder builder;
  std::mutex flagsMutex;
  std::atomic<bool> frameRate30{false};
  TestAllocator allocator;
  weftcore::FrameInfo frame;
  const std::vector<int16_t> points = ConstantPointCloud(2, 2, 1000);
  const weftcore::Status noFrame = builder.Fill(nullptr, &allocator, points.data(), 2, 2, 1, 1, 0,
                                                0, flagsMutex, false, frameRate30);
  const weftcore::Status noAllocator = builder.Fill(&frame, nullptr, points.data(), 2, 2, 1, 1, 0,
                                                    0, flagsMutex, false, frameRate30);
  for (const weftcore::Status& status : {noFrame, noAllocator}) {
    EXPECT_EQ(status.cause(), weftcore::kCauseInvalidArgument);
    EXPECT_EQ(status.message(), "Null pointer");
    EXPECT_EQ(status.block(), "ZeltoMesh");
  }
  EXPECT_EQ(builder.frameCounter(), 0);
  EXPECT_TRUE(frame.channels.empty());
}

TEST(MeshBuilderFailures, AllocatorFailureEndsTheCallWithThatStatusAndATrace) {
  MeshHarness harness;
  harness.allocator.failWith =
      weftcore::Status(weftcore::kLevelError, weftcore::kCauseOutOfMemory, "heap exhausted")
          .SetBlock("core");
  const FillResult result = harness.Fill(ConstantPointCloud(2, 2, 1000), 2, 2);
  EXPECT_EQ(result.status.cause(), weftcore::kCauseOutOfMemory);
  EXPECT_EQ(result.status.message(), "heap exhausted");
  EXPECT_EQ(result.status.block(), "core");
  ASSERT_EQ(result.status.trace().size(), 1u);
  EXPECT_EQ(result.status.trace()[0].file, "");
  EXPECT_EQ(result.status.trace()[0].line, 0);
  EXPECT_EQ(result.channelCount, 0u);
  // Steps 5 to 9 precede the frame memory: the counter, the toggle and the
  // record went on as for a delivered frame.
  EXPECT_EQ(harness.builder.frameCounter(), 1);
  EXPECT_EQ(harness.builder.first().vertexCount, 4);
  EXPECT_EQ(harness.builder.first().vertices[2], 1.0f);
}

TEST(MeshBuilderFailures, NoBlockFromAnOkAllocatorIsOutOfMemory) {
  MeshHarness harness;
  harness.allocator.returnNoBlock = true;
  const FillResult result = harness.Fill(ConstantPointCloud(2, 2, 1000), 2, 2);
  ExpectFailure(result, weftcore::kCauseOutOfMemory,
                "frame memory for the mesh (28 bytes): the allocator returned no block");
}

TEST(MeshBuilderFailures, BlockSmallerThanAskedIsOutOfMemoryAndGoesBack) {
  MeshHarness harness;
  harness.flatRawData = true;
  harness.allocator.shortBy = 1;
  const FillResult result = harness.Fill(ConstantPointCloud(2, 2, 1000), 2, 2);
  ExpectFailure(result, weftcore::kCauseOutOfMemory,
                "frame memory for the mesh (81 bytes): the block is missing or too small");
  EXPECT_EQ(harness.allocator.allocations, 1);
  EXPECT_EQ(harness.allocator.live, 0);
}

TEST(MeshBuilderFailures, BlockWithoutAddressIsOutOfMemoryAndGoesBack) {
  MeshHarness harness;
  harness.allocator.nullAddress = true;
  const FillResult result = harness.Fill(ConstantPointCloud(2, 2, 1000), 2, 2);
  ExpectFailure(result, weftcore::kCauseOutOfMemory,
                "frame memory for the mesh (28 bytes): the block is missing or too small");
  EXPECT_EQ(harness.allocator.live, 0);
}

TEST(MeshBuilderFailures, CountsBeyondInt32FailBeforeTheCounterMoves) {
  MeshHarness harness;
  const int16_t unused = 0;
  // 46341 x 46341 = 2147488281 vertices: more than an int32 count holds.
  const FillResult tooMany = harness.FillFrom(&unused, 46341, 46341);
  ExpectFailure(tooMany, weftcore::kCauseOutOfMemory,
                "mesh size out of range: vertex or triangle count not in 0..2147483647.");
  // Width -5, height 3: nx = -5, a negative vertex count (the spec's
  // allocation of a negative size fails).
  const FillResult negative = harness.FillFrom(&unused, -5, 3);
  ExpectFailure(negative, weftcore::kCauseOutOfMemory,
                "mesh size out of range: vertex or triangle count not in 0..2147483647.");
  EXPECT_EQ(harness.builder.frameCounter(), 0);
  EXPECT_EQ(harness.allocator.allocations, 0);
}

// With the host's own allocator: its failure status comes back as it is,
// with one trace entry, and every delivered block can be handed back.
TEST(MeshBuilderFailures, HeapAllocatorFailureIsReturnedAndDeliveredBlocksGoBack) {
  ZeltoMesh::MeshBuilder builder;
  std::mutex flagsMutex;
  std::atomic<bool> frameRate30{true};
  weftcore::host::HeapAllocator allocator;
  const std::vector<int16_t> points = ConstantPointCloud(3, 2, 1000);
  weftcore::FrameInfo frame;
  ASSERT_TRUE(builder.Fill(&frame, &allocator, points.data(), 3, 2, 1, 1, 0, 0, flagsMutex, false,
                           frameRate30)
                  .ok());
  allocator.FailNextAllocations(1);
  const weftcore::Status failed = builder.Fill(&frame, &allocator, points.data(), 3, 2, 1, 1, 0, 0,
                                               flagsMutex, false, frameRate30);
  EXPECT_EQ(failed.cause(), weftcore::kCauseOutOfMemory);
  EXPECT_EQ(failed.message(), "allocation of 129 bytes failed (injected)");  // 12 x 6 + 12 x 4 + 9
  EXPECT_EQ(failed.trace().size(), 1u);
  ASSERT_EQ(frame.channels.size(), 1u);
  EXPECT_EQ(frame.channels[0].size, 129u);
  EXPECT_EQ(allocator.LiveCount(), 1);
  EXPECT_TRUE(allocator.Free(frame.channels[0].memory).ok());
  EXPECT_EQ(allocator.LiveCount(), 0);
  builder.ReleaseArrays();
}

}  // namespace
}  // namespace ZeltoTest
