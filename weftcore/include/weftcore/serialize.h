// Property records to bytes and back, as clients and upstream streams
// exchange them: SerializedBuffer, MsgPackEncoder, MsgPackDecoder. Every
// record travels as one MessagePack map keyed by its field names.
#pragma once

#ifndef MSGPACK_NO_BOOST
#define MSGPACK_NO_BOOST
#endif

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <vector>

#include <msgpack.hpp>

#include "weftcore/export.h"
#include "weftcore/status.h"

namespace weftcore {
namespace serialize {

// Same shape as osal::OSMemcpy: copies nothing and returns false when `dst`
// cannot hold `count` bytes or a pointer is null.
WEFTCORE_API bool Memcpy(void* dst, size_t dst_size, const void* src, size_t count);

// A growable byte buffer; `write` is the sink interface of msgpack's packer.
class SerializedBuffer {
 public:
  void write(const char* bytes, size_t count) { Append(bytes, count); }
  void Append(const void* bytes, size_t count) {
    const auto* first = static_cast<const uint8_t*>(bytes);
    data_.insert(data_.end(), first, first + count);
  }
  const uint8_t* data() const { return data_.data(); }
  size_t size() const { return data_.size(); }

 private:
  std::vector<uint8_t> data_;
};

}  // namespace serialize
}  // namespace weftcore

// Every float field travels as float 32 (0xCA and the four IEEE bytes,
// big-endian), whatever its value: clients read a field by its type, and a
// calibration's -0.0 must arrive as -0.0. msgpack-c 4 packs a whole-valued
// float (0.0, -0.0, 1.0, 30.0) as an integer to save bytes, which would change
// the bytes a client sees and lose the sign of zero. This override
// writes float 32 for everything packed into the framework's buffer; it has
// to be seen before the packer is first used, hence here, in the one header
// every encoder includes.
template <>
inline msgpack::v1::packer<weftcore::serialize::SerializedBuffer>&
msgpack::v1::packer<weftcore::serialize::SerializedBuffer>::pack_float(float d) {
  uint32_t bits;
  std::memcpy(&bits, &d, sizeof bits);
  const char bytes[5] = {static_cast<char>(0xCA), static_cast<char>(bits >> 24),
                         static_cast<char>(bits >> 16), static_cast<char>(bits >> 8),
                         static_cast<char>(bits)};
  append_buffer(bytes, sizeof bytes);
  return *this;
}

namespace weftcore {
namespace serialize {

class MsgPackEncoder {
 public:
  explicit MsgPackEncoder(SerializedBuffer* buffer) : buffer_(buffer) {}

  template <typename T>
  Status Push(const T& property) {
    if (buffer_ == nullptr) {
      return Status(kLevelError, kCauseInvalidArgument, "buffer is null").SetBlock("core");
    }
    try {
      msgpack::packer<SerializedBuffer> packer(*buffer_);
      packer.pack(property);
    } catch (const std::exception& e) {
      return Status(kLevelError, kCauseSerializer, "what=%s, buffer_size=%zu", e.what(),
                    buffer_->size())
          .SetBlock("core");
    }
    return Status();
  }

 private:
  SerializedBuffer* buffer_;
};

class MsgPackDecoder {
 public:
  MsgPackDecoder(const void* data, size_t size, size_t offset = 0)
      : data_(static_cast<const char*>(data)), size_(size), offset_(offset) {}

  size_t offset() const { return offset_; }

  template <typename T>
  Status Pop(T& property) {
    if (data_ == nullptr) {
      return Status(kLevelError, kCauseInvalidArgument, "buffer is null").SetBlock("core");
    }
    if (size_ <= offset_) {
      return Status(kLevelError, kCauseEndOfData, "end of buffer: size=%zu, offset=%zu", size_,
                    offset_)
          .SetBlock("core");
    }
    // `current` is where the parser got to: past the object once the parse
    // succeeds (so a failed conversion reports the byte after the object).
    size_t current = offset_;
    try {
      msgpack::object_handle handle =
          msgpack::unpack(data_, size_, current, &ReferenceEverything, nullptr, Limits());
      handle.get().convert(property);
    } catch (const msgpack::insufficient_bytes& e) {
      // The input ended inside an object. msgpack-c 4 leaves `current` at the
      // start of the unfinished element; the report names the end of the
      // input instead (shown as byte 0x00), which is where a client that cut
      // its buffer short should look.
      return Failure(e, size_);
    } catch (const std::exception& e) {
      return Failure(e, current);
    }
    offset_ = current;
    return Status();
  }

 private:
  static bool ReferenceEverything(msgpack::type::object_type, size_t, void*) { return true; }

  Status Failure(const std::exception& e, size_t current) const {
    const unsigned char byte = current < size_ ? static_cast<unsigned char>(data_[current]) : 0;
    return Status(kLevelError, kCauseSerializer,
                  "what=%s, buffer_size=%zu, offset=%zu, current=%zu(0x%02hhx)", e.what(), size_,
                  offset_, current, byte)
        .SetBlock("core");
  }

  // Parser limits. No array, map, string or binary can hold more elements or
  // bytes than the input has left, so a larger count is refused before
  // anything is allocated for it: a hostile four-byte header must not make
  // the process reserve gigabytes. Nesting is bounded the same way and no
  // tighter: the parser keeps its open containers on the heap, not on the
  // call stack, and a record skips a key it does not know however deep that
  // key's value nests, so a client's extra data never fails the whole map.
  msgpack::unpack_limit Limits() const {
    const size_t left = size_ - offset_;
    return msgpack::unpack_limit(left, left, left, left, left, left);
  }

  const char* data_;
  size_t size_;
  size_t offset_;
};

}  // namespace serialize
}  // namespace weftcore
