// The invalid-depth marker of the point cloud (Overview, shared types): the
// mesh builder writes it for depths below 10 mm (Part 2.1) and masking for
// masked points (Part 3.2), so both end as vertices at 32.001 m.
#pragma once

#include <cstdint>

namespace ZeltoMesh {

constexpr int16_t kInvalidDepth = 32001;

}  // namespace ZeltoMesh
