// A deliberately strict reader of the PLY files zelto-mesh writes: the
// header grammar line by line, element counts, every face a triangle with
// indices in range, and an exact byte length.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ZeltoCliTest {

struct PlyMesh {
  std::vector<std::string> comments;
  std::vector<float> vertices;     // x, y, z per vertex
  std::vector<int32_t> triangles;  // three indices per face
};

// Parses `bytes`; false with `error` saying what is wrong and where.
bool ReadStrictPly(const std::string& bytes, PlyMesh* mesh, std::string* error);

}  // namespace ZeltoCliTest
