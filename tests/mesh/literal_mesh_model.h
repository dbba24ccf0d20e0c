// Part 2.1 written out literally, step by step, with the temporary arrays,
// the zeroing and the two passes over the cells, for comparison with the
// builder on many inputs. Only for sane inputs (extents below 2^24, levels
// from 0 to 2^30): it does not guard against the overflows the builder does.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

namespace ZeltoTest {

struct LiteralMesh {
  int32_t vertexCount = 0;
  int32_t triangleCount = 0;
  std::vector<float> vertices;
  std::vector<int32_t> triangles;
  uint8_t resetTriangle = 0;

  // Step 10, flat layout, assembled byte by byte.
  std::vector<uint8_t> FlatBytes() const {
    std::vector<uint8_t> bytes;
    const auto push32 = [&bytes](uint32_t value) {
      for (int i = 0; i < 4; ++i) bytes.push_back(static_cast<uint8_t>(value >> (8 * i)));
    };
    push32(static_cast<uint32_t>(vertexCount));
    for (float value : vertices) {
      uint32_t bits;
      std::memcpy(&bits, &value, sizeof bits);
      push32(bits);
    }
    push32(static_cast<uint32_t>(triangleCount));
    for (int32_t index : triangles) push32(static_cast<uint32_t>(index));
    bytes.push_back(resetTriangle);
    return bytes;
  }
};

class LiteralMeshModel {
 public:
  int32_t meshReductionLevel = 0;
  int32_t resetTrianglePeriod = 4;

  LiteralMesh Build(const int16_t* cloud, int32_t width, int32_t height, float fx, float fy,
                    float cx, float cy) {
    LiteralMesh mesh;
    // Step 2.
    const int32_t step = meshReductionLevel + 1;
    const int32_t nx = static_cast<int32_t>(std::ceil(static_cast<float>(width) / static_cast<float>(step)));
    const int32_t ny = static_cast<int32_t>(std::ceil(static_cast<float>(height) / static_cast<float>(step)));
    mesh.vertexCount = nx * ny;
    mesh.triangleCount = nx > 0 && ny > 0 ? 2 * (nx - 1) * (ny - 1) : 0;
    // Step 3 (the temporary's unwritten floats are zero here).
    std::vector<float> vertices(3 * static_cast<size_t>(mesh.vertexCount), 0.0f);
    // Step 4.
    size_t written = 0;
    if (width >= 1 && height >= 1) {
      for (int32_t v = 0; v < height; v += step) {
        for (int32_t u = 0; u < width; u += step) {
          if (written == vertices.size()) break;
          int32_t d = cloud[(static_cast<size_t>(v) * width + u) * 3 + 2];
          if (d < 10) d = 32001;
          const float z = static_cast<float>(d);
          float x = static_cast<float>(u) - cx;
          x = x * (z / fx);
          x = x / 1000.0f;
          float y = static_cast<float>(v) - cy;
          y = y * (z / fy);
          y = y / 1000.0f;
          vertices[written++] = x;
          vertices[written++] = y;
          vertices[written++] = z / 1000.0f;
        }
      }
    }
    // Step 5.
    ++counter_;
    const int32_t remainder = resetTrianglePeriod == 0 ? counter_ : counter_ % resetTrianglePeriod;
    const bool reset = remainder == 0;
    // Steps 3 and 6.
    std::vector<int32_t> triangles(3 * static_cast<size_t>(mesh.triangleCount));
    if (nx >= 2 && ny >= 2) {
      size_t t = 0;
      for (int32_t j = 0; j <= ny - 2; ++j) {
        for (int32_t i = 0; i <= nx - 2; ++i) {
          const int32_t b = j * nx + i;
          for (int32_t index : {b, b + 1, b + nx, b + 1, b + nx + 1, b + nx}) triangles[t++] = index;
        }
      }
      // Step 7.
      if (reset) {
        size_t cell = 0;
        for (int32_t j = 0; j <= ny - 2; ++j) {
          for (int32_t i = 0; i <= nx - 2; ++i, cell += 6) {
            const int32_t b = j * nx + i;
            const auto z = [&vertices](int32_t vertex) { return vertices[3 * static_cast<size_t>(vertex) + 2]; };
            const float dA = std::fabs(z(b) - z(b + nx + 1));
            const float dB = std::fabs(z(b + 1) - z(b + nx));
            if (dA > dB + 0.05f) {
              triangles[cell + 2] = b + nx;
              triangles[cell + 3] = b + 1;
            } else if (dA + 0.05f < dB) {
              const int32_t other[6] = {b, b + 1, b + nx + 1, b, b + nx + 1, b + nx};
              for (int k = 0; k < 6; ++k) triangles[cell + k] = other[k];
            }
          }
        }
      }
    }
    mesh.vertices = vertices;
    mesh.triangles = triangles;
    mesh.resetTriangle = reset ? 1 : 0;
    return mesh;
  }

 private:
  int32_t counter_ = 0;
};

}  // namespace ZeltoTest
