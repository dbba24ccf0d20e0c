// The sampling grid: which pixels become vertices and how many vertices and
// triangles the mesh has.
#pragma once

#include <cstdint>

namespace ZeltoMesh {

struct MeshGrid {
  int32_t step = 0;  // reduction level + 1, wrapped to int32
  int32_t nx = 0;    // grid columns
  int32_t ny = 0;    // grid rows
  // 64-bit so that a count outside int32 is seen instead of overflowing; a
  // count that is negative or above INT32_MAX cannot be allocated (Fits).
  int64_t vertexCount = 0;
  int64_t triangleCount = 0;
  // The vertex samples are exactly nx per row in exactly ny rows, so that
  // grid row j is pixel row j step. False only where the float quotient
  // rounds (extents near 2^24 and above) or an extent is below 1.
  bool exact = false;

  bool Fits() const;
};

// level + 1 with two's-complement wrap-around: 2147483647 gives INT32_MIN.
int32_t StepFromReductionLevel(int32_t level);

// ceil(float(extent) / float(step)) in float32, converted to int32; a quotient
// outside the int32 range saturates and NaN (0 / 0) gives 0.
int32_t CeilQuotient(int32_t extent, int32_t step);

MeshGrid ComputeMeshGrid(int32_t reductionLevel, int32_t width, int32_t height);

}  // namespace ZeltoMesh
