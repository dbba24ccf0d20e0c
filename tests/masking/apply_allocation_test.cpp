// Apply's use of the heap (Part 3.2): one working-table allocation per call,
// none in the point pass, and exhausted memory returned as a status.
// The global allocation functions are replaced in this program only.
#include <atomic>
#include <cstdlib>
#include <new>
#include <vector>

#include <gtest/gtest.h>

#include "masking/masked_point_cloud.h"
#include "masking_fixtures.h"

namespace {

std::atomic<int> allocations{0};
std::atomic<bool> failNext{false};

void* Allocate(std::size_t size) {
  allocations.fetch_add(1);
  if (failNext.exchange(false)) throw std::bad_alloc();
  if (void* p = std::malloc(size == 0 ? 1 : size)) return p;
  throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) { return Allocate(size); }
void* operator new[](std::size_t size) { return Allocate(size); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }

namespace {

using masking_test::AtColorPixel;
using masking_test::kInvalidDepth;
using masking_test::ListOf;
using masking_test::Mask;
using masking_test::Point;
using masking_test::PointCloud;
using masking_test::StandardCloud;

// Heap allocations made by one Apply of `pointCount` points on three masks.
int AllocationsOfApply(int pointCount) {
  MaskedPointCloud cloud = StandardCloud();
  Mask color(640, 480, 0);
  Mask depth(320, 240, 0);
  Mask removes(320, 240, 255);
  PointCloud points(std::vector<Point>(pointCount, AtColorPixel(10, 20)));
  const auto list =
      ListOf({color.Record(true), depth.Record(false), removes.Record(false)});
  weftcore::Channel::RawData* raw = points.Raw();
  allocations = 0;
  const weftcore::Status status = cloud.Apply(raw, &list);
  const int counted = allocations;
  EXPECT_TRUE(status.ok());
  EXPECT_EQ(points.Z(static_cast<size_t>(pointCount) - 1), kInvalidDepth);
  return counted;
}

TEST(ApplyAllocation, OneWorkingTableAllocationPerCallWhateverThePointCount) {
  EXPECT_EQ(AllocationsOfApply(1), 1);
  EXPECT_EQ(AllocationsOfApply(10000), 1);
}

TEST(ApplyAllocation, ExhaustedMemoryForTheWorkingTableBecomesAFailureStatus) {
  MaskedPointCloud cloud = StandardCloud();
  Mask mask(640, 480, 255);
  PointCloud points({AtColorPixel(10, 20)});
  const auto list = ListOf({mask.Record(true), mask.Record(false)});
  weftcore::Channel::RawData* raw = points.Raw();
  failNext = true;
  const weftcore::Status status = cloud.Apply(raw, &list);
  failNext = false;
  ASSERT_TRUE(status.IsError());
  EXPECT_EQ(status.level(), 1);
  EXPECT_EQ(status.cause(), 6);
  EXPECT_EQ(status.block(), "ZeltoMesh");
  EXPECT_EQ(status.message(), "Out of memory for 2 masks: std::bad_alloc");
  EXPECT_EQ(points.Z(0), 1000);
}

}  // namespace
