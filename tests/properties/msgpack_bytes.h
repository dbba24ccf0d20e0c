// Hand-written MessagePack bytes for the golden tests of Parts 4.1 to 4.3.
// Expectations are spelled out byte by byte; these helpers only glue pieces
// together (and never call the encoder under test).
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

// A key: fixstr header 0xA0 | length, then the text (all keys are < 32 bytes).
inline Bytes Key(const std::string& name) {
  if (name.size() > 31) throw std::logic_error("key longer than a fixstr");
  return Cat({Bytes{static_cast<uint8_t>(0xA0 | name.size())}, Raw(name)});
}

// float 32: 0xCA then the IEEE bits, big-endian, as written in the test.
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

// The encoder under test, as the accessor uses it.
template <typename T>
Bytes Encode(const T& record) {
  weftcore::serialize::SerializedBuffer buffer;
  weftcore::serialize::MsgPackEncoder encoder(&buffer);
  const weftcore::Status status = encoder.Push(record);
  if (status.IsError()) throw std::runtime_error("Push failed: " + status.message());
  return Bytes(buffer.data(), buffer.data() + buffer.size());
}

// The decoder under test over `bytes` from offset 0.
template <typename T>
weftcore::Status Decode(const Bytes& bytes, T& record) {
  weftcore::serialize::MsgPackDecoder decoder(bytes.data(), bytes.size());
  return decoder.Pop(record);
}

}  // namespace zelto_test
