// Expected frame bytes written field by field, little-endian.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <vector>

namespace ZeltoTest {

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
  // Floats as their IEEE-754 bit patterns.
  LeBytes& F32Bits(std::initializer_list<uint32_t> patterns) {
    for (uint32_t pattern : patterns) U32(pattern);
    return *this;
  }
  LeBytes& I32s(std::initializer_list<int32_t> values) {
    for (int32_t value : values) I32(value);
    return *this;
  }
  size_t size() const { return bytes_.size(); }
  const std::vector<uint8_t>& bytes() const { return bytes_; }

 private:
  std::vector<uint8_t> bytes_;
};

}  // namespace ZeltoTest
