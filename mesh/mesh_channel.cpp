// The mesh channel's frame memory: taken from the host's allocator, handed
// back on every failure, and written in either layout.
#include "mesh/mesh_channel.h"

#include <cstring>
#include <utility>

#include "component/zelto_mesh_constants.h"
#include "weftcore/osal.h"

namespace ZeltoMesh {
namespace {

// Both layouts are little-endian wire formats written with plain copies.
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the mesh layouts are little-endian");

weftcore::Status OutOfMemory(const char* what, uint64_t size) {
  return weftcore::Status(weftcore::kLevelError, weftcore::kCauseOutOfMemory,
                          "frame memory for the mesh (%llu bytes): %s",
                          static_cast<unsigned long long>(size), what)
      .SetBlock(kComponentName);
}

}  // namespace

uint64_t MeshLayoutSize(const MeshFrameData& record, MeshLayout layout) {
  if (layout == MeshLayout::kReference) return sizeof(MeshFrameData);
  return FlatLayout::Size(record.vertexCount, record.triangleCount);
}

MeshChannelBlock::MeshChannelBlock(weftcore::FrameInfo* frame,
                                   weftcore::MemoryAllocator* allocator)
    : frame_(frame), allocator_(allocator) {
  channel_.channelId = 0;
  channel_.offset = 0;
  channel_.type = kRawDataTypeMesh;
  channel_.capturedTimestamp = 0;
  frame_->channels.reserve(frame_->channels.size() + 1);
}

MeshChannelBlock::~MeshChannelBlock() {
  // Its status adds nothing to the failure that left the block here.
  if (channel_.memory != nullptr) allocator_->Free(channel_.memory);
}

weftcore::Status MeshChannelBlock::Allocate(uint64_t size) {
  weftcore::Memory* memory = nullptr;
  weftcore::Status status = allocator_->Allocate(size, &memory);
  if (status.IsError()) return status.AddTrace(nullptr, 0);
  if (memory == nullptr) return OutOfMemory("the allocator returned no block", size);
  channel_.memory = memory;  // from here on the destructor hands it back
  bytes_ = static_cast<unsigned char*>(memory->GetAddress());
  blockSize_ = memory->GetSize();
  if (bytes_ == nullptr || blockSize_ < size) {
    return OutOfMemory("the block is missing or too small", size);
  }
  channel_.size = size;
  return weftcore::Status();
}

bool MeshChannelBlock::Write(uint64_t offset, const void* source, uint64_t count) {
  if (bytes_ == nullptr || offset > blockSize_) return false;
  return weftcore::osal::OSMemcpy(bytes_ + offset, blockSize_ - offset, source, count);
}

void MeshChannelBlock::Append() {
  frame_->channels.push_back(std::move(channel_));  // capacity reserved: no throw
  channel_.memory = nullptr;
}

bool WriteReferenceLayout(MeshChannelBlock& block, const MeshFrameData& record) {
  unsigned char bytes[sizeof(MeshFrameData)] = {};
  std::memcpy(bytes, &record, offsetof(MeshFrameData, resetTriangle) + sizeof record.resetTriangle);
  return block.Write(0, bytes, sizeof bytes);
}

bool WriteFlatLayout(MeshChannelBlock& block, const MeshFrameData& record, bool verticesInPlace,
                     bool trianglesInPlace) {
  const int32_t vertexCount = record.vertexCount;
  const int32_t triangleCount = record.triangleCount;
  bool ok = block.Write(0, &vertexCount, sizeof vertexCount);
  if (!verticesInPlace) {
    ok = ok && block.Write(FlatLayout::kVerticesOffset, record.vertices,
                           12 * FlatLayout::Count(vertexCount));
  }
  ok = ok && block.Write(FlatLayout::TriangleCountOffset(vertexCount), &triangleCount,
                         sizeof triangleCount);
  if (!trianglesInPlace) {
    ok = ok && block.Write(FlatLayout::TrianglesOffset(vertexCount), record.triangles,
                           12 * FlatLayout::Count(triangleCount));
  }
  return ok && block.Write(FlatLayout::ResetOffset(vertexCount, triangleCount),
                           &record.resetTriangle, sizeof record.resetTriangle);
}

}  // namespace ZeltoMesh
