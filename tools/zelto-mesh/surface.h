// A mesh as the files hold it: cleaned, every face wound counter-clockwise
// as seen from the camera, with unit vertex normals, in the axes asked for.
#pragma once

#include <cstdint>
#include <vector>

#include "mesh.h"
#include "mesh_filter.h"

namespace zelto_cli {

// camera: x right, y down, z forward, as the component delivers;
// opengl: x right, y up, z towards the viewer (y and z negated), the axes
// y-up viewers and glTF expect, so the scene shows upright and from the front.
enum class Axes { kCamera, kOpenGl };

const char* AxesName(Axes axes);

struct Surface {
  std::vector<float> positions;  // x, y, z per vertex, metres
  std::vector<float> normals;    // unit x, y, z per vertex
  std::vector<uint8_t> colors;   // red, green, blue per vertex; may be empty
  std::vector<int32_t> triangles;

  size_t VertexCount() const { return positions.size() / 3; }
  size_t TriangleCount() const { return triangles.size() / 3; }
};

// Cleans `mesh` and turns it into the surface the files hold. The builder
// winds its faces clockwise as seen from the camera (the grid's image order),
// so every face is flipped; normals are the area-weighted sum of the faces'
// around a vertex. Turning camera into OpenGL axes is a half turn about x,
// which keeps the winding as seen from the viewer.
Surface MakeSurface(const Mesh& mesh, const MeshCleaning& cleaning, Axes axes);

}  // namespace zelto_cli
