// Channel 0 of a mesh frame to a Mesh, from either layout the source delivers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "mesh.h"

namespace zelto_cli {

// Size of the reference layout: one MeshFrameData record.
constexpr size_t kReferenceLayoutSize = 28;

// Flat layout: int32 vertex count, float[3n] vertices, int32 triangle count,
// int32[3m] indices, uint8 reset flag, little-endian, no padding.
// Reference layout: the 28-byte MeshFrameData whose two addresses point into
// this process; the arrays behind them are rewritten by the call after next,
// so the caller must decode before asking for another frame.
// The layouts cannot be confused: a flat size is 12(n + m) + 9, never 28.
// Returns false with `error` set when the bytes are neither layout.
bool DecodeMesh(const uint8_t* bytes, size_t size, Mesh* mesh, std::string* error);

// Where a delivered mesh's counts, flag and arrays are, without copying them:
// a run that writes no file needs only the counts of most frames, and copying
// 11 MB per frame would cost it more than the component's own work.
struct MeshView {
  MeshLayout layout = MeshLayout::kFlat;
  int64_t vertexCount = 0;
  int64_t triangleCount = 0;
  bool resetTriangle = false;
  const uint8_t* vertexBytes = nullptr;    // 12 bytes per vertex, any alignment
  const uint8_t* triangleBytes = nullptr;  // 12 bytes per triangle, any alignment
};

// Validates as DecodeMesh does; the view is valid as long as the bytes (and,
// for the reference layout, the arrays they name) are.
bool ViewMesh(const uint8_t* bytes, size_t size, MeshView* view, std::string* error);

// The arrays of `view` copied into `mesh` (colours cleared).
void CopyMesh(const MeshView& view, Mesh* mesh);

}  // namespace zelto_cli
