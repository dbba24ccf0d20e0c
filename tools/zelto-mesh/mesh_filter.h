// The mesh a viewer should see: without the vertices the builder parked at
// the invalid depth, without the "skirt" triangles that bridge a depth jump
// between a near object and the surface behind it, and without the vertices
// no remaining triangle uses.
#pragma once

#include <optional>

#include "mesh.h"

namespace zelto_cli {

// True when vertex `index` sits at the invalid depth (z == 32.001f exactly,
// the builder's 32001 / 1000).
bool IsInvalidVertex(const Mesh& mesh, int64_t index);

struct MeshCleaning {
  // Keep every vertex, those at the invalid depth included, and the
  // triangles that touch them (subject to max_edge_jump).
  bool keep_invalid = false;
  // Leave out a triangle when the largest depth (z) of its corners exceeds
  // the smallest by more than this fraction of the smallest. Unset: keep
  // all. One grid step at 525 px focal length is about 0.2 % of the depth,
  // so 0.05 keeps surfaces seen at more than about 2 degrees from the line
  // of sight and removes the sheets between objects at different depths.
  std::optional<float> max_edge_jump = 0.05f;
};

// True when the corners' depths `za`, `zb`, `zc` jump by more than
// `max_jump` times the nearest of them.
bool JumpsInDepth(float za, float zb, float zc, float max_jump);

// `mesh` without the triangles `cleaning` leaves out and, unless
// keep_invalid, without the vertices no kept triangle uses (and every
// invalid one); the kept vertices (and their colours) keep their order and
// are renumbered. Triangles with an index outside the vertex array are
// dropped too. Dropping the vertices keeps viewers' "zoom to fit" on the
// scene instead of on a shell 32 m away.
Mesh CleanMesh(const Mesh& mesh, const MeshCleaning& cleaning);

}  // namespace zelto_cli
