// A small upstream stream for the Stream::GetProperty/SetProperty tests
// (Part 4.1): its serialized operations are scripted and recorded, and it
// owns its function lock manager.
#pragma once

#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "properties/msgpack_bytes.h"
#include "weftcore/stream.h"

namespace zelto_test {

class ScriptedStream : public weftcore::Stream {
 public:
  ~ScriptedStream() override { delete[] outstanding; }

  weftcore::Status Start() override { return weftcore::Status(); }
  weftcore::Status Stop() override { return weftcore::Status(); }
  weftcore::Status GetFrame(weftcore::Frame** frame, int32_t) override {
    *frame = nullptr;
    return weftcore::Status();
  }
  weftcore::Status ReleaseFrame(weftcore::Frame*) override { return weftcore::Status(); }

  weftcore::Status GetSerializedProperty(const std::string& key, const void* input,
                                         size_t input_size, void** property,
                                         size_t* size) override {
    ++getCalls;
    getKey = key;
    const auto* first = static_cast<const uint8_t*>(input);
    getInput = input ? Bytes(first, first + input_size) : Bytes();
    if (duringOperation) duringOperation();
    if (reply) {
      // Handed out like a framework reply: the caller must give it back.
      outstanding = new uint8_t[reply->empty() ? 1 : reply->size()];
      if (!reply->empty()) std::memcpy(outstanding, reply->data(), reply->size());
      handedOut = outstanding;
      *property = outstanding;
      *size = reply->size();
    }
    return getStatus;
  }

  weftcore::Status ReleaseSerializedProperty(const std::string& key, void* property,
                                             size_t size) override {
    ++releaseCalls;
    releaseKey = key;
    releasedPointer = property;
    releasedSize = size;
    if (property == outstanding) {
      delete[] outstanding;
      outstanding = nullptr;
    }
    return releaseStatus;
  }

  weftcore::Status SetSerializedProperty(const std::string& key, const void* property,
                                         size_t size) override {
    ++setCalls;
    setKey = key;
    setPointerWasNull = property == nullptr;
    setSize = size;
    const auto* first = static_cast<const uint8_t*>(property);
    setBytes = property ? Bytes(first, first + size) : Bytes();
    if (duringOperation) duringOperation();
    return setStatus;
  }

  weftcore::StreamFunctionLockManager* GetFunctionLockManager() override { return &locks; }

  weftcore::StreamFunctionLockManager locks;

  // Script.
  std::optional<Bytes> reply;  // reply bytes of the get operation, if any
  weftcore::Status getStatus;
  weftcore::Status releaseStatus;
  weftcore::Status setStatus;
  std::function<void()> duringOperation;

  // Record.
  int getCalls = 0;
  int releaseCalls = 0;
  int setCalls = 0;
  std::string getKey;
  std::string releaseKey;
  std::string setKey;
  Bytes getInput;
  uint8_t* outstanding = nullptr;  // the reply not yet released
  void* handedOut = nullptr;       // the last reply pointer given out
  void* releasedPointer = nullptr;
  size_t releasedSize = 0;
  Bytes setBytes;
  bool setPointerWasNull = false;
  size_t setSize = 0;
};

}  // namespace zelto_test
