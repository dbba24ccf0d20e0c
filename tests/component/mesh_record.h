// Reading the 28-byte MeshFrameData of a reference-layout mesh channel
// (Part 2.1). The record is packed to 4 bytes, so its two addresses are read
// by value: a reference to them would be misaligned.
#pragma once

#include <cstring>

#include "mesh/mesh_frame_data.h"
#include "weftcore/frame_info.h"

namespace zelto_test {

inline ZeltoMesh::MeshFrameData ReadMeshRecord(const void* address) {
  ZeltoMesh::MeshFrameData record;
  std::memcpy(&record, address, sizeof(record));
  return record;
}

inline ZeltoMesh::MeshFrameData ReadMeshRecord(const weftcore::ChannelRawData& channel) {
  return ReadMeshRecord(channel.memory->GetAddress());
}

inline float* VerticesOf(const ZeltoMesh::MeshFrameData& record) { return record.vertices; }
inline int32_t* TrianglesOf(const ZeltoMesh::MeshFrameData& record) { return record.triangles; }

}  // namespace zelto_test
