// Which cells of one record's index array take the other diagonal, so that
// a frame rewrites only the cells whose split changes. The delivered indices
// are those of a full rewrite (default split, then the re-fit); the record's
// array is simply not written where it already holds them, which saves most
// of the index traffic of a 640 x 480 frame.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace ZeltoMesh {

class CellSplit {
 public:
  // For a newly allocated index array of `cells` cells: nothing is known of
  // its content. May throw std::bad_alloc.
  void Resize(int64_t cells);
  // The array was freed.
  void Release();

  // Makes `triangles` hold a known split of the nx x ny grid: the default
  // split is written unless the array already holds a split of that grid.
  void Prepare(int32_t nx, int32_t ny, int32_t* triangles);

  // The re-fit of cell row j (0 .. ny - 2) of a reset frame: zTop and zBottom
  // are the z of grid rows j and j + 1 (nx floats each). Cells whose split
  // changes are rewritten in `triangles`.
  void RefitRow(int32_t j, const float* zTop, const float* zBottom, int32_t* triangles);

  // A non-reset frame: every cell back to the default split.
  void ClearOther(int32_t* triangles);

  // Cell row j of the index array, as `triangles` holds it, written to the
  // same place in `target` without reading `triangles`: the flat layout's
  // copy, written row by row while the row's flags are in the cache.
  void WriteRowTo(int32_t j, int32_t* target) const;

 private:
  // Sets the flags of cells i .. i + count - 1 (count 1 to 4) of cell row j
  // to `wanted` (byte l for cell i + l); when any changes, the cells'
  // diagonals in `triangles` are prefetched and left for WritePending.
  void Mark(int32_t j, int32_t i, int32_t count, uint32_t wanted, int32_t* triangles);
  // Rewrites the diagonals of the marked cells from their flags.
  void WritePending(int32_t* triangles);

  struct Pending {
    int32_t j;
    int32_t i;
    int32_t count;
  };

  std::vector<uint8_t> other_;  // 1 where the cell takes the other diagonal
  int32_t nx_ = 0;
  int32_t ny_ = 0;
  bool known_ = false;    // the array holds the split that other_ describes
  int64_t otherCount_ = 0;  // flags set in other_
  // Marked cell groups whose indices are not rewritten yet: a fixed array,
  // so that a frame allocates nothing; when full it is written at once.
  std::array<Pending, 64> pending_{};
  int32_t pendingCount_ = 0;
};

}  // namespace ZeltoMesh
