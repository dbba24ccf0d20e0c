// CellSplit: the record's per-cell diagonal flags, compared four cells at a
// time against what the depths ask for, so that a reset frame rewrites only
// the cells that change.
#include "mesh/cell_split.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "mesh/mesh_triangles.h"
#include "mesh/vector4.h"

namespace ZeltoMesh {
namespace {

// fabs of every lane: the sign bit cleared.
Float4 AbsoluteValue(Float4 value) {
  return BitCast<Float4>(BitCast<Int4>(value) & Broadcast(int32_t{0x7fffffff}));
}

// TakesOtherDiagonal for four cells, as 0 or 1 in each byte of the result
// (lane l in byte l: the order of four flag bytes read as a little-endian
// uint32).
uint32_t OtherDiagonalBytes(const float* zTop, const float* zBottom) {
  const Float4 dA = AbsoluteValue(LoadFloat4(zTop) - LoadFloat4(zBottom + 1));
  const Float4 dB = AbsoluteValue(LoadFloat4(zTop + 1) - LoadFloat4(zBottom));
  const Float4 threshold = Broadcast(kRefitThreshold);
  const Int4 other = ~(dA > dB + threshold) & (dA + threshold < dB);
  const Int4 bytes = other & Int4{1, 1 << 8, 1 << 16, 1 << 24};
  return static_cast<uint32_t>(bytes[0] | bytes[1] | bytes[2] | bytes[3]);
}

}  // namespace

void CellSplit::Resize(int64_t cells) {
  other_.assign(static_cast<size_t>(cells), 0);
  known_ = false;
}

void CellSplit::Release() {
  other_ = std::vector<uint8_t>();
  known_ = false;
}

void CellSplit::Prepare(int32_t nx, int32_t ny, int32_t* triangles) {
  if (known_ && nx == nx_ && ny == ny_) return;
  WriteDefaultSplit(nx, ny, triangles);
  std::fill(other_.begin(), other_.end(), 0);
  nx_ = nx;
  ny_ = ny;
  otherCount_ = 0;
  known_ = true;
}

void CellSplit::SetCell(int64_t cell, bool other, int32_t* triangles) {
  const int32_t cellsPerRow = nx_ - 1;
  const int32_t b = static_cast<int32_t>(cell / cellsPerRow * nx_ + cell % cellsPerRow);
  SetCellDiagonal(triangles + 6 * cell, b, nx_, other);
  otherCount_ += other ? 1 : -1;
  other_[static_cast<size_t>(cell)] = other ? 1 : 0;
}

void CellSplit::RefitRow(int32_t j, const float* zTop, const float* zBottom, int32_t* triangles) {
  const int32_t cellsPerRow = nx_ - 1;
  const int64_t rowCell = static_cast<int64_t>(j) * cellsPerRow;
  const uint8_t* flags = other_.data() + rowCell;
  int32_t i = 0;
  for (; i + 4 <= cellsPerRow; i += 4) {
    const uint32_t wanted = OtherDiagonalBytes(zTop + i, zBottom + i);
    uint32_t held;
    std::memcpy(&held, flags + i, sizeof held);
    if (wanted == held) continue;  // the usual case: nothing to rewrite
    for (int32_t lane = 0; lane < 4; ++lane) {
      const bool other = ((wanted >> (8 * lane)) & 1) != 0;
      if (other != (flags[i + lane] != 0)) SetCell(rowCell + i + lane, other, triangles);
    }
  }
  for (; i < cellsPerRow; ++i) {
    const bool other = TakesOtherDiagonal(std::fabs(zTop[i] - zBottom[i + 1]),
                                          std::fabs(zTop[i + 1] - zBottom[i]));
    if (other != (flags[i] != 0)) SetCell(rowCell + i, other, triangles);
  }
}

template <typename Visit>
void CellSplit::ForEachOther(Visit visit) const {
  if (otherCount_ == 0) return;
  const size_t cells = other_.size();
  size_t cell = 0;
  for (; cell + 8 <= cells; cell += 8) {
    uint64_t eight;
    std::memcpy(&eight, other_.data() + cell, sizeof eight);
    if (eight == 0) continue;
    for (size_t k = 0; k < 8; ++k) {
      if (other_[cell + k] != 0) visit(static_cast<int64_t>(cell + k));
    }
  }
  for (; cell < cells; ++cell) {
    if (other_[cell] != 0) visit(static_cast<int64_t>(cell));
  }
}

void CellSplit::ClearOther(int32_t* triangles) {
  ForEachOther([&](int64_t cell) { SetCell(cell, false, triangles); });
}

void CellSplit::WriteTo(int32_t* target) const {
  WriteDefaultSplit(nx_, ny_, target);
  const int32_t cellsPerRow = nx_ - 1;
  ForEachOther([&](int64_t cell) {
    const int32_t b = static_cast<int32_t>(cell / cellsPerRow * nx_ + cell % cellsPerRow);
    SetCellDiagonal(target + 6 * cell, b, nx_, true);
  });
}

}  // namespace ZeltoMesh
