// Fields of a flat-layout channel (Part 2.1, step 10), read little-endian.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace ZeltoTest {

inline uint32_t ReadU32(const std::vector<uint8_t>& bytes, size_t offset) {
  return static_cast<uint32_t>(bytes.at(offset)) | static_cast<uint32_t>(bytes.at(offset + 1)) << 8 |
         static_cast<uint32_t>(bytes.at(offset + 2)) << 16 |
         static_cast<uint32_t>(bytes.at(offset + 3)) << 24;
}

struct FlatView {
  const std::vector<uint8_t>& bytes;

  int32_t vertexCount() const { return static_cast<int32_t>(ReadU32(bytes, 0)); }
  // x, y, z bit patterns of vertex `index`.
  std::array<uint32_t, 3> vertexBits(size_t index) const {
    const size_t offset = 4 + 12 * index;
    return {ReadU32(bytes, offset), ReadU32(bytes, offset + 4), ReadU32(bytes, offset + 8)};
  }
  size_t triangleCountOffset() const { return 4 + 12 * static_cast<size_t>(vertexCount()); }
  int32_t triangleCount() const {
    return static_cast<int32_t>(ReadU32(bytes, triangleCountOffset()));
  }
  std::vector<int32_t> indices() const {
    std::vector<int32_t> result;
    for (int32_t i = 0; i < 3 * triangleCount(); ++i) {
      result.push_back(static_cast<int32_t>(ReadU32(bytes, triangleCountOffset() + 4 + 4 * i)));
    }
    return result;
  }
  uint8_t resetTriangle() const { return bytes.at(bytes.size() - 1); }
  size_t expectedSize() const {
    return 12 * static_cast<size_t>(vertexCount()) + 12 * static_cast<size_t>(triangleCount()) + 9;
  }
};

}  // namespace ZeltoTest
