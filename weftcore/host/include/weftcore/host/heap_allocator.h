// The default frame-memory allocator of the host substitute, registered under
// the empty key "". Counts live blocks so that tests can prove every frame's
// memory came back.
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
  int64_t TotalAllocations() const { return total_.load(); }
  // Test seam: the next `count` Allocate calls fail with cause 6.
  void FailNextAllocations(int count) { fail_next_.store(count); }

 private:
  std::atomic<int64_t> live_{0};
  std::atomic<int64_t> total_{0};
  std::atomic<int> fail_next_{0};
};

}  // namespace host
}  // namespace weftcore
