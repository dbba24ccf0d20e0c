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
  std::vector<float> normals;      // nx, ny, nz per vertex
  std::vector<uint8_t> colors;     // red, green, blue per vertex, when the file has them
  std::vector<int32_t> triangles;  // three indices per face
};

// The mesh of the PLY file at `path`. Fails the calling test unless the file
// has one of the two headers zelto-mesh writes (with or without colour),
// rebuilt here from its counts, and then exactly the faces it announces,
// each a triangle of existing vertices.
inline PlyMesh ReadPly(const std::string& path) {
  const std::string bytes = ReadFileBytes(path);
  const size_t body = bytes.find("end_header\n") + 11;  // without one, 10: too short a header
  const auto count = [&](const std::string& label) {
    const size_t at = bytes.find(label);
    return at < body ? std::strtoull(bytes.c_str() + at + label.size(), nullptr, 10) : 0ull;
  };
  const size_t vertices = count("element vertex "), faces = count("element face ");
  const bool coloured = bytes.find("property uchar red") < body;
  const size_t record = coloured ? 27 : 24;
  const std::string axes = bytes.find(" camera axes\n") < body ? "camera" : "opengl";
  const std::string header =
      "ply\nformat binary_little_endian 1.0\ncomment zelto-mesh, metres, " + axes + " axes\n"
      "element vertex " + std::to_string(vertices) + "\nproperty float x\nproperty float y\n"
      "property float z\nproperty float nx\nproperty float ny\nproperty float nz\n" +
      (coloured ? "property uchar red\nproperty uchar green\nproperty uchar blue\n" : "") +
      "element face " + std::to_string(faces) +
      "\nproperty list uchar int vertex_indices\nend_header\n";
  PlyMesh mesh;
  bool strict = bytes.compare(0, body, header) == 0 &&
                bytes.size() == body + record * vertices + 13 * faces;
  for (size_t v = 0; strict && v < vertices; ++v) {
    const char* at = bytes.data() + body + record * v;
    float floats[6];
    std::memcpy(floats, at, 24);
    mesh.vertices.insert(mesh.vertices.end(), floats, floats + 3);
    mesh.normals.insert(mesh.normals.end(), floats + 3, floats + 6);
    if (coloured) mesh.colors.insert(mesh.colors.end(), at + 24, at + 27);
  }
  mesh.triangles.resize(strict ? 3 * faces : 0);
  for (size_t face = 0; strict && face < faces; ++face) {
    const char* at = bytes.data() + body + record * vertices + 13 * face;
    std::memcpy(&mesh.triangles[3 * face], at + 1, 12);
    for (size_t k = 3 * face; k < 3 * face + 3; ++k) {
      strict = strict && at[0] == 3 && size_t(uint32_t(mesh.triangles[k])) < vertices;
    }
  }
  EXPECT_TRUE(strict) << path << " is not a PLY file as zelto-mesh writes them";
  return mesh;
}

}  // namespace ZeltoCliTest
