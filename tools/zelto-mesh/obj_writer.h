// Wavefront OBJ: "v x y z" lines, then "f a b c" lines with 1-based indices.
#pragma once

#include <string>

#include "mesh.h"

namespace zelto_cli {

std::string EncodeObj(const Mesh& mesh);

}  // namespace zelto_cli
