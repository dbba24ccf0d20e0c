// A strict reader of the PLY files zelto-mesh writes, apart from the writer so
// that a slip in one is not mirrored by the other.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ZeltoCliTest {

struct PlyMesh {
  std::vector<float> vertices;     // x, y, z per vertex
  std::vector<int32_t> triangles;  // three indices per face
};

// False unless `bytes` are the one header zelto-mesh writes, then faces that
// are triangles of existing vertices, and nothing after the last face.
bool ReadStrictPly(const std::string& bytes, PlyMesh* mesh);

}  // namespace ZeltoCliTest
