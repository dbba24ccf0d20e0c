// The grid size from the reduction level, with every overflow a client's
// level or a host's image size can cause defined and checked.
#include "mesh/mesh_grid.h"

#include <cmath>
#include <limits>

namespace ZeltoMesh {

bool MeshGrid::Fits() const {
  constexpr int64_t kMax = std::numeric_limits<int32_t>::max();
  return vertexCount >= 0 && vertexCount <= kMax && triangleCount >= 0 && triangleCount <= kMax;
}

int32_t StepFromReductionLevel(int32_t level) {
  // Unsigned arithmetic wraps by definition; the conversion back is modular
  // (C++20 guarantees it, GCC and Clang always did).
  return static_cast<int32_t>(static_cast<uint32_t>(level) + 1u);
}

int32_t CeilQuotient(int32_t extent, int32_t step) {
  const float quotient = std::ceil(static_cast<float>(extent) / static_cast<float>(step));
  if (std::isnan(quotient)) return 0;
  // 2^31 is exactly representable; every float below it converts exactly.
  if (quotient >= 2147483648.0f) return std::numeric_limits<int32_t>::max();
  if (quotient < -2147483648.0f) return std::numeric_limits<int32_t>::min();
  return static_cast<int32_t>(quotient);
}

MeshGrid ComputeMeshGrid(int32_t reductionLevel, int32_t width, int32_t height) {
  MeshGrid grid;
  grid.step = StepFromReductionLevel(reductionLevel);
  grid.nx = CeilQuotient(width, grid.step);
  grid.ny = CeilQuotient(height, grid.step);
  grid.vertexCount = static_cast<int64_t>(grid.nx) * grid.ny;
  if (grid.nx > 0 && grid.ny > 0) {
    grid.triangleCount = 2 * (static_cast<int64_t>(grid.nx) - 1) * (static_cast<int64_t>(grid.ny) - 1);
  }
  if (width >= 1 && height >= 1 && grid.step >= 1) {
    grid.exact = (static_cast<int64_t>(width) - 1) / grid.step + 1 == grid.nx &&
                 (static_cast<int64_t>(height) - 1) / grid.step + 1 == grid.ny;
  }
  return grid;
}

}  // namespace ZeltoMesh
