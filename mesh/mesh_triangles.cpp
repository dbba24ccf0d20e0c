// The split of the cells, written two cells per three vector stores.
#include "mesh/mesh_triangles.h"

#include "mesh/vector4.h"

namespace ZeltoMesh {

bool TakesOtherDiagonal(float dA, float dB) {
  if (dA > dB + kRefitThreshold) return false;  // default split kept
  return dA + kRefitThreshold < dB;
}

namespace {

// WriteSplitRow, compiled once for the default split alone (no flag read).
template <bool kWithFlags>
void WriteCellRow(int32_t j, int32_t nx, const uint8_t* other, int32_t* out) {
  // Cells b and b + 1 are twelve indices: three vectors of b plus these,
  // the first and the last moved by the cells' flags.
  const Int4 first = {0, 1, nx, 1};
  const Int4 second = {nx + 1, nx, 1, 2};
  const Int4 third = {nx + 1, 2, nx + 2, nx + 1};
  const auto flag = [other](int32_t i) -> int32_t { return kWithFlags ? other[i] : 0; };
  const auto writeCell = [nx](int32_t b, int32_t otherDiagonal, int32_t* cell) {
    cell[0] = b;
    cell[1] = b + 1;
    cell[4] = b + nx + 1;
    cell[5] = b + nx;
    SetCellDiagonal(cell, b, nx, otherDiagonal);
  };
  const int32_t rowStart = j * nx;
  int32_t i = 0;
  // A row that starts 8 bytes past a 16-byte boundary (every other row of
  // an even-width flat frame) begins with one cell of 24 bytes, so that
  // the vector stores that follow do not straddle cache lines.
  if (reinterpret_cast<uintptr_t>(out) % 16 == 8 && i + 1 < nx) {
    writeCell(rowStart + i, flag(i), out);
    ++i;
    out += 6;
  }
  for (; i + 2 < nx; i += 2, out += 12) {
    const Int4 b = Broadcast(rowStart + i);
    Int4 firstMoved = first;
    Int4 thirdMoved = third;
    // Few cells take the other diagonal on real depths: a pair without one
    // costs a test, not a flag-dependent vector.
    if (kWithFlags && (other[i] | other[i + 1]) != 0) {
      firstMoved += Int4{0, 0, other[i], -other[i]};
      thirdMoved += Int4{other[i + 1], -other[i + 1], 0, 0};
    }
    Store(out + 0, b + firstMoved);
    Store(out + 4, b + second);
    Store(out + 8, b + thirdMoved);
  }
  for (; i + 1 < nx; ++i, out += 6) writeCell(rowStart + i, flag(i), out);
}

}  // namespace

void WriteSplitRow(int32_t j, int32_t nx, const uint8_t* other, int32_t* out) {
  if (other == nullptr) {
    WriteCellRow<false>(j, nx, nullptr, out);
  } else {
    WriteCellRow<true>(j, nx, other, out);
  }
}

void WriteDefaultSplit(int32_t nx, int32_t ny, int32_t* triangles) {
  for (int32_t j = 0; j + 1 < ny; ++j) {
    WriteCellRow<false>(j, nx, nullptr, triangles + 6 * (static_cast<int64_t>(j) * (nx - 1)));
  }
}

}  // namespace ZeltoMesh
