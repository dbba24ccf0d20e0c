// One MeshBuilder with the source members Fill takes, and point clouds made
// from depth images.
#pragma once

#include <atomic>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <vector>

#include "mesh/mesh_builder.h"
#include "test_allocator.h"
#include "weftcore/frame_info.h"

namespace ZeltoTest {

struct Intrinsics {
  float fx = 2.0f;
  float fy = 4.0f;
  float cx = 1.5f;
  float cy = 1.0f;
};

// x and y get values the builder must ignore.
inline std::vector<int16_t> PointCloud(const std::vector<int16_t>& depthRowMajor) {
  std::vector<int16_t> points;
  for (int16_t d : depthRowMajor) {
    points.push_back(int16_t{-12345});
    points.push_back(int16_t{23456});
    points.push_back(d);
  }
  return points;
}

inline std::vector<int16_t> ConstantPointCloud(int32_t width, int32_t height, int16_t depth) {
  return PointCloud(std::vector<int16_t>(static_cast<size_t>(width) * height, depth));
}

struct FillResult {
  weftcore::Status status;
  size_t channelCount = 0;
  weftcore::ChannelRawData channel;  // memory already handed back
  std::vector<uint8_t> bytes;        // the channel's data
};

class MeshHarness {
 public:
  MeshHarness() = default;
  ~MeshHarness() { builder.ReleaseArrays(); }

  FillResult Fill(const std::vector<int16_t>& points, int32_t width, int32_t height,
                  Intrinsics k = {}) {
    return FillFrom(points.data(), width, height, k);
  }

  FillResult FillFrom(const int16_t* points, int32_t width, int32_t height, Intrinsics k = {}) {
    weftcore::FrameInfo frame;
    FillResult result;
    result.status = builder.Fill(&frame, &allocator, points, width, height, k.fx, k.fy, k.cx,
                                 k.cy, flagsMutex, flatRawData, frameRate30);
    result.channelCount = frame.channels.size();
    if (result.channelCount == 1) {
      result.channel = frame.channels[0];
      const auto* data = static_cast<const uint8_t*>(result.channel.memory->GetAddress());
      result.bytes.assign(data, data + result.channel.size);
      allocator.Free(result.channel.memory);
    }
    return result;
  }

  ZeltoMesh::MeshBuilder builder;
  TestAllocator allocator;
  std::mutex flagsMutex;
  std::atomic<bool> frameRate30{false};
  bool flatRawData = false;
};

// The 28 bytes of the reference layout for `record`.
inline std::vector<uint8_t> ReferenceBytes(const ZeltoMesh::MeshFrameData& record) {
  std::vector<uint8_t> bytes;
  const auto push = [&bytes](uint64_t value, int count) {
    for (int i = 0; i < count; ++i) bytes.push_back(static_cast<uint8_t>(value >> (8 * i)));
  };
  push(static_cast<uint32_t>(record.vertexCount), 4);
  push(reinterpret_cast<uintptr_t>(record.vertices), 8);
  push(static_cast<uint32_t>(record.triangleCount), 4);
  push(reinterpret_cast<uintptr_t>(record.triangles), 8);
  push(record.resetTriangle, 1);
  push(0, 3);
  return bytes;
}

// The record's array addresses by value: its pointer fields are packed to
// 4 bytes, so a reference to them (as EXPECT_EQ binds) would be misaligned.
inline const float* VerticesOf(const ZeltoMesh::MeshFrameData& record) { return record.vertices; }
inline const int32_t* TrianglesOf(const ZeltoMesh::MeshFrameData& record) {
  return record.triangles;
}

inline uint32_t FloatBits(float value) {
  uint32_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

}  // namespace ZeltoTest
