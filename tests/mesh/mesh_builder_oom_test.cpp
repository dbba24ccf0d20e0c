// Deviation (1) of docs/deviations.md: std::bad_alloc from the record
// arrays never leaves Fill. This program replaces the global array new so
// that large array allocations can be made to fail.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "mesh_harness.h"

namespace {
// Array allocations of at least this many bytes throw while set (0: never).
size_t failArraysFrom = 0;
}  // namespace

void* operator new[](std::size_t size) {
  if (failArraysFrom != 0 && size >= failArraysFrom) throw std::bad_alloc();
  if (void* memory = std::malloc(size == 0 ? 1 : size)) return memory;
  throw std::bad_alloc();
}
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

namespace ZeltoTest {
namespace {

struct FailLargeArrays {
  explicit FailLargeArrays(size_t bytes) { failArraysFrom = bytes; }
  ~FailLargeArrays() { failArraysFrom = 0; }
};

TEST(MeshBuilderOutOfMemory, BadAllocOfTheRecordArraysBecomesAStatusAndKeepsTheRecord) {
  MeshHarness harness;
  const std::vector<int16_t> small = ConstantPointCloud(2, 2, 1000);
  ASSERT_TRUE(harness.Fill(small, 2, 2).status.ok());  // first record: 4 vertices
  ASSERT_TRUE(harness.Fill(small, 2, 2).status.ok());  // second record
  const ZeltoMesh::MeshFrameData before = harness.builder.first();

  const std::vector<int16_t> large = ConstantPointCloud(64, 64, 1000);
  FillResult result;
  {
    const FailLargeArrays failing(4096);
    result = harness.Fill(large, 64, 64);  // 4096 vertices: 49152 bytes
  }
  EXPECT_EQ(result.status.cause(), weftcore::kCauseOutOfMemory);
  EXPECT_EQ(result.status.message(), "mesh arrays could not be allocated.");
  EXPECT_EQ(result.status.block(), "ZeltoMesh");
  EXPECT_EQ(result.channelCount, 0u);
  EXPECT_EQ(harness.allocator.live, 0);
  // The record the call chose keeps its arrays and counts.
  EXPECT_EQ(VerticesOf(harness.builder.first()), VerticesOf(before));
  EXPECT_EQ(TrianglesOf(harness.builder.first()), TrianglesOf(before));
  EXPECT_EQ(harness.builder.first().vertexCount, 4);
  EXPECT_EQ(harness.builder.first().triangleCount, 2);

  // Memory back: the builder works again.
  const FillResult after = harness.Fill(large, 64, 64);
  ASSERT_TRUE(after.status.ok()) << after.status.message();
  EXPECT_EQ(harness.builder.second().vertexCount, 4096);
}

}  // namespace
}  // namespace ZeltoTest
