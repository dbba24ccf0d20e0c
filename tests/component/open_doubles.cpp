#include "tests/component/open_doubles.h"

namespace zelto_test {

weftcore::Status RecordingCore::Initialize() {
  calls.push_back("Initialize");
  if (failInitialize) return InitializeFailure();
  return inner_->Initialize();
}

weftcore::Status RecordingCore::Finalize() {
  calls.push_back("Finalize");
  return inner_->Finalize();
}

weftcore::Status RecordingCore::OpenStream(const std::string& key, weftcore::Stream** stream) {
  calls.push_back("OpenStream " + key);
  weftcore::Status status = inner_->OpenStream(key, stream);
  if (status.ok()) keys_[*stream] = key;
  openResults[key] = status;
  return status;
}

weftcore::Status RecordingCore::CloseStream(weftcore::Stream* stream) {
  const auto key = keys_.find(stream);
  calls.push_back("CloseStream " + (stream == nullptr   ? std::string("null")
                                    : key != keys_.end() ? key->second
                                                         : std::string("unknown")));
  return inner_->CloseStream(stream);
}

weftcore::Status RecordingCore::InitializeFailure() {
  return weftcore::Status(weftcore::kLevelError, weftcore::kCauseInvalidState,
                          "core cannot initialize")
      .SetBlock("fake");
}

weftcore::Status CountingAllocator::Allocate(uint64_t size, weftcore::Memory** memory) {
  ++allocations;
  return heap_.Allocate(size, memory);
}

weftcore::Status CountingAllocator::Free(weftcore::Memory* memory) {
  ++frees;
  return heap_.Free(memory);
}

weftcore::Status FakeUtility::GetAllocator(const std::string& key,
                                           weftcore::MemoryAllocator** allocator) {
  allocatorKeys.push_back(key);
  if (allocator_ == nullptr) return AllocatorFailure();
  *allocator = allocator_;
  return weftcore::Status();
}

weftcore::Status FakeUtility::RegisterProperty(weftcore::PropertyAccessor* accessor) {
  if (refuseProperties) {
    refusedKeys.push_back(accessor->key());
    return RegistrationFailure();
  }
  registeredKeys.push_back(accessor->key());
  accessors_[accessor->key()].reset(accessor);
  return weftcore::Status();
}

weftcore::PropertyAccessor* FakeUtility::Find(const std::string& key) const {
  const auto found = accessors_.find(key);
  return found == accessors_.end() ? nullptr : found->second.get();
}

weftcore::Status FakeUtility::AllocatorFailure() {
  return weftcore::Status(weftcore::kLevelError, weftcore::kCauseNotFound,
                          "no allocator here")
      .SetBlock("fake");
}

weftcore::Status FakeUtility::RegistrationFailure() {
  return weftcore::Status(weftcore::kLevelError, weftcore::kCauseAlreadyExists,
                          "registration refused")
      .SetBlock("fake");
}

}  // namespace zelto_test
