// EncodePly: the header, then the vertex and face records as one block each.
#include "ply_writer.h"

#include <cstring>

namespace zelto_cli {
namespace {

template <typename T>
void Put(char** out, T value) {
  std::memcpy(*out, &value, sizeof value);  // the hosts are little-endian
  *out += sizeof value;
}

}  // namespace

std::string EncodePly(const Surface& surface, Axes axes) {
  const bool coloured = !surface.colors.empty();
  std::string bytes = "ply\nformat binary_little_endian 1.0\ncomment zelto-mesh, metres, " +
                      std::string(AxesName(axes)) + " axes\nelement vertex " +
                      std::to_string(surface.VertexCount()) +
                      "\nproperty float x\nproperty float y\nproperty float z\n"
                      "property float nx\nproperty float ny\nproperty float nz\n";
  if (coloured) bytes += "property uchar red\nproperty uchar green\nproperty uchar blue\n";
  bytes += "element face " + std::to_string(surface.TriangleCount()) +
           "\nproperty list uchar int vertex_indices\nend_header\n";
  const size_t vertex_size = 24 + (coloured ? 3 : 0);
  const size_t header_size = bytes.size();
  bytes.resize(header_size + vertex_size * surface.VertexCount() + 13 * surface.TriangleCount());
  char* out = bytes.data() + header_size;
  for (size_t v = 0; v < surface.VertexCount(); ++v) {
    for (size_t k = 0; k < 3; ++k) Put(&out, surface.positions[3 * v + k]);
    for (size_t k = 0; k < 3; ++k) Put(&out, surface.normals[3 * v + k]);
    for (size_t k = 0; coloured && k < 3; ++k) Put(&out, surface.colors[3 * v + k]);
  }
  for (size_t t = 0; t < surface.triangles.size(); t += 3) {
    Put<uint8_t>(&out, 3);
    for (size_t k = 0; k < 3; ++k) Put(&out, surface.triangles[t + k]);
  }
  return bytes;
}

}  // namespace zelto_cli
