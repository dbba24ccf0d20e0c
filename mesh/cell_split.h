// Which cells of one record's index array take the other diagonal, so that
// a frame rewrites only the cells whose split changes. The delivered indices
// are those of a full rewrite (default split, then the re-fit); the record's
// array is simply not written where it already holds them, which saves most
// of the index traffic of a 640 x 480 frame.
#pragma once

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

  // The whole index array, as `triangles` holds it, written to `target`
  // without reading `triangles`.
  void WriteTo(int32_t* target) const;

 private:
  template <typename Visit>
  void ForEachOther(Visit visit) const;
  void SetCell(int64_t cell, bool other, int32_t* triangles);

  std::vector<uint8_t> other_;  // 1 where the cell takes the other diagonal
  int32_t nx_ = 0;
  int32_t ny_ = 0;
  bool known_ = false;    // the array holds the split that other_ describes
  int64_t otherCount_ = 0;
};

}  // namespace ZeltoMesh
