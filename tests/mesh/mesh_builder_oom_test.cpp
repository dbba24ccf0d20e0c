// Running out of heap for the record arrays: std::bad_alloc must not cross the component boundary,
// and the records keep the arrays earlier frames name. Its own program: it replaces array new.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <set>

#include "mesh_harness.h"

namespace {
size_t failArraysFrom = 0;  // array allocations of at least this many bytes throw; 0: none
}  // namespace

void* operator new[](std::size_t size) {
  const bool fail = failArraysFrom != 0 && size >= failArraysFrom;
  void* memory = fail ? nullptr : std::malloc(size == 0 ? 1 : size);
  return memory != nullptr ? memory : throw std::bad_alloc();
}
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

namespace ZeltoTest {
namespace {

TEST(MeshBuilder, TurnsBadAllocOfTheRecordArraysIntoAStatusAndKeepsTheRecords) {
  MeshHarness harness;
  const std::vector<int16_t> small = ConstantPointCloud(2, 2, 1000);
  const std::vector<int16_t> large = ConstantPointCloud(64, 64, 1000);
  const Bytes first = harness.Fill(small.data(), 2, 2).bytes;
  const Bytes second = harness.Fill(small.data(), 2, 2).bytes;
  failArraysFrom = 4096;  // the 64 x 64 vertices need 49152 bytes
  const FillResult failed = harness.Fill(large.data(), 64, 64);
  failArraysFrom = 0;
  EXPECT_EQ(failed.status.cause(), weftcore::kCauseOutOfMemory);
  EXPECT_EQ(failed.status.message(), "mesh arrays could not be allocated.");
  EXPECT_EQ(failed.status.block(), "ZeltoMesh");
  EXPECT_EQ(failed.channelCount, 0u);
  EXPECT_EQ(harness.allocator.live, 0);
  // Both records still hold their arrays: the next two frames reuse them.
  const Bytes third = harness.Fill(small.data(), 2, 2).bytes;
  const Bytes fourth = harness.Fill(small.data(), 2, 2).bytes;
  EXPECT_EQ((std::set<const float*>{VerticesOf(first), VerticesOf(second)}),
            (std::set<const float*>{VerticesOf(third), VerticesOf(fourth)}));
  EXPECT_TRUE(harness.Fill(large.data(), 64, 64).status.ok());  // memory is back: it works again
}

}  // namespace
}  // namespace ZeltoTest
