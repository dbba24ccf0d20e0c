// The builder at the limits of a client's reduction level and a host's image size, the lifetime of
// the arrays reference-layout frames point at (under AddressSanitizer), and frame-memory failures.
#include <gtest/gtest.h>

#include "mesh/mesh_grid.h"
#include "mesh_harness.h"

namespace ZeltoTest {
namespace {

TEST(MeshBuilder, HandlesExtremeSizesAndLevels) {
  constexpr char kOutOfRange[] =
      "mesh size out of range: vertex or triangle count not in 0..2147483647.";
  struct Case {
    const char* name;
    int32_t level, width, height, vertices, triangles;
    const char* error;
  } const cases[] = {
      {"level 2147483647 wraps the step to INT32_MIN", 2147483647, 640, 480, 0, 0, nullptr},
      {"level 639: one sample of 640 x 480", 639, 640, 480, 1, 0, nullptr},
      {"level 2147483646", 2147483646, 640, 480, 1, 0, nullptr},
      {"one grid column has no cells", 3, 3, 6, 2, 0, nullptr},
      {"one grid row has no cells", 3, 6, 3, 2, 0, nullptr},
      {"width 0", 0, 0, 3, 0, 0, nullptr},
      {"negative extents: unsampled vertices are zeros", 0, -2, -3, 6, 0, nullptr},
      {"level -1 on 0 x 0: 0 / 0 is NaN, no vertex", -1, 0, 0, 0, 0, nullptr},
      {"level -1: 5 / 0 saturates", -1, 5, 3, 0, 0, kOutOfRange},
      {"vertices beyond int32", 0, 46341, 46341, 0, 0, kOutOfRange},
      {"triangles beyond int32", 0, 40000, 40000, 0, 0, kOutOfRange},
      {"negative vertex count", 0, -5, 3, 0, 0, kOutOfRange},
  };
  const std::vector<int16_t> points = ConstantPointCloud(640, 480, 1500);
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    MeshHarness harness;
    harness.flatRawData = true;
    harness.intrinsics = {525.0f, 525.0f, 319.5f, 239.5f};
    harness.builder.meshReductionLevel = row.level;
    harness.builder.resetTrianglePeriod = 2;
    const FillResult result = harness.Fill(points.data(), row.width, row.height);
    if (row.error != nullptr) {
      EXPECT_EQ(result.status.cause(), weftcore::kCauseOutOfMemory);
      EXPECT_EQ(result.status.message(), row.error);
      EXPECT_EQ(harness.allocator.allocations, 0);
      harness.builder.meshReductionLevel = 0;
      EXPECT_EQ(harness.NextResetFlag(), 0);  // period 2: the refused frame was not counted
      continue;
    }
    ASSERT_EQ(result.flat.size(), 12u * row.vertices + 12u * row.triangles + 9);
    EXPECT_EQ(FieldOf<int32_t>(result.flat, 0), row.vertices);
    EXPECT_EQ(FieldOf<int32_t>(result.flat, 4 + 12 * row.vertices), row.triangles);
    if (row.vertices == 0) continue;
    const uint32_t on = row.width > 0 ? 0xFFFFFFFF : 0;  // pixel (0, 0) at 1.5 m, or zeros
    const Bytes pixel00 =
        zelto_test::LeBytes().F32Bits({0xBF69B102 & on, 0xBF2F2D59 & on, 0x3FC00000 & on}).bytes();
    EXPECT_EQ(Bytes(result.flat.begin() + 4, result.flat.begin() + 16), pixel00);
  }
  // Converting an infinite float to int32 is undefined: the quotient saturates instead.
  EXPECT_EQ(ZeltoMesh::ComputeMeshGrid(-1, 5, -5).nx, INT32_MAX);
  EXPECT_EQ(ZeltoMesh::ComputeMeshGrid(-1, 5, -5).ny, INT32_MIN);
}

TEST(MeshBuilder, KeepsReplacedArraysReadableUntilCloseAndFreesThemOnce) {
  MeshHarness harness;
  const std::vector<int16_t> small = ConstantPointCloud(3, 3, 1000);
  const FillResult first = harness.Fill(small.data(), 3, 3);
  const FillResult second = harness.Fill(small.data(), 3, 3);
  EXPECT_NE(VerticesOf(first.bytes), VerticesOf(second.bytes));  // two records
  // The first record gets new arrays for other counts; an earlier frame still reads the old ones.
  const FillResult resized = harness.Fill(ConstantPointCloud(4, 4, 2000).data(), 4, 4);
  EXPECT_NE(VerticesOf(resized.bytes), VerticesOf(first.bytes));
  EXPECT_EQ(FlatOf(first.bytes), first.flat);
  const FillResult reused = harness.Fill(small.data(), 3, 3);  // unchanged counts: the same arrays
  EXPECT_EQ(VerticesOf(reused.bytes), VerticesOf(second.bytes));
  EXPECT_EQ(TrianglesOf(reused.bytes), TrianglesOf(second.bytes));
  harness.builder.ReleaseArrays();
  harness.builder.ReleaseArrays();  // a second Close frees nothing
  EXPECT_EQ(harness.Fill(small.data(), 3, 3).flat, second.flat);
}

TEST(MeshBuilder, ReportsFrameMemoryFailuresAndKeepsNoBlock) {
  const weftcore::Status heapExhausted =
      weftcore::Status(weftcore::kLevelError, weftcore::kCauseOutOfMemory, "heap exhausted")
          .SetBlock("core");
  struct Case {
    const char* name;
    TestAllocator::Faults faults;
    bool flat;
    const char* message;
  } const cases[] = {
      {"the host's allocator fails: its status, traced", {heapExhausted}, false, "heap exhausted"},
      {"an OK status without a block", {{}, true}, false,
       "frame memory for the mesh (28 bytes): the allocator returned no block"},
      {"a block one byte short", {{}, false, false, 1}, true,
       "frame memory for the mesh (81 bytes): the block is missing or too small"},
      {"a block without address", {{}, false, true}, false,
       "frame memory for the mesh (28 bytes): the block is missing or too small"},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    MeshHarness harness;
    harness.builder.resetTrianglePeriod = 2;
    harness.flatRawData = row.flat;
    harness.allocator.faults = row.faults;
    const FillResult result = harness.Fill(ConstantPointCloud(2, 2, 1000).data(), 2, 2);
    const bool fromHost = row.faults.failWith.IsError();
    EXPECT_EQ(result.status.cause(), weftcore::kCauseOutOfMemory);
    EXPECT_EQ(result.status.block(), fromHost ? "core" : "ZeltoMesh");
    EXPECT_EQ(result.status.message(), row.message);
    EXPECT_EQ(result.status.trace().size(), fromHost ? 1u : 0u);
    EXPECT_EQ(result.channelCount, 0u);
    EXPECT_EQ(harness.allocator.live, 0);
    harness.allocator.faults = {};
    EXPECT_EQ(harness.NextResetFlag(), 1);  // period 2: the failed frame still counted
  }
}

}  // namespace
}  // namespace ZeltoTest
