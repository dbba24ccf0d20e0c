// Bytes written out by hand for the wire-format tests: MessagePack pieces,
// little-endian frame fields and a readable hex form. Expectations are
// spelled out byte by byte; these helpers only glue pieces together, and the
// encoder and decoder under test are reached through Encode and Decode.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <vector>

#include "weftcore/serialize.h"

namespace zelto_test {

using Bytes = std::vector<uint8_t>;

inline Bytes Cat(std::initializer_list<Bytes> parts) {
  Bytes bytes;
  for (const Bytes& part : parts) bytes.insert(bytes.end(), part.begin(), part.end());
  return bytes;
}

// The text's bytes without any header.
inline Bytes Raw(const std::string& text) { return Bytes(text.begin(), text.end()); }

// A fixstr: 0xA0 | length, then the text (every key of the project is
// shorter than 32 bytes).
inline Bytes Key(const std::string& name) {
  if (name.size() > 31) throw std::logic_error("key longer than a fixstr");
  return Cat({Bytes{static_cast<uint8_t>(0xA0 | name.size())}, Raw(name)});
}

// float 32: 0xCA, then the IEEE bits big-endian.
inline Bytes F32(uint32_t bits) {
  return Bytes{0xCA, static_cast<uint8_t>(bits >> 24), static_cast<uint8_t>(bits >> 16),
               static_cast<uint8_t>(bits >> 8), static_cast<uint8_t>(bits)};
}

// "81 a8 6c ..." for readable failure output.
inline std::string Hex(const Bytes& bytes) {
  std::string text;
  char piece[4];
  for (size_t i = 0; i < bytes.size(); ++i) {
    std::snprintf(piece, sizeof piece, i == 0 ? "%02x" : " %02x", bytes[i]);
    text += piece;
  }
  return text;
}

// Frame fields as the mesh layouts store them: little-endian, floats as
// their IEEE bit patterns.
class LeBytes {
 public:
  LeBytes& U8(uint8_t value) {
    bytes_.push_back(value);
    return *this;
  }
  LeBytes& U32(uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) bytes_.push_back(static_cast<uint8_t>(value >> shift));
    return *this;
  }
  LeBytes& I32(int32_t value) { return U32(static_cast<uint32_t>(value)); }
  LeBytes& U64(uint64_t value) {
    for (int shift = 0; shift < 64; shift += 8) bytes_.push_back(static_cast<uint8_t>(value >> shift));
    return *this;
  }
  LeBytes& F32Bits(std::initializer_list<uint32_t> patterns) {
    for (uint32_t pattern : patterns) U32(pattern);
    return *this;
  }
  LeBytes& I32s(std::initializer_list<int32_t> values) {
    for (int32_t value : values) I32(value);
    return *this;
  }
  const Bytes& bytes() const { return bytes_; }

 private:
  Bytes bytes_;
};

// The encoder under test, as the property accessors use it.
template <typename T>
Bytes Encode(const T& record) {
  weftcore::serialize::SerializedBuffer buffer;
  weftcore::serialize::MsgPackEncoder encoder(&buffer);
  const weftcore::Status status = encoder.Push(record);
  if (status.IsError()) throw std::runtime_error("Push failed: " + status.message());
  return Bytes(buffer.data(), buffer.data() + buffer.size());
}

// The decoder under test over `bytes` from offset 0, into `record` as it is.
template <typename T>
weftcore::Status Decode(const Bytes& bytes, T& record) {
  weftcore::serialize::MsgPackDecoder decoder(bytes.data(), bytes.size());
  return decoder.Pop(record);
}

}  // namespace zelto_test
