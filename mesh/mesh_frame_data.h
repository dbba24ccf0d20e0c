// MeshFrameData: the 28-byte mesh record the builder keeps two of, and
// byte for byte the reference layout that in-process clients receive.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ZeltoMesh {

#pragma pack(push, 4)
struct MeshFrameData {
  int32_t vertexCount = 0;
  float* vertices = nullptr;  // float[3 * vertexCount], metres
  int32_t triangleCount = 0;
  int32_t* triangles = nullptr;  // int32[3 * triangleCount]
  uint8_t resetTriangle = 0;
};
#pragma pack(pop)

// Clients in the same process read the reference layout as these 28 bytes,
// each field at its offset, so the record's packing is part of the interface.
static_assert(sizeof(void*) == 8, "the reference layout carries 64-bit addresses");
static_assert(sizeof(MeshFrameData) == 28, "clients read 28 bytes of reference layout");
static_assert(offsetof(MeshFrameData, vertices) == 4, "clients read this field at 4");
static_assert(offsetof(MeshFrameData, triangleCount) == 12, "clients read this field at 12");
static_assert(offsetof(MeshFrameData, triangles) == 16, "clients read this field at 16");
static_assert(offsetof(MeshFrameData, resetTriangle) == 24, "clients read this field at 24");

}  // namespace ZeltoMesh
