// A frame-memory allocator for the mesh tests: heap blocks it counts, with
// switches for every way an allocation can go wrong.
#pragma once

#include <cstdint>
#include <vector>

#include "weftcore/memory_allocator.h"

namespace ZeltoTest {

class TestMemory final : public weftcore::Memory {
 public:
  TestMemory(uint64_t size, uint64_t misalignment, bool nullAddress)
      : storage_(size + misalignment), misalignment_(misalignment), nullAddress_(nullAddress) {}
  void* GetAddress() override { return nullAddress_ ? nullptr : storage_.data() + misalignment_; }
  uint64_t GetSize() override { return storage_.size() - misalignment_; }

 private:
  std::vector<unsigned char> storage_;
  uint64_t misalignment_;
  bool nullAddress_;
};

class TestAllocator final : public weftcore::MemoryAllocator {
 public:
  weftcore::Status Allocate(uint64_t size, weftcore::Memory** memory) override {
    ++allocations;
    lastRequestedSize = size;
    if (failWith.IsError()) return failWith;
    if (returnNoBlock) return weftcore::Status();
    *memory = new TestMemory(size > shortBy ? size - shortBy : 0, misalignment, nullAddress);
    ++live;
    return weftcore::Status();
  }
  weftcore::Status Free(weftcore::Memory* memory) override {
    if (memory == nullptr) return weftcore::Status();
    delete memory;
    --live;
    return weftcore::Status();
  }

  // Switches.
  weftcore::Status failWith;   // returned by Allocate when an error
  bool returnNoBlock = false;  // OK status but no block
  bool nullAddress = false;    // a block whose address is null
  uint64_t shortBy = 0;        // blocks this many bytes smaller than asked
  uint64_t misalignment = 0;   // block addresses this many bytes past an aligned one

  int64_t live = 0;
  int64_t allocations = 0;
  uint64_t lastRequestedSize = 0;
};

}  // namespace ZeltoTest
