// Binary glTF 2.0 (.glb): one mesh of one triangle primitive with POSITION
// (with its bounds), NORMAL, COLOR_0 (RGBA unsigned bytes, normalised) when
// the mesh has colours, and uint32 indices; one node, one scene.
#pragma once

#include <string>

#include "surface.h"

namespace zelto_cli {

// The whole file. glTF's axes are y up, z towards the viewer: write an
// OpenGL-axes surface for viewers to show it upright.
std::string EncodeGlb(const Surface& surface);

}  // namespace zelto_cli
