// The default split, written two cells per three vector stores.
#include "mesh/mesh_triangles.h"

#include "mesh/vector4.h"

namespace ZeltoMesh {

bool TakesOtherDiagonal(float dA, float dB) {
  if (dA > dB + kRefitThreshold) return false;  // default split kept
  return dA + kRefitThreshold < dB;
}

void WriteDefaultSplit(int32_t nx, int32_t ny, int32_t* triangles) {
  // Cells b and b + 1 are twelve indices: three vectors of b plus these.
  const Int4 first = {0, 1, nx, 1};
  const Int4 second = {nx + 1, nx, 1, 2};
  const Int4 third = {nx + 1, 2, nx + 2, nx + 1};
  const auto writeCell = [nx](int32_t b, int32_t* out) {
    out[0] = b;
    out[1] = b + 1;
    out[4] = b + nx + 1;
    out[5] = b + nx;
    SetCellDiagonal(out, b, nx, false);
  };
  int32_t* out = triangles;
  for (int32_t j = 0; j + 1 < ny; ++j) {
    const int32_t rowStart = j * nx;
    int32_t i = 0;
    // A row that starts 8 bytes past a 16-byte boundary (every other row of
    // an even-width flat frame) begins with one cell of 24 bytes, so that
    // the vector stores that follow do not straddle cache lines.
    if (reinterpret_cast<uintptr_t>(out) % 16 == 8 && i + 1 < nx) {
      writeCell(rowStart + i, out);
      ++i;
      out += 6;
    }
    for (; i + 2 < nx; i += 2, out += 12) {
      const Int4 b = Broadcast(rowStart + i);
      Store(out + 0, b + first);
      Store(out + 4, b + second);
      Store(out + 8, b + third);
    }
    for (; i + 1 < nx; ++i, out += 6) writeCell(rowStart + i, out);
  }
}

}  // namespace ZeltoMesh
