// The frame memory of the mesh channel, its two layouts, and the
// ChannelRawData appended to the frame: what the host hands to clients.
#pragma once

#include <cstdint>

#include "mesh/mesh_frame_data.h"
#include "weftcore/frame_info.h"
#include "weftcore/memory_allocator.h"
#include "weftcore/status.h"

namespace ZeltoMesh {

enum class MeshLayout {
  kReference,  // the 28-byte record, addresses valid only in this process
  kFlat,       // self-contained: counts, vertices, indices, reset flag
};

// Flat layout, little-endian, no padding: int32 V, float32[3V], int32 T,
// int32[3T], uint8 reset.
struct FlatLayout {
  static constexpr uint64_t kVerticesOffset = 4;
  static uint64_t TriangleCountOffset(int32_t vertexCount) { return 4 + 12 * Count(vertexCount); }
  static uint64_t TrianglesOffset(int32_t vertexCount) { return 8 + 12 * Count(vertexCount); }
  static uint64_t ResetOffset(int32_t vertexCount, int32_t triangleCount) {
    return TrianglesOffset(vertexCount) + 12 * Count(triangleCount);
  }
  static uint64_t Size(int32_t vertexCount, int32_t triangleCount) {
    return ResetOffset(vertexCount, triangleCount) + 1;
  }
  static uint64_t Count(int32_t count) { return static_cast<uint64_t>(count); }
};

uint64_t MeshLayoutSize(const MeshFrameData& record, MeshLayout layout);

// The frame memory of one mesh channel. Constructing it makes room for the
// channel in the frame's list (the only step that can throw); the block goes
// back to the allocator unless Append hands it to the frame.
class MeshChannelBlock {
 public:
  MeshChannelBlock(weftcore::FrameInfo* frame, weftcore::MemoryAllocator* allocator);
  ~MeshChannelBlock();
  MeshChannelBlock(const MeshChannelBlock&) = delete;
  MeshChannelBlock& operator=(const MeshChannelBlock&) = delete;

  // An allocator failure comes back with a trace entry; no block, or one
  // without an address or smaller than `size`, is an out-of-memory failure.
  weftcore::Status Allocate(uint64_t size);

  // Copies through OSMemcpy; false when the bytes do not fit the block.
  bool Write(uint64_t offset, const void* source, uint64_t count);
  // The block at `offset` as an array of T, or null where the address is not
  // aligned for T (the data is then copied with Write instead).
  template <typename T>
  T* ArrayAt(uint64_t offset) const {
    unsigned char* address = bytes_ + offset;
    return reinterpret_cast<uintptr_t>(address) % alignof(T) == 0 ? reinterpret_cast<T*>(address)
                                                                   : nullptr;
  }

  // Hands the block to the frame, which the host releases with it:
  // ChannelRawData{0, memory, size, 0, "kRawDataTypeMesh", 0}.
  void Append();

 private:
  weftcore::FrameInfo* frame_;
  weftcore::MemoryAllocator* allocator_;
  weftcore::ChannelRawData channel_;
  unsigned char* bytes_ = nullptr;
  uint64_t blockSize_ = 0;
};

// The reference layout: `record` as it stands, its padding bytes as zeros.
bool WriteReferenceLayout(MeshChannelBlock& block, const MeshFrameData& record);

// The flat layout of `record`. Vertices or indices that the builder has
// already written into the block in place are not copied again.
bool WriteFlatLayout(MeshChannelBlock& block, const MeshFrameData& record, bool verticesInPlace,
                     bool trianglesInPlace);

}  // namespace ZeltoMesh
