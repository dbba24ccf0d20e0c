// MessagePack bytes written out by hand, for the wire-format tests.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zelto_test {

using Bytes = std::vector<uint8_t>;

// A fixstr: header 0xA0 + length, then the text (keys of this project are
// all shorter than 32 bytes).
inline Bytes FixStr(const std::string& text) {
  Bytes bytes{static_cast<uint8_t>(0xA0 + text.size())};
  bytes.insert(bytes.end(), text.begin(), text.end());
  return bytes;
}

// Concatenation of byte pieces.
inline Bytes Concat(std::initializer_list<Bytes> pieces) {
  Bytes bytes;
  for (const Bytes& piece : pieces) bytes.insert(bytes.end(), piece.begin(), piece.end());
  return bytes;
}

}  // namespace zelto_test
