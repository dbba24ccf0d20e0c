// One MeshBuilder with the lock and flags its source passes in, a frame-memory allocator that can
// fail in every way a host's can, and the delivered mesh read back in the flat layout.
#pragma once

#include <atomic>
#include <cstring>
#include <mutex>
#include <vector>

#include "mesh/mesh_builder.h"
#include "support/bytes.h"

namespace ZeltoTest {

using zelto_test::Bytes;

class TestAllocator final : public weftcore::MemoryAllocator {
 public:
  struct Faults {
    weftcore::Status failWith;  // Allocate's status when an error
    bool noBlock = false;       // an OK status without a block
    bool nullAddress = false;   // blocks whose address is null
    uint64_t shortBy = 0;       // blocks this many bytes smaller than asked
    uint64_t misalignment = 0;  // addresses this many bytes past a malloc'd one
  } faults;
  int64_t live = 0;
  int64_t allocations = 0;

  struct Block final : weftcore::Memory {
    Block(uint64_t size, const Faults& f)
        : bytes(size + f.misalignment), offset(f.misalignment), null(f.nullAddress) {}
    void* GetAddress() override { return null ? nullptr : bytes.data() + offset; }
    uint64_t GetSize() override { return bytes.size() - offset; }
    std::vector<unsigned char> bytes;
    uint64_t offset;
    bool null;
  };
  weftcore::Status Allocate(uint64_t size, weftcore::Memory** memory) override {
    ++allocations;
    if (faults.failWith.IsError() || faults.noBlock) return faults.failWith;
    *memory = new Block(size > faults.shortBy ? size - faults.shortBy : 0, faults);
    ++live;
    return weftcore::Status();
  }
  weftcore::Status Free(weftcore::Memory* memory) override {
    delete memory;
    --live;
    return weftcore::Status();
  }
};

// A field of delivered bytes; a reference-layout frame's arrays are read through its addresses.
template <typename T>
T FieldOf(const Bytes& bytes, size_t offset) {
  T value;
  std::memcpy(&value, bytes.data() + offset, sizeof value);
  return value;
}
inline const float* VerticesOf(const Bytes& record) { return FieldOf<const float*>(record, 4); }
inline const int32_t* TrianglesOf(const Bytes& record) { return FieldOf<int32_t*>(record, 16); }
inline Bytes FlatOf(const Bytes& reference) {
  const auto* vertices = reinterpret_cast<const uint8_t*>(VerticesOf(reference));
  const auto* triangles = reinterpret_cast<const uint8_t*>(TrianglesOf(reference));
  const size_t vertexCount = FieldOf<uint32_t>(reference, 0);
  const size_t triangleCount = FieldOf<uint32_t>(reference, 12);
  return zelto_test::Cat({Bytes(reference.begin(), reference.begin() + 4),
                          Bytes(vertices, vertices + 12 * vertexCount),
                          Bytes(reference.begin() + 12, reference.begin() + 16),
                          Bytes(triangles, triangles + 12 * triangleCount),
                          Bytes{reference.at(24)}});
}

// Depths in millimetres, row-major; x and y get values the builder must ignore.
inline std::vector<int16_t> PointCloud(const std::vector<int16_t>& depths) {
  std::vector<int16_t> points;
  for (int16_t d : depths) points.insert(points.end(), {-12345, 23456, d});
  return points;
}
inline std::vector<int16_t> ConstantPointCloud(int32_t width, int32_t height, int16_t depth) {
  return PointCloud(std::vector<int16_t>(size_t(width) * size_t(height), depth));
}

struct FillResult {
  weftcore::Status status;
  size_t channelCount = 0;
  weftcore::ChannelRawData channel;  // its memory already handed back
  Bytes bytes;                       // as delivered
  Bytes flat;                        // the same mesh in the flat layout
};

struct MeshHarness {
  ~MeshHarness() { builder.ReleaseArrays(); }
  FillResult Fill(const int16_t* points, int32_t width, int32_t height) {
    weftcore::FrameInfo frame;
    FillResult result;
    const ZeltoMesh::PinholeIntrinsics& k = intrinsics;
    result.status = builder.Fill(&frame, &allocator, points, width, height, k.fx, k.fy, k.cx, k.cy,
                                 flagsMutex, flatRawData, frameRate30);
    result.channelCount = frame.channels.size();
    if (result.channelCount != 1) return result;
    result.channel = frame.channels[0];
    const auto* data = static_cast<const uint8_t*>(result.channel.memory->GetAddress());
    result.bytes.assign(data, data + result.channel.size);
    allocator.Free(result.channel.memory);
    result.flat = flatRawData || frameRate30 ? result.bytes : FlatOf(result.bytes);
    return result;
  }
  int NextResetFlag() {  // of a 2 x 2 frame; -1 when it fails
    const Bytes flat = Fill(ConstantPointCloud(2, 2, 1000).data(), 2, 2).flat;
    return flat.empty() ? -1 : flat.back();
  }

  ZeltoMesh::MeshBuilder builder;
  TestAllocator allocator;
  std::mutex flagsMutex;
  std::atomic<bool> frameRate30{false};
  bool flatRawData = false;
  ZeltoMesh::PinholeIntrinsics intrinsics{2.0f, 4.0f, 1.5f, 1.0f};
};

}  // namespace ZeltoTest
