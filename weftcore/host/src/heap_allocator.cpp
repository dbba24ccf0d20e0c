// The host's default frame-memory allocator: plain heap blocks that remember
// which allocator made them, so that a block handed to the wrong allocator is
// refused instead of freed twice.
#include "weftcore/host/heap_allocator.h"

#include <memory>
#include <new>

namespace weftcore {
namespace host {
namespace {

// Larger requests are refused with a status instead of reaching operator new,
// whose failure modes for absurd sizes differ between the runtime and the
// sanitizers. No frame of this project comes near it.
constexpr uint64_t kMaxBlockSize = uint64_t{1} << 30;

class HeapMemory final : public Memory {
 public:
  HeapMemory(const HeapAllocator* owner, std::unique_ptr<uint8_t[]> bytes, uint64_t size)
      : owner_(owner), bytes_(std::move(bytes)), size_(size) {}
  void* GetAddress() override { return bytes_.get(); }
  uint64_t GetSize() override { return size_; }
  const HeapAllocator* owner() const { return owner_; }

 private:
  const HeapAllocator* owner_;
  std::unique_ptr<uint8_t[]> bytes_;
  uint64_t size_;
};

// Takes one pending injected failure, if any.
bool ConsumeInjectedFailure(std::atomic<int>& fail_next) {
  int pending = fail_next.load();
  while (pending > 0) {
    if (fail_next.compare_exchange_weak(pending, pending - 1)) return true;
  }
  return false;
}

}  // namespace

Status HeapAllocator::Allocate(uint64_t size, Memory** memory) {
  if (memory == nullptr) {
    return Status(kLevelError, kCauseInvalidArgument, "memory is null").SetBlock("core");
  }
  *memory = nullptr;
  if (ConsumeInjectedFailure(fail_next_)) {
    return Status(kLevelError, kCauseOutOfMemory, "allocation of %llu bytes failed (injected)",
                  static_cast<unsigned long long>(size))
        .SetBlock("core");
  }
  if (size > kMaxBlockSize) {
    return Status(kLevelError, kCauseOutOfMemory,
                  "allocation of %llu bytes exceeds the limit of %llu bytes",
                  static_cast<unsigned long long>(size),
                  static_cast<unsigned long long>(kMaxBlockSize))
        .SetBlock("core");
  }
  std::unique_ptr<uint8_t[]> bytes(new (std::nothrow) uint8_t[size]);
  Memory* block = bytes ? new (std::nothrow) HeapMemory(this, std::move(bytes), size) : nullptr;
  if (block == nullptr) {
    return Status(kLevelError, kCauseOutOfMemory, "allocation of %llu bytes failed",
                  static_cast<unsigned long long>(size))
        .SetBlock("core");
  }
  live_.fetch_add(1);
  *memory = block;
  return Status();
}

Status HeapAllocator::Free(Memory* memory) {
  if (memory == nullptr) return Status();
  auto* block = dynamic_cast<HeapMemory*>(memory);
  if (block == nullptr || block->owner() != this) {
    return Status(kLevelError, kCauseInvalidArgument,
                  "memory was not allocated by this allocator")
        .SetBlock("core");
  }
  delete block;
  live_.fetch_sub(1);
  return Status();
}

}  // namespace host
}  // namespace weftcore
