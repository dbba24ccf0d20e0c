// Serialized property access: the accessor the host calls with a client's
// bytes. It decodes them into the source's record type, calls the source's
// typed handler and encodes the answer into an array the client hands back
// with Release.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "weftcore/export.h"
#include "weftcore/serialize.h"
#include "weftcore/status.h"

namespace weftcore {

class WEFTCORE_API PropertyAccessor {
 public:
  explicit PropertyAccessor(std::string key) : key_(std::move(key)) {}
  PropertyAccessor(const PropertyAccessor&) = delete;
  PropertyAccessor& operator=(const PropertyAccessor&) = delete;

  virtual Status Set(const std::string& key, const void* serialized_property,
                     size_t serialized_size) = 0;
  virtual Status Get(const std::string& key, void** serialized_property, size_t* serialized_size,
                     const void* serialized_input_property, size_t serialized_input_size) = 0;
  virtual Status Release(const std::string& key, void* serialized_property,
                         size_t serialized_size) = 0;
  virtual ~PropertyAccessor();

  const std::string& key() const { return key_; }

 private:
  std::string key_;
};

template <typename Source, typename T>
class DeserializedPropertyAccessor final : public PropertyAccessor {
 public:
  DeserializedPropertyAccessor(const std::string& key, Source* source)
      : PropertyAccessor(key), source_(source) {}

  // Set, Get and Release are called by clients through the host: a failed
  // allocation (decoding, the handler's copies, the reply array) comes back
  // as a status with cause 6, never as an exception into the host.
  Status Set(const std::string& key, const void* serialized_property,
             size_t serialized_size) override {
    return Guarded(key, [&] { return Decode(key, serialized_property, serialized_size); });
  }

  Status Get(const std::string& key, void** serialized_property, size_t* serialized_size,
             const void* serialized_input_property, size_t serialized_input_size) override {
    return Guarded(key, [&] {
      return Answer(key, serialized_property, serialized_size, serialized_input_property,
                    serialized_input_size);
    });
  }

  Status Release(const std::string& /*key*/, void* serialized_property,
                 size_t serialized_size) override {
    if (serialized_property != nullptr && serialized_size != 0) {
      delete[] static_cast<uint8_t*>(serialized_property);
    }
    return Status();
  }

 private:
  template <typename Body>
  static Status Guarded(const std::string& key, Body&& body) {
    try {
      return body();
    } catch (const std::bad_alloc&) {
      return Status(kLevelError, kCauseOutOfMemory, "property %s: out of memory", key.c_str())
          .SetBlock("core");
    } catch (const std::exception& e) {
      return Status(kLevelError, kCauseUnknown, "property %s: %s", key.c_str(), e.what())
          .SetBlock("core");
    }
  }

  Status Decode(const std::string& key, const void* serialized_property, size_t serialized_size) {
    Status status;
    if (serialized_property != nullptr && serialized_size != 0) {
      T record{};
      serialize::MsgPackDecoder decoder(serialized_property, serialized_size);
      status = decoder.Pop(record);
      if (status.IsError()) return status.AddTrace(nullptr, 0);
      status = source_->Set(key, &record);
    } else {
      status = source_->Set(key, static_cast<const T*>(nullptr));
    }
    if (status.IsError()) status.AddTrace(nullptr, 0);
    return status;
  }

  Status Answer(const std::string& key, void** serialized_property, size_t* serialized_size,
                const void* serialized_input_property, size_t serialized_input_size) {
    if (serialized_property == nullptr) {
      return Status(kLevelError, kCauseInvalidArgument, "serialized_property is null")
          .SetBlock("core");
    }
    if (serialized_size == nullptr) {
      return Status(kLevelError, kCauseInvalidArgument, "serialized_size is null")
          .SetBlock("core");
    }
    T record{};
    if (serialized_input_size != 0) {
      if (serialized_input_property == nullptr) {
        return Status(kLevelError, kCauseInvalidArgument, "serialized_input_property is null")
            .SetBlock("core");
      }
      serialize::MsgPackDecoder decoder(serialized_input_property, serialized_input_size);
      Status status = decoder.Pop(record);
      if (status.IsError()) return status.AddTrace(nullptr, 0);
    }
    Status status = source_->Get(key, &record);
    if (status.IsError()) return status.AddTrace(nullptr, 0);

    serialize::SerializedBuffer buffer;
    serialize::MsgPackEncoder encoder(&buffer);
    status = encoder.Push(record);
    if (status.IsError()) return status.AddTrace(nullptr, 0);

    // The reply is the client's until Release: handed out only once
    // everything that can fail has succeeded.
    const size_t size = buffer.size();
    std::unique_ptr<uint8_t[]> bytes;
    if (size != 0) {
      bytes.reset(new uint8_t[size]);
      serialize::Memcpy(bytes.get(), size, buffer.data(), size);
    }
    *serialized_size = size;
    *serialized_property = bytes.release();
    return Status();
  }

  Source* source_;  // not owned
};

}  // namespace weftcore
