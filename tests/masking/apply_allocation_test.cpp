// Apply's heap use: one working-table allocation per call, none per point,
// and exhausted memory returned as a status, never thrown into the host.
// The global allocation functions are replaced in this program only.
#include <atomic>
#include <cstdlib>
#include <new>

#include <gtest/gtest.h>

#include "masking_fixtures.h"

namespace {
std::atomic<int> allocations{0};
std::atomic<bool> failNext{false};

void* Allocate(std::size_t size) {
  allocations.fetch_add(1);
  void* p = failNext.exchange(false) ? nullptr : std::malloc(size == 0 ? 1 : size);
  return p != nullptr ? p : throw std::bad_alloc();
}
}  // namespace

void* operator new(std::size_t size) { return Allocate(size); }
void* operator new[](std::size_t size) { return Allocate(size); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }

namespace {

using namespace masking_test;

TEST(Apply, AllocatesOnceWhateverThePointCountAndReportsExhaustedMemory) {
  MaskedPointCloud cloud;
  ReadCalibration(&cloud, StandardCalibration());
  const std::vector<Mask> masks = {Color(640, 480), Depth(320, 240), Depth(320, 240, 255)};
  const MaskList list = ListOf(masks);
  for (size_t count : {1, 10000}) {
    SCOPED_TRACE(count);
    std::vector<Point> points(count, AtColorPixel(10, 20));
    weftcore::Channel::RawData raw{points.data(), count * sizeof(Point), "", 0};
    allocations = 0;
    EXPECT_TRUE(cloud.Apply(&raw, &list).ok());
    EXPECT_EQ(allocations, 1);
    EXPECT_EQ(points.back().z, kMasked);

    points.assign(count, AtColorPixel(10, 20));
    failNext = true;
    const Status status = cloud.Apply(&raw, &list);
    EXPECT_EQ(status.cause(), 6);
    EXPECT_EQ(status.message().rfind("Out of memory for 3 masks: ", 0), 0u) << status.message();
    EXPECT_EQ(points.back().z, 1000);
  }
}

}  // namespace
