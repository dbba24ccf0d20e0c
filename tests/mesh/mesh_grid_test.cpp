// Part 2.1, step 2: the grid size, with the defined wrap-around of the step.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "mesh/mesh_grid.h"

namespace ZeltoTest {
namespace {

using ZeltoMesh::CeilQuotient;
using ZeltoMesh::ComputeMeshGrid;
using ZeltoMesh::MeshGrid;
using ZeltoMesh::StepFromReductionLevel;

constexpr int32_t kMin = std::numeric_limits<int32_t>::min();
constexpr int32_t kMax = std::numeric_limits<int32_t>::max();

TEST(MeshGrid, StepIsLevelPlusOneAndWrapsAt2147483647) {
  EXPECT_EQ(StepFromReductionLevel(0), 1);
  EXPECT_EQ(StepFromReductionLevel(2), 3);
  EXPECT_EQ(StepFromReductionLevel(2147483646), kMax);
  EXPECT_EQ(StepFromReductionLevel(2147483647), kMin);
}

TEST(MeshGrid, CeilQuotientRoundsTheFloatQuotientUp) {
  EXPECT_EQ(CeilQuotient(640, 3), 214);  // 213.33
  EXPECT_EQ(CeilQuotient(480, 1), 480);
  EXPECT_EQ(CeilQuotient(3, 2), 2);
  EXPECT_EQ(CeilQuotient(640, kMin), 0);  // -2.98e-7 rounds up to -0
  EXPECT_EQ(CeilQuotient(-5, 1), -5);
  EXPECT_EQ(CeilQuotient(-5, -2), 3);
  // float32, not exact: 16777217 is 16777216 as a float.
  EXPECT_EQ(CeilQuotient(16777217, 1), 16777216);
}

TEST(MeshGrid, ADivisionByZeroStepSaturatesOrGivesZero) {
  // Step 0 comes only from level -1, which the property Set rejects.
  EXPECT_EQ(CeilQuotient(5, 0), kMax);
  EXPECT_EQ(CeilQuotient(-5, 0), kMin);
  EXPECT_EQ(CeilQuotient(0, 0), 0);  // NaN
}

TEST(MeshGrid, Width640Height480Level0) {
  const MeshGrid grid = ComputeMeshGrid(0, 640, 480);
  EXPECT_EQ(grid.step, 1);
  EXPECT_EQ(grid.nx, 640);
  EXPECT_EQ(grid.ny, 480);
  EXPECT_EQ(grid.vertexCount, 307200);
  EXPECT_EQ(grid.triangleCount, 612162);
  EXPECT_TRUE(grid.exact);
  EXPECT_TRUE(grid.Fits());
}

TEST(MeshGrid, Width640Height480Level2) {
  const MeshGrid grid = ComputeMeshGrid(2, 640, 480);
  EXPECT_EQ(grid.nx, 214);
  EXPECT_EQ(grid.ny, 160);
  EXPECT_EQ(grid.triangleCount, 2 * 213 * 159);
  EXPECT_TRUE(grid.exact);
}

TEST(MeshGrid, Level2147483647GivesNoVertex) {
  const MeshGrid grid = ComputeMeshGrid(2147483647, 640, 480);
  EXPECT_EQ(grid.step, kMin);
  EXPECT_EQ(grid.nx, 0);
  EXPECT_EQ(grid.ny, 0);
  EXPECT_EQ(grid.vertexCount, 0);
  EXPECT_EQ(grid.triangleCount, 0);
  EXPECT_TRUE(grid.Fits());
  EXPECT_FALSE(grid.exact);
}

TEST(MeshGrid, CountsBeyondInt32DoNotFit) {
  EXPECT_FALSE(ComputeMeshGrid(0, 46341, 46341).Fits());  // 2147488281 vertices
  // 40000 x 40000: 1.6e9 vertices fit, 3.2e9 triangles do not.
  const MeshGrid grid = ComputeMeshGrid(0, 40000, 40000);
  EXPECT_EQ(grid.vertexCount, 1600000000);
  EXPECT_EQ(grid.triangleCount, 2ll * 39999 * 39999);
  EXPECT_FALSE(grid.Fits());
  EXPECT_FALSE(ComputeMeshGrid(0, -5, 3).Fits());  // negative vertex count
}

TEST(MeshGrid, AFloatRoundedQuotientIsNotAnExactGrid) {
  const MeshGrid grid = ComputeMeshGrid(0, 16777217, 2);
  EXPECT_EQ(grid.nx, 16777216);
  EXPECT_FALSE(grid.exact);  // the sampling reaches 16777217 columns
}

}  // namespace
}  // namespace ZeltoTest
