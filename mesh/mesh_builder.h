// The mesh builder: one point-cloud image and the camera intrinsics become a
// regular triangle mesh in metres, appended to an outgoing frame as channel
// "kRawDataTypeMesh" in one of two layouts.
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

  // Builds the mesh of one point-cloud frame (x, y, z int16 per pixel, z in
  // millimetres) and appends it to `frame`. `flagsMutex` is the source's lock
  // over the double-buffer flip; the flat layout is used when `flatRawData`
  // or `frameRate30` is set. Never throws: every failure is a status, after
  // which no channel has been appended and no frame memory is held.
  weftcore::Status Fill(weftcore::FrameInfo* frame, weftcore::MemoryAllocator* allocator,
                        const int16_t* depth, int32_t width, int32_t height, float fx, float fy,
                        float cx, float cy, std::mutex& flagsMutex, bool flatRawData,
                        const std::atomic<bool>& frameRate30);

  // The host has released the frame whose mesh channel is `memory`: a
  // reference-layout frame no longer pins the arrays it names, and a retired
  // array that no other unreleased frame names is freed here. Any thread may
  // call it while Fill runs; memory the builder never handed out is ignored.
  void FrameReleased(const weftcore::Memory* memory);

  // The source's Close: frees every array the records have pointed to, the
  // current and the retired ones, each once, and nulls the four record
  // pointers. A second call frees nothing.
  void ReleaseArrays();

  // The algorithm configuration. Property handlers write it on client
  // threads while the frame thread reads it, hence atomics and no lock.
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
  // Vertices, default split and re-fit into the slot's arrays, and into the
  // flat block's vertices and indices where those are not null.
  void WriteMesh(Slot& slot, const MeshGrid& grid, bool reset, const int16_t* depth,
                 int32_t width, int32_t height, const PinholeIntrinsics& intrinsics,
                 float* flatVertices, int32_t* flatTriangles);
  // Records that `memory`, a reference-layout frame just built, names the
  // slot's arrays until FrameReleased. Capacity is reserved beforehand.
  void LeaseArrays(const weftcore::Memory* memory, const Slot& slot);
  // Frees a replaced array at once unless an unreleased frame names it.
  template <typename T>
  void Retire(std::unique_ptr<T[]> array, std::vector<std::unique_ptr<T[]>>* retired);
  bool Leased(const void* array) const;
  bool NextResetFlag();
  Slot& FlipDoubleBuffer(std::mutex& flagsMutex);
  void EnsureArrays(Slot& slot, int32_t vertexCount, int32_t triangleCount);

  // The frame thread's state. The host serialises frame requests, so none
  // of it needs a lock except the toggle, which Fill flips under the
  // source's flagsMutex together with the frame-rate flags it guards.
  int32_t meshFrameCounter = 0;  // frames counted; wraps instead of overflowing
  bool resetTriangle = false;    // whether the last frame re-fitted its cells
  uint8_t frameDataToggle = 1;   // which record the next frame writes
  Slot first_;
  Slot second_;
  // A reference-layout frame the host has not released yet, and the arrays
  // whose addresses it carries.
  struct Lease {
    const weftcore::Memory* memory;
    const float* vertices;
    const int32_t* triangles;
  };
  // The host releases frames on any thread, also while Fill runs: the leases
  // and the retired arrays are shared under this lock.
  std::mutex leaseMutex_;
  std::vector<Lease> leases_;
  // Arrays replaced when a record's counts change while an unreleased
  // reference-layout frame still names them by address. Each is freed by
  // the release of the last frame naming it, or by ReleaseArrays (Close).
  std::vector<std::unique_ptr<float[]>> retiredVertices_;
  std::vector<std::unique_ptr<int32_t[]>> retiredTriangles_;
  // Two grid rows of depths (z in metres) for the re-fit of reset frames.
  std::vector<float> zRows_;
};

}  // namespace ZeltoMesh
