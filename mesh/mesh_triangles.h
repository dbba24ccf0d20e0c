// Triangles of Part 2.1, steps 6 and 7: the fixed split of every grid cell
// and the re-fit test that may turn a cell to its other diagonal.
#pragma once

#include <cstdint>

namespace ZeltoMesh {

// Re-fit margin: a cell takes the other diagonal only when its depth jump is
// smaller by more than this (float32, metres).
constexpr float kRefitThreshold = 0.05f;

// Step 7's test for one cell, in the spec's order: a larger dA keeps the
// default split, a dA smaller by more than the threshold takes the other
// diagonal, anything else (including any NaN) leaves the cell as it is.
// dA = |z(b) - z(b+nx+1)|, dB = |z(b+1) - z(b+nx)|.
bool TakesOtherDiagonal(float dA, float dB);

// Step 6 for an nx x ny grid (both at least 2): per cell, rows outer, with
// b = j nx + i, the indices b, b+1, b+nx, b+1, b+nx+1, b+nx.
void WriteDefaultSplit(int32_t nx, int32_t ny, int32_t* triangles);

// The six indices `cell` of the cell whose top-left vertex is b: only the
// third and fourth differ between the default split (b+nx, b+1) and the
// other diagonal (b+nx+1, b).
inline void SetCellDiagonal(int32_t* cell, int32_t b, int32_t nx, bool other) {
  cell[2] = other ? b + nx + 1 : b + nx;
  cell[3] = other ? b : b + 1;
}

}  // namespace ZeltoMesh
