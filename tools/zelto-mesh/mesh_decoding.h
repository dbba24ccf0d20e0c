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

}  // namespace zelto_cli
