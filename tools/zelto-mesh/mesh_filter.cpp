// WithoutInvalidDepth: the mesh a viewer should see, without the vertices the
// builder parked at the invalid depth.
#include "mesh_filter.h"

#include <cstddef>
#include <vector>

namespace zelto_cli {

bool IsInvalidVertex(const Mesh& mesh, int64_t index) {
  return mesh.vertices[static_cast<size_t>(3 * index + 2)] == kInvalidDepthMetres;
}

Mesh WithoutInvalidDepth(const Mesh& mesh) {
  Mesh kept;
  kept.resetTriangle = mesh.resetTriangle;
  kept.layout = mesh.layout;

  const int64_t vertex_count = mesh.VertexCount();
  std::vector<int32_t> new_index(static_cast<size_t>(vertex_count), -1);
  kept.vertices.reserve(mesh.vertices.size());
  int32_t next = 0;
  for (int64_t v = 0; v < vertex_count; ++v) {
    if (IsInvalidVertex(mesh, v)) continue;
    new_index[static_cast<size_t>(v)] = next++;
    const auto first = mesh.vertices.begin() + 3 * v;
    kept.vertices.insert(kept.vertices.end(), first, first + 3);
  }

  kept.triangles.reserve(mesh.triangles.size());
  for (size_t t = 0; t + 2 < mesh.triangles.size(); t += 3) {
    int32_t corners[3];
    bool keep = true;
    for (size_t k = 0; k < 3; ++k) {
      const int32_t index = mesh.triangles[t + k];
      // An index outside the vertex array cannot be drawn either.
      if (index < 0 || index >= vertex_count || new_index[static_cast<size_t>(index)] < 0) {
        keep = false;
        break;
      }
      corners[k] = new_index[static_cast<size_t>(index)];
    }
    if (keep) kept.triangles.insert(kept.triangles.end(), corners, corners + 3);
  }
  return kept;
}

}  // namespace zelto_cli
