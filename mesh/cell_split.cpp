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

// TakesOtherDiagonal for four cells: all ones in the lanes of the cells that
// take the other diagonal.
Int4 OtherDiagonalLanes(const float* zTop, const float* zBottom) {
  const Float4 dA = AbsoluteValue(LoadFloat4(zTop) - LoadFloat4(zBottom + 1));
  const Float4 dB = AbsoluteValue(LoadFloat4(zTop + 1) - LoadFloat4(zBottom));
  const Float4 threshold = Broadcast(kRefitThreshold);
  return ~(dA > dB + threshold) & (dA + threshold < dB);
}

// Four lanes of OtherDiagonalLanes as 0 or 1 in each byte of the result
// (lane l in byte l: the order of four flag bytes read as a little-endian
// uint32).
uint32_t FlagBytes(Int4 lanes) {
  const Int4 bytes = lanes & Int4{1, 1 << 8, 1 << 16, 1 << 24};
  return static_cast<uint32_t>(bytes[0] | bytes[1] | bytes[2] | bytes[3]);
}

bool AllZero(Int4 lanes) {
  uint64_t halves[2];
  std::memcpy(halves, &lanes, sizeof halves);
  return (halves[0] | halves[1]) == 0;
}

// The number of cells flagged in four flag bytes (each 0 or 1).
int64_t FlagCount(uint32_t bytes) { return (bytes * 0x01010101u) >> 24; }

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

void CellSplit::Mark(int32_t j, int32_t i, int32_t count, uint32_t wanted,
                     int32_t* triangles) {
  const int64_t cell = static_cast<int64_t>(j) * (nx_ - 1) + i;
  uint8_t* flags = other_.data() + cell;
  uint32_t held = 0;
  for (int32_t lane = 0; lane < count; ++lane) held |= uint32_t{flags[lane]} << (8 * lane);
  if (wanted == held) return;  // the usual case on real depths: nothing to rewrite
  for (int32_t lane = 0; lane < count; ++lane) flags[lane] = (wanted >> (8 * lane)) & 1;
  otherCount_ += FlagCount(wanted) - FlagCount(held);
  // The cells' indices are bytes 8 to 87 from the first cell: at most two
  // cache lines, fetched now and written a grid row later.
  const int32_t* cells = triangles + 6 * cell;
  __builtin_prefetch(cells + 2, 1);
  __builtin_prefetch(cells + 21, 1);
  if (pendingCount_ == static_cast<int32_t>(pending_.size())) WritePending(triangles);
  pending_[static_cast<size_t>(pendingCount_++)] = Pending{j, i, count};
}

void CellSplit::WritePending(int32_t* triangles) {
  for (int32_t k = 0; k < pendingCount_; ++k) {
    const Pending& group = pending_[static_cast<size_t>(k)];
    const int64_t cell = static_cast<int64_t>(group.j) * (nx_ - 1) + group.i;
    const int32_t b = group.j * nx_ + group.i;
    // All the group's cells are written, changed or not: cheaper than a
    // branch per cell that noisy depths make unpredictable.
    for (int32_t lane = 0; lane < group.count; ++lane) {
      const int32_t other = other_[static_cast<size_t>(cell + lane)];
      SetCellDiagonal(triangles + 6 * (cell + lane), b + lane, nx_, other);
    }
  }
  pendingCount_ = 0;
}

void CellSplit::RefitRow(int32_t j, const float* zTop, const float* zBottom, int32_t* triangles) {
  // The previous row's changes: their cache lines were fetched meanwhile, so
  // the stores do not wait for memory (and hold up the vertex stores behind them).
  WritePending(triangles);
  const int32_t cellsPerRow = nx_ - 1;
  const uint8_t* flags = other_.data() + static_cast<int64_t>(j) * cellsPerRow;
  int32_t i = 0;
  // Sixteen cells at a time: on real depths few cells take the other
  // diagonal and fewer change, so the usual group is passed over with one
  // test of the lanes and one of the flags held.
  for (; i + 16 <= cellsPerRow; i += 16) {
    Int4 lanes[4];
    for (int32_t k = 0; k < 4; ++k) {
      lanes[k] = OtherDiagonalLanes(zTop + i + 4 * k, zBottom + i + 4 * k);
    }
    uint64_t held[2];
    std::memcpy(held, flags + i, sizeof held);
    if (AllZero(lanes[0] | lanes[1] | lanes[2] | lanes[3]) && (held[0] | held[1]) == 0) continue;
    for (int32_t k = 0; k < 4; ++k) Mark(j, i + 4 * k, 4, FlagBytes(lanes[k]), triangles);
  }
  for (; i + 4 <= cellsPerRow; i += 4) {
    Mark(j, i, 4, FlagBytes(OtherDiagonalLanes(zTop + i, zBottom + i)), triangles);
  }
  uint32_t wanted = 0;
  for (int32_t lane = 0; i + lane < cellsPerRow; ++lane) {
    const bool other = TakesOtherDiagonal(std::fabs(zTop[i + lane] - zBottom[i + lane + 1]),
                                          std::fabs(zTop[i + lane + 1] - zBottom[i + lane]));
    wanted |= static_cast<uint32_t>(other) << (8 * lane);
  }
  if (i < cellsPerRow) Mark(j, i, cellsPerRow - i, wanted, triangles);
  if (j + 2 == ny_) WritePending(triangles);  // the last cell row
}

void CellSplit::ClearOther(int32_t* triangles) {
  const int32_t cellsPerRow = nx_ - 1;
  for (int32_t j = 0; otherCount_ != 0 && j + 1 < ny_; ++j) {
    WritePending(triangles);
    for (int32_t i = 0; i < cellsPerRow; i += 4) {
      Mark(j, i, std::min(4, cellsPerRow - i), 0, triangles);
    }
  }
  WritePending(triangles);
}

void CellSplit::WriteRowTo(int32_t j, int32_t* target) const {
  const int64_t cell = static_cast<int64_t>(j) * (nx_ - 1);
  WriteSplitRow(j, nx_, otherCount_ == 0 ? nullptr : other_.data() + cell, target + 6 * cell);
}

}  // namespace ZeltoMesh
