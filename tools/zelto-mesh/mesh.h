// A mesh copied out of a delivered frame, whichever layout the source chose:
// the self-contained flat bytes or the record that points into its arrays.
#pragma once

#include <cstdint>
#include <vector>

namespace zelto_cli {

enum class MeshLayout { kFlat, kReference };

// Depth the builder gives invalid, near-zero and masked points: 32001 mm.
constexpr float kInvalidDepthMetres = 32.001f;

struct Mesh {
  std::vector<float> vertices;    // x, y, z per vertex, metres
  std::vector<int32_t> triangles;  // three vertex indices per triangle
  std::vector<uint8_t> colors;   // red, green, blue per vertex; empty without colour images
  bool resetTriangle = false;
  MeshLayout layout = MeshLayout::kFlat;

  int64_t VertexCount() const { return static_cast<int64_t>(vertices.size() / 3); }
  int64_t TriangleCount() const { return static_cast<int64_t>(triangles.size() / 3); }
};

const char* LayoutName(MeshLayout layout);

}  // namespace zelto_cli
