// Vertices: sampled depth pixels become points in metres, in the camera frame.
#pragma once

#include <cstdint>

#include "mesh/invalid_depth.h"

namespace ZeltoMesh {

struct PinholeIntrinsics {
  float fx = 0;
  float fy = 0;
  float cx = 0;
  float cy = 0;
};

// Writes vertexCount vertices (x, y, z floats) into `vertices`: pixels
// (u, v) = (0, 0), (step, 0), ... row by row, stopping when vertexCount have
// been written. Vertices the sampling does not reach (width or height below 1,
// or a float-rounded count larger than the samples) are set to 0.
// A step below 1 writes no vertex: only a negative reduction level, which the
// property Set rejects, gives one with vertexCount above 0.
// Writes the same floats to `mirror` unless it is null.
void WriteVertices(const int16_t* depth, int32_t width, int32_t height, int32_t step,
                   const PinholeIntrinsics& intrinsics, float* vertices, float* mirror,
                   int32_t vertexCount);

// Grid row j when the samples form the grid exactly (MeshGrid::exact): the
// nx vertices of pixel row v = j step into `out` (and `mirror` unless null),
// and their z alone into `zRow` unless null.
void WriteVertexRow(const int16_t* depth, int32_t width, int32_t step,
                    const PinholeIntrinsics& intrinsics, int32_t j, int32_t nx, float* out,
                    float* mirror, float* zRow);

}  // namespace ZeltoMesh
