#include "weftcore/host/heap_allocator.h"

#include <cstring>

#include <gtest/gtest.h>

namespace {

using weftcore::Memory;
using weftcore::Status;
using weftcore::host::HeapAllocator;

TEST(HeapAllocator, AllocateCountsALiveBlockOfTheRequestedSize) {
  HeapAllocator allocator;
  Memory* memory = nullptr;
  ASSERT_TRUE(allocator.Allocate(64, &memory).ok());
  ASSERT_NE(memory, nullptr);
  ASSERT_NE(memory->GetAddress(), nullptr);
  EXPECT_EQ(memory->GetSize(), 64u);
  std::memset(memory->GetAddress(), 0xAB, 64);  // writable over its whole size (ASan)
  EXPECT_EQ(allocator.LiveCount(), 1);
  EXPECT_EQ(allocator.TotalAllocations(), 1);
  EXPECT_TRUE(allocator.Free(memory).ok());
  EXPECT_EQ(allocator.LiveCount(), 0);
  EXPECT_EQ(allocator.TotalAllocations(), 1);
}

TEST(HeapAllocator, ZeroByteBlockHasAnAddress) {
  HeapAllocator allocator;
  Memory* memory = nullptr;
  ASSERT_TRUE(allocator.Allocate(0, &memory).ok());
  EXPECT_NE(memory->GetAddress(), nullptr);
  EXPECT_EQ(memory->GetSize(), 0u);
  EXPECT_TRUE(allocator.Free(memory).ok());
}

TEST(HeapAllocator, FreeOfNullIsIgnored) {
  HeapAllocator allocator;
  EXPECT_TRUE(allocator.Free(nullptr).ok());
  EXPECT_EQ(allocator.LiveCount(), 0);
}

TEST(HeapAllocator, FailNextAllocationsFailsThatManyWithCause6ThenRecovers) {
  HeapAllocator allocator;
  allocator.FailNextAllocations(2);
  for (int i = 0; i < 2; ++i) {
    Memory* memory = reinterpret_cast<Memory*>(&allocator);  // must be reset to null
    const Status status = allocator.Allocate(64, &memory);
    EXPECT_EQ(status.level(), 1);
    EXPECT_EQ(status.cause(), 6);
    EXPECT_EQ(status.message(), "allocation of 64 bytes failed (injected)");
    EXPECT_EQ(status.block(), "core");
    EXPECT_EQ(memory, nullptr);
  }
  EXPECT_EQ(allocator.TotalAllocations(), 0);
  Memory* memory = nullptr;
  ASSERT_TRUE(allocator.Allocate(64, &memory).ok());
  EXPECT_TRUE(allocator.Free(memory).ok());
}

TEST(HeapAllocator, OversizedRequestFailsWithCause6) {
  HeapAllocator allocator;
  Memory* memory = nullptr;
  const Status status = allocator.Allocate(uint64_t{1} << 40, &memory);
  EXPECT_EQ(status.cause(), 6);
  EXPECT_EQ(status.message(),
            "allocation of 1099511627776 bytes exceeds the limit of 1073741824 bytes");
  EXPECT_EQ(memory, nullptr);
  EXPECT_EQ(allocator.LiveCount(), 0);
}

TEST(HeapAllocator, NullOutParameterFailsWithCause2) {
  HeapAllocator allocator;
  const Status status = allocator.Allocate(8, nullptr);
  EXPECT_EQ(status.cause(), 2);
  EXPECT_EQ(status.message(), "memory is null");
}

TEST(HeapAllocator, FreeOfAnotherAllocatorsBlockFailsWithCause2AndKeepsIt) {
  HeapAllocator owner;
  HeapAllocator other;
  Memory* memory = nullptr;
  ASSERT_TRUE(owner.Allocate(8, &memory).ok());
  const Status status = other.Free(memory);
  EXPECT_EQ(status.cause(), 2);
  EXPECT_EQ(status.message(), "memory was not allocated by this allocator");
  EXPECT_EQ(owner.LiveCount(), 1);
  EXPECT_TRUE(owner.Free(memory).ok());
  EXPECT_EQ(owner.LiveCount(), 0);
}

}  // namespace
