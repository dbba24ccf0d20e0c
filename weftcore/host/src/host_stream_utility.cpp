// The utility a source receives in Open: the host's default allocator and
// the registry of the source's property accessors, which the stream owns.
#include "weftcore/host/host_stream.h"

namespace weftcore {
namespace host {

HostStreamUtility::HostStreamUtility(MemoryAllocator* default_allocator)
    : default_allocator_(default_allocator) {}

HostStreamUtility::~HostStreamUtility() = default;

Status HostStreamUtility::GetAllocator(const std::string& key, MemoryAllocator** allocator) {
  if (allocator == nullptr) {
    return Status(kLevelError, kCauseInvalidArgument, "allocator is null").SetBlock("core");
  }
  if (!key.empty() || default_allocator_ == nullptr) {
    return Status(kLevelError, kCauseNotFound, "allocator %s is not registered", key.c_str())
        .SetBlock("core");
  }
  *allocator = default_allocator_;
  return Status();
}

Status HostStreamUtility::RegisterProperty(PropertyAccessor* accessor) {
  if (accessor == nullptr) {
    return Status(kLevelError, kCauseInvalidArgument, "accessor is null").SetBlock("core");
  }
  std::lock_guard<std::mutex> lock(mutex_);
  if (properties_.count(accessor->key()) != 0) {
    return Status(kLevelError, kCauseAlreadyExists, "property %s is already registered",
                  accessor->key().c_str())
        .SetBlock("core");
  }
  // The registry owns the accessor only once its entry exists: when the entry
  // cannot be allocated, the caller still owns it and frees it.
  properties_.emplace(accessor->key(), nullptr).first->second.reset(accessor);
  return Status();
}

PropertyAccessor* HostStreamUtility::FindProperty(const std::string& key) const {
  std::lock_guard<std::mutex> lock(mutex_);
  const auto found = properties_.find(key);
  return found == properties_.end() ? nullptr : found->second.get();
}

std::vector<std::string> HostStreamUtility::PropertyKeys() const {
  std::lock_guard<std::mutex> lock(mutex_);
  std::vector<std::string> keys;
  for (const auto& entry : properties_) keys.push_back(entry.first);
  return keys;
}

}  // namespace host
}  // namespace weftcore
