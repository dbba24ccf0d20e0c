// Binary little-endian PLY: per vertex float x y z, float nx ny nz and, when
// the mesh has colours, uchar red green blue; faces as a uchar count and int
// indices.
#pragma once

#include <string>

#include "surface.h"

namespace zelto_cli {

// The whole file: header, then vertex and face records. `axes` names the
// coordinates in a comment.
std::string EncodePly(const Surface& surface, Axes axes);

}  // namespace zelto_cli
