// CleanMesh: one pass over the triangles, then one over the vertices.
#include "mesh_filter.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace zelto_cli {

bool IsInvalidVertex(const Mesh& mesh, int64_t index) {
  return mesh.vertices[static_cast<size_t>(3 * index + 2)] == kInvalidDepthMetres;
}

bool JumpsInDepth(float za, float zb, float zc, float max_jump) {
  const float nearest = std::min({za, zb, zc});
  const float farthest = std::max({za, zb, zc});
  // In double, so that the rule reads the same in any other program.
  return static_cast<double>(farthest) - nearest > static_cast<double>(max_jump) * nearest;
}

Mesh CleanMesh(const Mesh& mesh, const MeshCleaning& cleaning) {
  const int64_t vertex_count = mesh.VertexCount();
  const bool coloured = mesh.colors.size() == mesh.vertices.size() && !mesh.colors.empty();
  const auto depth = [&mesh](int32_t index) { return mesh.vertices[3 * size_t(index) + 2]; };

  // Which vertices the kept triangles use; -1 for the others.
  std::vector<int32_t> new_index(static_cast<size_t>(vertex_count), -1);
  std::vector<int32_t> kept_triangles;
  kept_triangles.reserve(mesh.triangles.size());
  for (size_t t = 0; t + 2 < mesh.triangles.size(); t += 3) {
    const int32_t* corner = &mesh.triangles[t];
    bool keep = true;
    for (size_t k = 0; k < 3 && keep; ++k) {
      // An index outside the vertex array cannot be drawn either.
      keep = corner[k] >= 0 && corner[k] < vertex_count &&
             (cleaning.keep_invalid || !IsInvalidVertex(mesh, corner[k]));
    }
    if (keep && cleaning.max_edge_jump) {
      keep = !JumpsInDepth(depth(corner[0]), depth(corner[1]), depth(corner[2]),
                           *cleaning.max_edge_jump);
    }
    if (!keep) continue;
    kept_triangles.insert(kept_triangles.end(), corner, corner + 3);
    for (size_t k = 0; k < 3; ++k) new_index[static_cast<size_t>(corner[k])] = 0;
  }

  Mesh kept;
  kept.resetTriangle = mesh.resetTriangle;
  kept.layout = mesh.layout;
  kept.vertices.reserve(mesh.vertices.size());
  if (coloured) kept.colors.reserve(mesh.colors.size());
  int32_t next = 0;
  for (int64_t v = 0; v < vertex_count; ++v) {
    int32_t& index = new_index[static_cast<size_t>(v)];
    if (index < 0 && !cleaning.keep_invalid) continue;
    index = next++;
    const auto first = static_cast<ptrdiff_t>(3 * v);
    kept.vertices.insert(kept.vertices.end(), mesh.vertices.begin() + first,
                         mesh.vertices.begin() + first + 3);
    if (coloured) {
      kept.colors.insert(kept.colors.end(), mesh.colors.begin() + first,
                         mesh.colors.begin() + first + 3);
    }
  }
  kept.triangles = std::move(kept_triangles);
  for (int32_t& corner : kept.triangles) corner = new_index[static_cast<size_t>(corner)];
  return kept;
}

}  // namespace zelto_cli
