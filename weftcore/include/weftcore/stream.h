// An upstream stream as a consumer sees it: control, frames, serialized
// properties, and typed GetProperty/SetProperty that encode and decode the
// records around the serialized calls under the stream's property lock.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "weftcore/export.h"
#include "weftcore/frame.h"
#include "weftcore/serialize.h"
#include "weftcore/status.h"
#include "weftcore/stream_function_lock.h"

namespace weftcore {

class WEFTCORE_API Stream {
 public:
  Stream() = default;
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  virtual ~Stream();

  virtual Status Start() = 0;
  virtual Status Stop() = 0;
  // timeout_msec 0: do not wait. OK with a null frame when none is ready.
  virtual Status GetFrame(Frame** frame, int32_t timeout_msec) = 0;
  virtual Status ReleaseFrame(Frame* frame) = 0;

  // Serialized property operations. The reply of GetSerializedProperty
  // belongs to the caller until it hands it back with ReleaseSerializedProperty.
  virtual Status GetSerializedProperty(const std::string& key, const void* input,
                                       size_t input_size, void** property, size_t* size) = 0;
  virtual Status ReleaseSerializedProperty(const std::string& key, void* property,
                                           size_t size) = 0;
  virtual Status SetSerializedProperty(const std::string& key, const void* property,
                                       size_t size) = 0;
  virtual StreamFunctionLockManager* GetFunctionLockManager() = 0;

  template <typename T>
  Status GetProperty(const std::string& key, T* property);
  template <typename T>
  Status SetProperty(const std::string& key, const T* property);
};

template <typename T>
Status Stream::GetProperty(const std::string& key, T* property) {
  if (property == nullptr) {
    return Status(kLevelError, kCauseInvalidArgument, "property is null").SetBlock("core");
  }
  StreamFunctionLock lock(GetFunctionLockManager(), StreamFunctionType::kProperty);
  if (lock.GetStatus().IsError()) {
    Status status = lock.GetStatus();
    return status.AddTrace(nullptr, 0);
  }
  serialize::SerializedBuffer buffer;
  serialize::MsgPackEncoder encoder(&buffer);
  Status result = encoder.Push(*property);
  if (result.IsError()) return result.AddTrace(nullptr, 0);

  void* reply = nullptr;
  size_t reply_size = 0;
  result = GetSerializedProperty(key, buffer.data(), buffer.size(), &reply, &reply_size);
  if (result.ok()) {
    serialize::MsgPackDecoder decoder(reply, reply_size);
    result = decoder.Pop(*property);
  }
  if (result.IsError()) result.AddTrace(nullptr, 0);
  if (reply != nullptr) {
    Status released = ReleaseSerializedProperty(key, reply, reply_size);
    if (released.IsError() && result.ok()) result = released.AddTrace(nullptr, 0);
  }
  return result;
}

template <typename T>
Status Stream::SetProperty(const std::string& key, const T* property) {
  StreamFunctionLock lock(GetFunctionLockManager(), StreamFunctionType::kProperty);
  if (lock.GetStatus().IsError()) {
    Status status = lock.GetStatus();
    return status.AddTrace(nullptr, 0);
  }
  Status result;
  if (property != nullptr) {
    serialize::SerializedBuffer buffer;
    serialize::MsgPackEncoder encoder(&buffer);
    result = encoder.Push(*property);
    if (result.IsError()) return result.AddTrace(nullptr, 0);
    result = SetSerializedProperty(key, buffer.data(), buffer.size());
  } else {
    result = SetSerializedProperty(key, nullptr, 0);
  }
  if (result.IsError()) result.AddTrace(nullptr, 0);
  return result;
}

}  // namespace weftcore
