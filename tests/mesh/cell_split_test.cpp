// Step 7's decision (Part 2.1) in its scalar and four-lane forms, NaN
// included, and the bookkeeping that rewrites only changed cells.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "mesh/cell_split.h"
#include "mesh/mesh_triangles.h"

namespace ZeltoTest {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

TEST(CellSplitDecision, TheSpecsThreeOutcomes) {
  EXPECT_FALSE(ZeltoMesh::TakesOtherDiagonal(1.0f, 0.0f));   // default kept
  EXPECT_TRUE(ZeltoMesh::TakesOtherDiagonal(0.0f, 1.0f));    // other diagonal
  EXPECT_FALSE(ZeltoMesh::TakesOtherDiagonal(0.0f, 0.05f));  // not more than 0.05 apart
  EXPECT_TRUE(ZeltoMesh::TakesOtherDiagonal(0.0f, 0.0501f));
}

TEST(CellSplitDecision, AComparisonInvolvingNanChangesNothing) {
  EXPECT_FALSE(ZeltoMesh::TakesOtherDiagonal(kNan, 1.0f));
  EXPECT_FALSE(ZeltoMesh::TakesOtherDiagonal(0.0f, kNan));
  EXPECT_FALSE(ZeltoMesh::TakesOtherDiagonal(kNan, kNan));
  EXPECT_FALSE(ZeltoMesh::TakesOtherDiagonal(kInf, kInf));
  EXPECT_TRUE(ZeltoMesh::TakesOtherDiagonal(0.0f, kInf));
}

// A 10 x 2 grid: nine cells in one row, so that eight go through the
// four-lane path and one through the scalar tail.
struct OneRow {
  static constexpr int32_t kNx = 10;
  std::vector<int32_t> triangles = std::vector<int32_t>(6 * (kNx - 1));
  ZeltoMesh::CellSplit split;

  OneRow() {
    split.Resize(kNx - 1);
    split.Prepare(kNx, 2, triangles.data());
  }
  // Cells (0 .. 8) that hold the other diagonal.
  std::vector<int> OtherCells() const {
    std::vector<int> cells;
    for (int cell = 0; cell < kNx - 1; ++cell) {
      if (triangles[6 * cell + 3] == cell) cells.push_back(cell);
    }
    return cells;
  }
};

// "Unchanged" is step 6's default split: a reset frame writes it and then
// only cells with a decisive jump take the other diagonal.
TEST(CellSplitRows, NanDepthsLeaveTheirCellsInTheDefaultSplitInBothPaths) {
  OneRow row;
  // Cell i: dA = |top[i] - bottom[i + 1]|, dB = |top[i + 1] - bottom[i]|.
  std::vector<float> top = {1, 1, 3, 1, 1, 3, 1, 3, 1, 3};
  std::vector<float> bottom = {1, 1, 1, 1, 1, 1, 1, kNan, 1, 1};
  // Cells 1, 4 and 8 (the scalar tail): dA 0, dB 2, other diagonal. Cell 6
  // would be too (dB 2) but its dA is NaN; cell 7 has dA 2 and dB NaN.
  row.split.RefitRow(0, top.data(), bottom.data(), row.triangles.data());
  EXPECT_EQ(row.OtherCells(), (std::vector<int>{1, 4, 8}));

  // The next reset frame: cell 0 turns (dA 0, dB 1), cells 1 and 8 tie
  // (dA 1, dB 1) and go back to the default, cells 4 and 5 meet a NaN and
  // go back too.
  std::vector<float> next = {1, 2, 2, 2, 2, kNan, 2, 2, 2, 2};
  std::vector<float> flat(10, 1.0f);
  row.split.RefitRow(0, next.data(), flat.data(), row.triangles.data());
  EXPECT_EQ(row.OtherCells(), (std::vector<int>{0}));
  row.split.ClearOther(row.triangles.data());
  EXPECT_EQ(row.OtherCells(), (std::vector<int>{}));
  std::vector<int32_t> defaultSplit(row.triangles.size());
  ZeltoMesh::WriteDefaultSplit(OneRow::kNx, 2, defaultSplit.data());
  EXPECT_EQ(row.triangles, defaultSplit);
}

TEST(CellSplitRows, WriteToGivesTheSplitTheArrayHolds) {
  OneRow row;
  std::vector<float> top = {1, 3, 1, 3, 1, 1, 1, 1, 1, 3};
  std::vector<float> bottom(10, 1.0f);
  row.split.RefitRow(0, top.data(), bottom.data(), row.triangles.data());
  std::vector<int32_t> copy(row.triangles.size(), -1);
  row.split.WriteTo(copy.data());
  EXPECT_EQ(copy, row.triangles);
  EXPECT_EQ(row.OtherCells(), (std::vector<int>{0, 2, 8}));
  // Cell 0 in full: b 0, nx 10: (0, 1, 11), (0, 11, 10).
  EXPECT_EQ(std::vector<int32_t>(copy.begin(), copy.begin() + 6),
            (std::vector<int32_t>{0, 1, 11, 0, 11, 10}));
}

}  // namespace
}  // namespace ZeltoTest
