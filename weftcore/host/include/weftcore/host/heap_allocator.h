// The default frame-memory allocator of the host, registered under the empty
// key "". For people testing a component it counts the blocks still live
// (every frame's memory must come back) and can be told to refuse the next
// allocations (the component must turn that into a status, not a crash).
#pragma once

#include <atomic>
#include <cstdint>

#include "weftcore/memory_allocator.h"

namespace weftcore {
namespace host {

class HeapAllocator final : public MemoryAllocator {
 public:
  Status Allocate(uint64_t size, Memory** memory) override;
  Status Free(Memory* memory) override;

  int64_t LiveCount() const { return live_.load(); }
  // The next `count` Allocate calls fail with cause 6, as memory exhaustion
  // would.
  void FailNextAllocations(int count) { fail_next_.store(count); }

 private:
  std::atomic<int64_t> live_{0};
  std::atomic<int> fail_next_{0};
};

}  // namespace host
}  // namespace weftcore
