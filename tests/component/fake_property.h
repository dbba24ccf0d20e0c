// One property of a fake upstream stream: a record that reads answer and
// writes replace, readable or writable or failing on demand, with a record
// of what the mesh source sent. Configure it before the stream is opened or
// between calls of the source; it takes no lock.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "weftcore/serialize.h"
#include "weftcore/status.h"

namespace zelto_test {

// The serialized face of a fake property, which FakePropertyAccessor serves.
class FakePropertyBase {
 public:
  explicit FakePropertyBase(std::string key) : key_(std::move(key)) {}
  virtual ~FakePropertyBase() = default;
  FakePropertyBase(const FakePropertyBase&) = delete;
  FakePropertyBase& operator=(const FakePropertyBase&) = delete;

  const std::string& key() const { return key_; }
  // `input` is the record the reader sent; `reply` receives the answer.
  virtual weftcore::Status Read(const void* input, size_t inputSize,
                                std::vector<uint8_t>* reply) = 0;
  virtual weftcore::Status Write(const void* bytes, size_t size) = 0;

  // The statuses of refused reads and writes.
  weftcore::Status ReadFailure() const {
    return weftcore::Status(weftcore::kLevelError, weftcore::kCauseInvalidState,
                            "fake property %s is unreadable", key_.c_str())
        .SetBlock("fake");
  }
  std::string ThrowText() const { return "fake property " + key_ + " throws"; }
  weftcore::Status WriteFailure() const {
    return weftcore::Status(weftcore::kLevelError, weftcore::kCauseNotAvailable,
                            "fake property %s is not writable", key_.c_str())
        .SetBlock("fake");
  }

 private:
  std::string key_;
};

template <typename T>
class FakeProperty final : public FakePropertyBase {
 public:
  FakeProperty(std::string key, T initial) : FakePropertyBase(std::move(key)), value(initial) {}

  T value;                  // what a read answers; a successful write replaces it
  bool readable = true;     // false: every read fails with ReadFailure()
  bool writable = true;     // false: every write fails with WriteFailure()
  bool throwOnRead = false;  // true: a read throws std::runtime_error(ThrowText())
  int reads = 0;            // reads attempted, failed ones included
  std::vector<T> readInputs;  // the record each read sent, in order
  std::vector<T> writes;      // the records written successfully, in order
  int refusedWrites = 0;

  weftcore::Status Read(const void* input, size_t inputSize,
                        std::vector<uint8_t>* reply) override {
    ++reads;
    T sent{};
    if (inputSize != 0) {
      weftcore::serialize::MsgPackDecoder decoder(input, inputSize);
      weftcore::Status decoded = decoder.Pop(sent);
      if (decoded.IsError()) return decoded;
    }
    readInputs.push_back(sent);
    if (throwOnRead) throw std::runtime_error(ThrowText());
    if (!readable) return ReadFailure();
    weftcore::serialize::SerializedBuffer buffer;
    weftcore::serialize::MsgPackEncoder encoder(&buffer);
    weftcore::Status encoded = encoder.Push(value);
    if (encoded.IsError()) return encoded;
    reply->assign(buffer.data(), buffer.data() + buffer.size());
    return weftcore::Status();
  }

  weftcore::Status Write(const void* bytes, size_t size) override {
    if (!writable) {
      ++refusedWrites;
      return WriteFailure();
    }
    T written = value;
    weftcore::serialize::MsgPackDecoder decoder(bytes, size);
    weftcore::Status decoded = decoder.Pop(written);
    if (decoded.IsError()) return decoded;
    writes.push_back(written);
    value = written;
    return weftcore::Status();
  }
};

}  // namespace zelto_test
