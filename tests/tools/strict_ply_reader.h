// A strict reader of the PLY files zelto-mesh writes, apart from the writer so
// that a slip in one is not mirrored by the other.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "process_runner.h"

namespace ZeltoCliTest {

struct PlyMesh {
  std::vector<float> vertices;     // x, y, z per vertex
  std::vector<int32_t> triangles;  // three indices per face
};

// The mesh of the PLY file at `path`. Fails the calling test unless the file
// has the one header zelto-mesh writes, rebuilt here from its two counts, and
// then exactly the faces it announces, each a triangle of existing vertices.
inline PlyMesh ReadPly(const std::string& path) {
  const std::string bytes = ReadFileBytes(path);
  const size_t body = bytes.find("end_header\n") + 11;  // without one, 10: too short a header
  const auto count = [&](const std::string& label) {
    const size_t at = bytes.find(label);
    return at < body ? std::strtoull(bytes.c_str() + at + label.size(), nullptr, 10) : 0ull;
  };
  const size_t vertices = count("element vertex "), faces = count("element face ");
  const std::string header =
      "ply\nformat binary_little_endian 1.0\ncomment zelto-mesh, metres, camera coordinates\n"
      "element vertex " + std::to_string(vertices) + "\nproperty float x\nproperty float y\n"
      "property float z\nelement face " + std::to_string(faces) +
      "\nproperty list uchar int vertex_indices\nend_header\n";
  PlyMesh mesh;
  bool strict = bytes.compare(0, body, header) == 0 &&
                bytes.size() == body + 12 * vertices + 13 * faces;
  mesh.vertices.resize(strict ? 3 * vertices : 0);
  mesh.triangles.resize(strict ? 3 * faces : 0);
  if (strict && vertices > 0) std::memcpy(mesh.vertices.data(), bytes.data() + body, 12 * vertices);
  for (size_t face = 0; strict && face < faces; ++face) {
    const char* record = bytes.data() + body + 12 * vertices + 13 * face;
    std::memcpy(&mesh.triangles[3 * face], record + 1, 12);
    for (size_t k = 3 * face; k < 3 * face + 3; ++k) {
      strict = strict && record[0] == 3 && size_t(uint32_t(mesh.triangles[k])) < vertices;
    }
  }
  EXPECT_TRUE(strict) << path << " is not a PLY file as zelto-mesh writes them";
  return mesh;
}

}  // namespace ZeltoCliTest
