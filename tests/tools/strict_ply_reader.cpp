// ReadStrictPly: the header rebuilt from its two counts, then a body whose
// length those counts fix.
#include "strict_ply_reader.h"

#include <cstdlib>
#include <cstring>

namespace ZeltoCliTest {

bool ReadStrictPly(const std::string& bytes, PlyMesh* mesh) {
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
  if (bytes.compare(0, body, header) != 0 || bytes.size() != body + 12 * vertices + 13 * faces) {
    return false;
  }
  mesh->vertices.resize(3 * vertices);
  mesh->triangles.resize(3 * faces);
  if (vertices > 0) std::memcpy(mesh->vertices.data(), bytes.data() + body, 12 * vertices);
  for (size_t face = 0; face < faces; ++face) {
    const char* record = bytes.data() + body + 12 * vertices + 13 * face;
    std::memcpy(&mesh->triangles[3 * face], record + 1, 12);
    for (size_t k = 3 * face; k < 3 * face + 3; ++k) {
      if (record[0] != 3 || mesh->triangles[k] < 0 || size_t(mesh->triangles[k]) >= vertices) {
        return false;
      }
    }
  }
  return true;
}

}  // namespace ZeltoCliTest
