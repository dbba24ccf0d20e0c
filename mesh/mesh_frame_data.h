// MeshFrameData (Part 2.1): the 28-byte mesh record, also the wire format of
// the reference layout.
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

static_assert(sizeof(void*) == 8, "the reference layout carries 64-bit addresses");
static_assert(sizeof(MeshFrameData) == 28, "MeshFrameData is a 28-byte wire format");
static_assert(offsetof(MeshFrameData, vertices) == 4, "layout of Part 2.1");
static_assert(offsetof(MeshFrameData, triangleCount) == 12, "layout of Part 2.1");
static_assert(offsetof(MeshFrameData, triangles) == 16, "layout of Part 2.1");
static_assert(offsetof(MeshFrameData, resetTriangle) == 24, "layout of Part 2.1");

}  // namespace ZeltoMesh
