// What a source receives in Open besides the core: the host's frame-memory
// allocators and the registry of the properties the source serves.
#pragma once

#include <memory>
#include <string>

#include "weftcore/export.h"
#include "weftcore/memory_allocator.h"
#include "weftcore/property_accessor.h"
#include "weftcore/status.h"

namespace weftcore {

class WEFTCORE_API StreamSourceUtility {
 public:
  StreamSourceUtility() = default;
  StreamSourceUtility(const StreamSourceUtility&) = delete;
  StreamSourceUtility& operator=(const StreamSourceUtility&) = delete;
  virtual ~StreamSourceUtility();

  // The empty key names the default allocator.
  virtual Status GetAllocator(const std::string& key, MemoryAllocator** allocator) = 0;
  // Takes ownership of `accessor` on success only.
  virtual Status RegisterProperty(PropertyAccessor* accessor) = 0;

  template <typename T, typename Source>
  Status CreateProperty(const std::string& key, Source* source) {
    // Freed here unless the registry took it, also when registering throws.
    std::unique_ptr<PropertyAccessor> accessor(
        new DeserializedPropertyAccessor<Source, T>(key, source));
    Status status = RegisterProperty(accessor.get());
    if (status.IsError()) {
      status.AddTrace(nullptr, 0);
    } else {
      accessor.release();
    }
    return status;
  }
};

}  // namespace weftcore
