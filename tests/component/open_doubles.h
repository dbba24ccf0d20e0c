// Doubles for calling ZeltoMeshStreamSource::Open directly (Part 1.3): a core
// that records every call and forwards it to a real core, a utility whose
// allocator and registrations can fail, and an allocator that counts.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "weftcore/core.h"
#include "weftcore/host/heap_allocator.h"
#include "weftcore/memory_allocator.h"
#include "weftcore/property_accessor.h"
#include "weftcore/stream_source_utility.h"

namespace zelto_test {

// Forwards to `inner` and records each call as "Initialize", "Finalize",
// "OpenStream <key>", "CloseStream <key>" ("CloseStream null" for null).
class RecordingCore final : public weftcore::Core {
 public:
  explicit RecordingCore(weftcore::Core* inner) : inner_(inner) {}

  weftcore::Status Initialize() override;
  bool IsInitialized() const override { return inner_->IsInitialized(); }
  weftcore::Status Finalize() override;
  weftcore::Status OpenStream(const std::string& key, weftcore::Stream** stream) override;
  weftcore::Status CloseStream(weftcore::Stream* stream) override;

  // Initialize fails with InitializeFailure() (not forwarded) while set.
  bool failInitialize = false;
  static weftcore::Status InitializeFailure();

  std::vector<std::string> calls;
  // The status each key's last OpenStream returned.
  std::map<std::string, weftcore::Status> openResults;

 private:
  weftcore::Core* inner_;
  std::map<const weftcore::Stream*, std::string> keys_;
};

class CountingAllocator final : public weftcore::MemoryAllocator {
 public:
  weftcore::Status Allocate(uint64_t size, weftcore::Memory** memory) override;
  weftcore::Status Free(weftcore::Memory* memory) override;
  int allocations = 0;
  int frees = 0;  // every Free call, null included
  int64_t LiveCount() const { return heap_.LiveCount(); }

 private:
  weftcore::host::HeapAllocator heap_;
};

class FakeUtility final : public weftcore::StreamSourceUtility {
 public:
  // A null `allocator` makes GetAllocator fail with AllocatorFailure().
  explicit FakeUtility(weftcore::MemoryAllocator* allocator) : allocator_(allocator) {}

  weftcore::Status GetAllocator(const std::string& key,
                                weftcore::MemoryAllocator** allocator) override;
  weftcore::Status RegisterProperty(weftcore::PropertyAccessor* accessor) override;
  weftcore::PropertyAccessor* Find(const std::string& key) const;

  // Every registration fails with RegistrationFailure() while set.
  bool refuseProperties = false;
  static weftcore::Status AllocatorFailure();
  static weftcore::Status RegistrationFailure();

  std::vector<std::string> allocatorKeys;  // keys asked of GetAllocator
  std::vector<std::string> registeredKeys;
  std::vector<std::string> refusedKeys;

 private:
  weftcore::MemoryAllocator* allocator_;
  std::map<std::string, std::unique_ptr<weftcore::PropertyAccessor>> accessors_;
};

}  // namespace zelto_test
