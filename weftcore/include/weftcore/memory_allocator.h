// Frame memory: blocks a source takes from the host's allocator for the
// frames it delivers and gives back when the host releases them.
#pragma once

#include <cstdint>

#include "weftcore/export.h"
#include "weftcore/status.h"

namespace weftcore {

// One block of frame memory. Its address stays valid until the block is
// handed back with MemoryAllocator::Free.
class WEFTCORE_API Memory {
 public:
  virtual ~Memory();
  virtual void* GetAddress() = 0;
  virtual uint64_t GetSize() = 0;
};

class WEFTCORE_API MemoryAllocator {
 public:
  MemoryAllocator() = default;
  MemoryAllocator(const MemoryAllocator&) = delete;
  MemoryAllocator& operator=(const MemoryAllocator&) = delete;
  virtual ~MemoryAllocator();

  // On success *memory is a block of at least `size` bytes.
  virtual Status Allocate(uint64_t size, Memory** memory) = 0;
  // Returns the block to the allocator; null is ignored.
  virtual Status Free(Memory* memory) = 0;
};

}  // namespace weftcore
