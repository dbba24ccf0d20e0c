// Triangles of the grid: the default split of every cell and the re-fit test
// that may turn a cell to its other diagonal, so that the mesh follows depth
// edges instead of bridging them.
#pragma once

#include <cstdint>

namespace ZeltoMesh {

// Re-fit margin: a cell takes the other diagonal only when its depth jump is
// smaller by more than this (float32, metres).
constexpr float kRefitThreshold = 0.05f;

// The re-fit test for one cell: a larger dA keeps the default split, a dA
// smaller by more than the threshold takes the other diagonal, anything else
// (including any NaN) keeps the default split. Clients compare meshes byte
// for byte, so the vector form in cell_split.cpp evaluates exactly these two
// float comparisons.
// dA = |z(b) - z(b+nx+1)|, dB = |z(b+1) - z(b+nx)|.
bool TakesOtherDiagonal(float dA, float dB);

// The default split of an nx x ny grid (both at least 2): per cell, rows outer, with
// b = j nx + i, the indices b, b+1, b+nx, b+1, b+nx+1, b+nx.
void WriteDefaultSplit(int32_t nx, int32_t ny, int32_t* triangles);

// The nx - 1 cells of cell row j into `out` (6 indices each): the default
// split, except where the cell's byte in `other` is 1 (null: nowhere).
void WriteSplitRow(int32_t j, int32_t nx, const uint8_t* other, int32_t* out);

// The six indices `cell` of the cell whose top-left vertex is b: only the
// third and fourth differ between the default split (b+nx, b+1) and the
// other diagonal (b+nx+1, b). `other` is 0 or 1: arithmetic, not a branch,
// since on noisy depths the split changes from cell to cell at random.
inline void SetCellDiagonal(int32_t* cell, int32_t b, int32_t nx, int32_t other) {
  cell[2] = b + nx + other;
  cell[3] = b + 1 - other;
}

}  // namespace ZeltoMesh
