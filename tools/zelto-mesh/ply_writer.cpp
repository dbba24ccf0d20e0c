// EncodePly: the header, then the vertex and face records as one block each.
#include "ply_writer.h"

#include <cstring>

namespace zelto_cli {
namespace {

template <typename T>
void Append(std::string* bytes, T value) {
  char raw[sizeof value];
  std::memcpy(raw, &value, sizeof value);  // the hosts are little-endian
  bytes->append(raw, sizeof value);
}

}  // namespace

std::string EncodePly(const Mesh& mesh) {
  std::string bytes =
      "ply\n"
      "format binary_little_endian 1.0\n"
      "comment zelto-mesh, metres, camera coordinates\n"
      "element vertex " + std::to_string(mesh.VertexCount()) + "\n"
      "property float x\n"
      "property float y\n"
      "property float z\n"
      "element face " + std::to_string(mesh.TriangleCount()) + "\n"
      "property list uchar int vertex_indices\n"
      "end_header\n";
  bytes.reserve(bytes.size() + 4 * mesh.vertices.size() + 13 * mesh.TriangleCount());
  const auto header_size = bytes.size();
  bytes.resize(header_size + 4 * mesh.vertices.size());
  if (!mesh.vertices.empty()) {  // data() of an empty vector may be null
    std::memcpy(bytes.data() + header_size, mesh.vertices.data(), 4 * mesh.vertices.size());
  }
  for (size_t t = 0; t + 2 < mesh.triangles.size(); t += 3) {
    Append<uint8_t>(&bytes, 3);
    Append<int32_t>(&bytes, mesh.triangles[t]);
    Append<int32_t>(&bytes, mesh.triangles[t + 1]);
    Append<int32_t>(&bytes, mesh.triangles[t + 2]);
  }
  return bytes;
}

}  // namespace zelto_cli
