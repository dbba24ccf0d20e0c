// Binary little-endian PLY: float x y z per vertex, faces as a uchar count
// and int indices.
#pragma once

#include <string>

#include "mesh.h"

namespace zelto_cli {

// The whole file: header, then vertex and face records.
std::string EncodePly(const Mesh& mesh);

}  // namespace zelto_cli
