// The invalid-depth marker of the point cloud: the mesh builder writes it for
// depths below 10 mm (the camera had no measurement) and masking for the
// points a mask removes, so that both end as vertices at 32.001 m, behind
// anything the camera can measure, where clients drop them.
#pragma once

#include <cstdint>

namespace ZeltoMesh {

constexpr int16_t kInvalidDepth = 32001;

}  // namespace ZeltoMesh
