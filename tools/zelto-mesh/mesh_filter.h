// Dropping the vertices the builder pushed to the invalid depth.
#pragma once

#include "mesh.h"

namespace zelto_cli {

// True when vertex `index` sits at the invalid depth (z == 32.001f exactly,
// the builder's 32001 / 1000).
bool IsInvalidVertex(const Mesh& mesh, int64_t index);

// The mesh without its invalid vertices and without every triangle that
// touches one; the remaining vertices keep their order and are renumbered.
// Dropping the vertices too keeps viewers' "zoom to fit" on the scene
// instead of on a shell 32 m away.
Mesh WithoutInvalidDepth(const Mesh& mesh);

}  // namespace zelto_cli
