// Vertices of the grid, four pixels per vector, into the record and, for the
// flat layout, into the frame memory in the same pass.
#include "mesh/mesh_vertices.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "mesh/vector4.h"

namespace ZeltoMesh {
namespace {

// Clients compare meshes byte for byte, and an x86-64 host and an arm64
// device must deliver the same bytes for the same frame. So each coordinate
// is computed in one fixed order, every step rounded to float32: the depth
// divided by the focal length, multiplied by the pixel's offset from the
// principal point, then divided by 1000 (millimetres to metres). The component
// is compiled with -ffp-contract=off so that no multiply-add fuses two steps
// into one rounding, and the vector lanes compute exactly the scalar
// expressions.
struct VertexMath {
  float fx;
  float fy;
  float cx;
  float vOffset;  // v - cy of the row

  void Scalar(int32_t u, int32_t d, float* out) const {
    if (d < 10) d = kInvalidDepth;
    const float z = static_cast<float>(d);
    out[0] = ((static_cast<float>(u) - cx) * (z / fx)) / 1000.0f;
    out[1] = (vOffset * (z / fy)) / 1000.0f;
    out[2] = z / 1000.0f;
  }

  void Vector(Int4 u, Int4 d, float* out, float* mirror, float* zRow) const {
    d = Select(d < Broadcast(10), Broadcast(int32_t{kInvalidDepth}), d);
    const Float4 z = __builtin_convertvector(d, Float4);
    const Float4 thousand = Broadcast(1000.0f);
    const Float4 uOffset = __builtin_convertvector(u, Float4) - Broadcast(cx);
    const Float4 x = (uOffset * (z / Broadcast(fx))) / thousand;
    const Float4 y = (Broadcast(vOffset) * (z / Broadcast(fy))) / thousand;
    const Float4 zMetres = z / thousand;
    StoreInterleaved3(out, x, y, zMetres);
    if (mirror != nullptr) StoreInterleaved3(mirror, x, y, zMetres);
    if (zRow != nullptr) Store(zRow, zMetres);
  }
};

using Short8 = int16_t __attribute__((vector_size(16)));
using Short4 = int16_t __attribute__((vector_size(8)));

// The depth of pixel u of a row. The host's point-cloud buffer carries no
// alignment promise (a frame may start at any byte of a larger block), so
// samples are copied out of it, never read through an int16_t pointer.
int32_t DepthAt(const unsigned char* row, int64_t u) {
  int16_t depth;
  std::memcpy(&depth, row + 6 * u + 4, sizeof depth);
  return depth;
}

// The depths of the four adjacent pixels u .. u + 3: their 24 bytes as two
// overlapping 16-byte loads, z being the samples 2, 5, 8 and 11.
Int4 FourAdjacentDepths(const unsigned char* row, int64_t u) {
  Short8 low;
  Short8 high;  // samples 4 .. 11
  std::memcpy(&low, row + 6 * u, sizeof low);
  std::memcpy(&high, row + 6 * u + 8, sizeof high);
  const Short4 z = __builtin_shufflevector(low, high, 2, 5, 12, 15);
  return __builtin_convertvector(z, Int4);
}

// One grid row: `count` samples u = 0, step, 2 step, ... (all below the
// width, so int32) of the pixel row `row` (x, y, z int16 per pixel).
void WriteRow(const unsigned char* row, int32_t step, int64_t count, const VertexMath& math,
              float* out, float* mirror, float* zRow) {
  const auto depthAt = [row](int64_t u) { return DepthAt(row, u); };
  int64_t i = 0;
  for (; i + 4 <= count; i += 4) {
    const Int4 u = Broadcast(static_cast<int32_t>(i * step)) + Int4{0, 1, 2, 3} * step;
    const Int4 d = step == 1 ? FourAdjacentDepths(row, i)
                             : Int4{depthAt(u[0]), depthAt(u[1]), depthAt(u[2]), depthAt(u[3])};
    math.Vector(u, d, out + 3 * i, mirror == nullptr ? nullptr : mirror + 3 * i,
                zRow == nullptr ? nullptr : zRow + i);
  }
  for (; i < count; ++i) {
    const int32_t u = static_cast<int32_t>(i * step);
    math.Scalar(u, depthAt(u), out + 3 * i);
    if (mirror != nullptr) math.Scalar(u, depthAt(u), mirror + 3 * i);
    if (zRow != nullptr) zRow[i] = out[3 * i + 2];
  }
}

// Pixel row v, as bytes: see DepthAt.
const unsigned char* PixelRow(const int16_t* depth, int32_t width, int64_t v) {
  return reinterpret_cast<const unsigned char*>(depth) + 6 * v * width;
}

}  // namespace

void WriteVertices(const int16_t* depth, int32_t width, int32_t height, int32_t step,
                   const PinholeIntrinsics& intrinsics, float* vertices, float* mirror,
                   int32_t vertexCount) {
  int64_t written = 0;
  if (width >= 1 && height >= 1 && step >= 1) {
    const int64_t samplesPerRow = (static_cast<int64_t>(width) - 1) / step + 1;
    for (int64_t v = 0; v < height && written < vertexCount; v += step) {
      const VertexMath math{intrinsics.fx, intrinsics.fy, intrinsics.cx,
                            static_cast<float>(v) - intrinsics.cy};
      const int64_t count = std::min<int64_t>(samplesPerRow, vertexCount - written);
      WriteRow(PixelRow(depth, width, v), step, count, math, vertices + 3 * written,
               mirror == nullptr ? nullptr : mirror + 3 * written, nullptr);
      written += count;
    }
  }
  const int64_t end = 3 * static_cast<int64_t>(vertexCount);
  std::fill(vertices + 3 * written, vertices + end, 0.0f);
  if (mirror != nullptr) std::fill(mirror + 3 * written, mirror + end, 0.0f);
}

void WriteVertexRow(const int16_t* depth, int32_t width, int32_t step,
                    const PinholeIntrinsics& intrinsics, int32_t j, int32_t nx, float* out,
                    float* mirror, float* zRow) {
  const int64_t v = static_cast<int64_t>(j) * step;
  const VertexMath math{intrinsics.fx, intrinsics.fy, intrinsics.cx,
                        static_cast<float>(v) - intrinsics.cy};
  const int64_t first = static_cast<int64_t>(j) * nx;
  WriteRow(PixelRow(depth, width, v), step, nx, math, out + 3 * first,
           mirror == nullptr ? nullptr : mirror + 3 * first, zRow);
}

}  // namespace ZeltoMesh
