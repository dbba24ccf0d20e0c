// Wavefront OBJ: "v x y z" lines (with "r g b" from 0 to 1 when the mesh has
// colours), "vn" lines, then "f a//a b//b c//c" with 1-based indices.
#pragma once

#include <string>

#include "surface.h"

namespace zelto_cli {

std::string EncodeObj(const Surface& surface, Axes axes);

}  // namespace zelto_cli
