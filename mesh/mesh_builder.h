// The mesh frame builder (Part 2.1): one point-cloud image and the
// intrinsics become a regular triangle mesh attached to an outgoing frame.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

#include "mesh/mesh_frame_data.h"
#include "weftcore/frame_info.h"
#include "weftcore/memory_allocator.h"
#include "weftcore/status.h"

namespace ZeltoMesh {

// Depth written for invalid (below 10 mm) and masked points.
constexpr int16_t kInvalidDepth = 32001;

class MeshBuilder {
 public:
  MeshBuilder() = default;
  // Does not free the record arrays: ReleaseArrays (the source's Close) does.
  ~MeshBuilder() = default;
  MeshBuilder(const MeshBuilder&) = delete;
  MeshBuilder& operator=(const MeshBuilder&) = delete;

  // Part 2.1, steps 1 to 11. `flagsMutex` guards the double-buffer flip; the
  // flat layout is used when `flatRawData` or `frameRate30` is set.
  weftcore::Status Fill(weftcore::FrameInfo* frame, weftcore::MemoryAllocator* allocator,
                        const int16_t* depth, int32_t width, int32_t height, float fx, float fy,
                        float cx, float cy, std::mutex& flagsMutex, bool flatRawData,
                        const std::atomic<bool>& frameRate30);

  // The source's Close: frees every array the records have pointed to and
  // nulls the four record pointers.
  void ReleaseArrays();

  const MeshFrameData& first() const { return firstFrameData; }
  const MeshFrameData& second() const { return secondFrameData; }
  int32_t frameCounter() const { return meshFrameCounter; }

  // Part 2.2. Atomic because property handlers write them on client threads
  // while the frame thread reads them.
  std::atomic<int32_t> meshReductionLevel{0};
  std::atomic<int32_t> resetTrianglePeriod{4};

 private:
  int32_t meshFrameCounter = 0;
  bool resetTriangle = false;
  MeshFrameData firstFrameData;
  MeshFrameData secondFrameData;
  uint8_t frameDataToggle = 1;
};

}  // namespace ZeltoMesh
