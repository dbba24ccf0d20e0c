// ReadStrictPly: the header against the one form zelto-mesh writes, then a
// body whose length the two counts fix.
#include "strict_ply_reader.h"

#include <cstdlib>
#include <cstring>

namespace ZeltoCliTest {

bool ReadStrictPly(const std::string& bytes, PlyMesh* mesh, std::string* error) {
  const size_t body = bytes.find("end_header\n") + 11;  // npos + 11 is 10: no header
  const auto count_after = [&](const std::string& label) {
    const size_t at = bytes.find(label);
    return at < body ? std::strtoull(bytes.c_str() + at + label.size(), nullptr, 10) : 0ull;
  };
  const unsigned long long vertex_count = count_after("element vertex ");
  const unsigned long long face_count = count_after("element face ");
  const std::string header =
      "ply\nformat binary_little_endian 1.0\ncomment zelto-mesh, metres, camera coordinates\n"
      "element vertex " + std::to_string(vertex_count) +
      "\nproperty float x\nproperty float y\nproperty float z\nelement face " +
      std::to_string(face_count) + "\nproperty list uchar int vertex_indices\nend_header\n";
  if (bytes.compare(0, body, header) != 0) {
    *error = "unexpected header:\n" + bytes.substr(0, body);
    return false;
  }
  if (bytes.size() != body + 12 * vertex_count + 13 * face_count) {
    *error = std::to_string(bytes.size() - body) + " bytes after the header";
    return false;
  }
  mesh->vertices.resize(3 * vertex_count);
  if (vertex_count > 0) std::memcpy(mesh->vertices.data(), bytes.data() + body, 12 * vertex_count);
  mesh->triangles.resize(3 * face_count);
  for (size_t face = 0; face < face_count; ++face) {
    const char* record = bytes.data() + body + 12 * vertex_count + 13 * face;
    std::memcpy(&mesh->triangles[3 * face], record + 1, 12);
    for (size_t k = 0; k < 3; ++k) {
      const int32_t index = mesh->triangles[3 * face + k];
      if (record[0] != 3 || index < 0 || static_cast<uint64_t>(index) >= vertex_count) {
        *error = "face " + std::to_string(face) + " is not a triangle of existing vertices";
        return false;
      }
    }
  }
  return true;
}

}  // namespace ZeltoCliTest
