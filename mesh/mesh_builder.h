// The mesh frame builder (Part 2.1): one point-cloud image and the
// intrinsics become a regular triangle mesh attached to an outgoing frame.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "mesh/cell_split.h"
#include "mesh/mesh_frame_data.h"
#include "mesh/mesh_grid.h"
#include "mesh/mesh_vertices.h"
#include "weftcore/frame_info.h"
#include "weftcore/memory_allocator.h"
#include "weftcore/status.h"

namespace ZeltoMesh {

class MeshBuilder {
 public:
  MeshBuilder() = default;
  // Frees whatever ReleaseArrays (the source's Close) has not freed yet.
  ~MeshBuilder() = default;
  MeshBuilder(const MeshBuilder&) = delete;
  MeshBuilder& operator=(const MeshBuilder&) = delete;

  // Part 2.1, steps 1 to 11. `flagsMutex` guards the double-buffer flip; the
  // flat layout is used when `flatRawData` or `frameRate30` is set.
  // Never throws: an allocation failure is a status of cause 6, after which
  // no channel has been appended (docs/deviations.md).
  weftcore::Status Fill(weftcore::FrameInfo* frame, weftcore::MemoryAllocator* allocator,
                        const int16_t* depth, int32_t width, int32_t height, float fx, float fy,
                        float cx, float cy, std::mutex& flagsMutex, bool flatRawData,
                        const std::atomic<bool>& frameRate30);

  // The source's Close: frees every array the records have pointed to, the
  // current and the retired ones, each once, and nulls the four record
  // pointers. A second call frees nothing.
  void ReleaseArrays();

  const MeshFrameData& first() const { return first_.record; }
  const MeshFrameData& second() const { return second_.record; }
  int32_t frameCounter() const { return meshFrameCounter; }

  // Part 2.2. Atomic because property handlers write them on client threads
  // while the frame thread reads them.
  std::atomic<int32_t> meshReductionLevel{0};
  std::atomic<int32_t> resetTrianglePeriod{4};

 private:
  // One of the two records with the arrays it owns. `record`'s pointers are
  // always those of `vertices` and `triangles`.
  struct Slot {
    MeshFrameData record;
    std::unique_ptr<float[]> vertices;
    std::unique_ptr<int32_t[]> triangles;
    CellSplit split;  // what `triangles` holds, so unchanged cells are not rewritten
  };

  // Fill after the pointer checks; may throw std::bad_alloc.
  weftcore::Status Build(weftcore::FrameInfo* frame, weftcore::MemoryAllocator* allocator,
                         const int16_t* depth, int32_t width, int32_t height,
                         const PinholeIntrinsics& intrinsics, std::mutex& flagsMutex,
                         bool flatLayout);
  // Steps 4, 6 and 7 into the slot's arrays, and into the flat block's
  // vertices and indices where those are not null.
  void WriteMesh(Slot& slot, const MeshGrid& grid, bool reset, const int16_t* depth,
                 int32_t width, int32_t height, const PinholeIntrinsics& intrinsics,
                 float* flatVertices, int32_t* flatTriangles);
  bool NextResetFlag();
  Slot& FlipDoubleBuffer(std::mutex& flagsMutex);
  void EnsureArrays(Slot& slot, int32_t vertexCount, int32_t triangleCount);

  int32_t meshFrameCounter = 0;
  bool resetTriangle = false;
  Slot first_;
  Slot second_;
  uint8_t frameDataToggle = 1;
  // Arrays replaced on a count change. A reference-layout frame may still
  // point at them, so they live until ReleaseArrays.
  std::vector<std::unique_ptr<float[]>> retiredVertices_;
  std::vector<std::unique_ptr<int32_t[]>> retiredTriangles_;
  // Two grid rows of depths (z in metres) for the re-fit of reset frames.
  std::vector<float> zRows_;
};

}  // namespace ZeltoMesh
