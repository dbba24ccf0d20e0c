// MeshBuilder::Fill: the frame's mesh computed into the current record and,
// for the flat layout, straight into the frame memory.
#include "mesh/mesh_builder.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <stdexcept>
#include <utility>

#include "component/zelto_mesh_constants.h"
#include "mesh/mesh_channel.h"

namespace ZeltoMesh {
namespace {

weftcore::Status Failure(weftcore::Cause cause, const char* message) {
  return weftcore::Status(weftcore::kLevelError, cause, "%s", message).SetBlock(kComponentName);
}

}  // namespace

weftcore::Status MeshBuilder::Fill(weftcore::FrameInfo* frame,
                                   weftcore::MemoryAllocator* allocator, const int16_t* depth,
                                   int32_t width, int32_t height, float fx, float fy, float cx,
                                   float cy, std::mutex& flagsMutex, bool flatRawData,
                                   const std::atomic<bool>& frameRate30) {
  if (depth == nullptr) return Failure(weftcore::kCauseInvalidArgument, "point cloud is null.");
  if (frame == nullptr || allocator == nullptr) {
    return Failure(weftcore::kCauseInvalidArgument, "Null pointer");
  }
  const PinholeIntrinsics intrinsics{fx, fy, cx, cy};
  const bool flatLayout = flatRawData || frameRate30.load();
  // The host calls the component across a boundary no exception may cross:
  // a failed allocation becomes a status the host can log and count.
  try {
    return Build(frame, allocator, depth, width, height, intrinsics, flagsMutex, flatLayout);
  } catch (const std::bad_alloc&) {
    return Failure(weftcore::kCauseOutOfMemory, "mesh arrays could not be allocated.");
  } catch (const std::length_error&) {
    return Failure(weftcore::kCauseOutOfMemory, "mesh arrays could not be allocated.");
  }
}

weftcore::Status MeshBuilder::Build(weftcore::FrameInfo* frame,
                                    weftcore::MemoryAllocator* allocator, const int16_t* depth,
                                    int32_t width, int32_t height,
                                    const PinholeIntrinsics& intrinsics, std::mutex& flagsMutex,
                                    bool flatLayout) {
  // Counts that no array can hold fail here, before the frame counter and
  // the double buffer move: a frame that could never be built leaves the
  // reset cadence and the records as they were.
  const MeshGrid grid = ComputeMeshGrid(meshReductionLevel.load(), width, height);
  if (!grid.Fits()) {
    return Failure(weftcore::kCauseOutOfMemory,
                   "mesh size out of range: vertex or triangle count not in 0..2147483647.");
  }
  const int32_t vertexCount = static_cast<int32_t>(grid.vertexCount);
  const int32_t triangleCount = static_cast<int32_t>(grid.triangleCount);
  if (triangleCount > 0) zRows_.resize(2 * static_cast<size_t>(grid.nx));
  if (!flatLayout) {
    // Room for this frame's lease, so that recording it after the frame is
    // built cannot fail.
    std::lock_guard<std::mutex> lock(leaseMutex_);
    if (leases_.size() == leases_.capacity()) leases_.reserve(2 * leases_.size() + 1);
  }

  const bool reset = NextResetFlag();
  Slot& slot = FlipDoubleBuffer(flagsMutex);
  EnsureArrays(slot, vertexCount, triangleCount);
  slot.record.resetTriangle = reset ? 1 : 0;

  // The frame memory is taken before the mesh is computed, so that the flat
  // layout receives vertices and indices as they are written instead of
  // copying them from the record afterwards. When the host's allocator fails,
  // the record is still filled and the counter has moved, as for a frame the
  // host then could not deliver: the reset cadence does not depend on how
  // much frame memory the host had.
  const MeshLayout layout = flatLayout ? MeshLayout::kFlat : MeshLayout::kReference;
  MeshChannelBlock block(frame, allocator);
  const weftcore::Status allocated = block.Allocate(MeshLayoutSize(slot.record, layout));
  float* flatVertices = nullptr;
  int32_t* flatTriangles = nullptr;
  if (allocated.ok() && layout == MeshLayout::kFlat) {
    flatVertices = block.ArrayAt<float>(FlatLayout::kVerticesOffset);
    flatTriangles = block.ArrayAt<int32_t>(FlatLayout::TrianglesOffset(vertexCount));
  }
  WriteMesh(slot, grid, reset, depth, width, height, intrinsics, flatVertices, flatTriangles);
  if (allocated.IsError()) return allocated;

  const bool written =
      layout == MeshLayout::kFlat
          ? WriteFlatLayout(block, slot.record, flatVertices != nullptr,
                            flatTriangles != nullptr || triangleCount == 0)
          : WriteReferenceLayout(block, slot.record);
  if (!written) return Failure(weftcore::kCauseOutOfMemory, "frame memory write failed.");
  block.Append();
  if (layout == MeshLayout::kReference) LeaseArrays(frame->channels.back().memory, slot);
  return weftcore::Status();
}

void MeshBuilder::WriteMesh(Slot& slot, const MeshGrid& grid, bool reset, const int16_t* depth,
                            int32_t width, int32_t height, const PinholeIntrinsics& intrinsics,
                            float* flatVertices, int32_t* flatTriangles) {
  // Everything is written straight into the record's arrays. Every element
  // is written on every frame, so no temporary copy and no zeroing is needed.
  float* vertices = slot.vertices.get();
  int32_t* triangles = slot.triangles.get();
  const bool hasCells = slot.record.triangleCount > 0;  // nx >= 2 and ny >= 2
  const bool refit = reset && hasCells;
  if (hasCells) slot.split.Prepare(grid.nx, grid.ny, triangles);
  // A frame that is not a reset frame takes the default split everywhere.
  if (hasCells && !reset) slot.split.ClearOther(triangles);
  float* zRows[2] = {nullptr, nullptr};
  if (refit) {
    zRows[0] = zRows_.data();
    zRows[1] = zRows_.data() + grid.nx;
  }
  // The flat block's cell row j, once the record's row holds its split.
  const auto writeFlatRow = [&](int32_t j) {
    if (hasCells && flatTriangles != nullptr) slot.split.WriteRowTo(j, flatTriangles);
  };

  if (grid.exact) {
    // Row by row, so that a reset frame re-fits each cell row, and the flat
    // block receives it, while the depths of its two grid rows and its flags
    // are still in the cache: one pass over the cells.
    for (int32_t j = 0; j < grid.ny; ++j) {
      WriteVertexRow(depth, width, grid.step, intrinsics, j, grid.nx, vertices, flatVertices,
                     refit ? zRows[j & 1] : nullptr);
      if (j == 0) continue;
      if (refit) slot.split.RefitRow(j - 1, zRows[(j - 1) & 1], zRows[j & 1], triangles);
      writeFlatRow(j - 1);
    }
  } else {
    WriteVertices(depth, width, height, grid.step, intrinsics, vertices, flatVertices,
                  slot.record.vertexCount);
    for (int32_t j = 0; hasCells && j + 1 < grid.ny; ++j) {
      for (int32_t row = 0; refit && row < 2; ++row) {
        const float* z = vertices + 3 * (static_cast<int64_t>(j + row) * grid.nx) + 2;
        for (int32_t i = 0; i < grid.nx; ++i) zRows[row][i] = z[3 * i];
      }
      if (refit) slot.split.RefitRow(j, zRows[0], zRows[1], triangles);
      writeFlatRow(j);
    }
  }
}

bool MeshBuilder::NextResetFlag() {
  // Wraps instead of overflowing after 2^31 frames.
  meshFrameCounter = static_cast<int32_t>(static_cast<uint32_t>(meshFrameCounter) + 1u);
  // 64-bit, so that INT32_MIN % -1 (a period only a direct write can set)
  // stays defined. A period of 0 takes the counter itself as the remainder.
  const int64_t period = resetTrianglePeriod.load();
  const int64_t remainder = period == 0 ? meshFrameCounter : meshFrameCounter % period;
  resetTriangle = remainder == 0;
  return resetTriangle;
}

MeshBuilder::Slot& MeshBuilder::FlipDoubleBuffer(std::mutex& flagsMutex) {
  std::lock_guard<std::mutex> lock(flagsMutex);
  Slot& slot = frameDataToggle == 0 ? second_ : first_;
  frameDataToggle ^= 1;
  return slot;
}

void MeshBuilder::EnsureArrays(Slot& slot, int32_t vertexCount, int32_t triangleCount) {
  const bool newVertices = !slot.vertices || slot.record.vertexCount != vertexCount;
  const bool newTriangles = !slot.triangles || slot.record.triangleCount != triangleCount;
  // Everything that can throw comes first, so that a failure leaves the slot
  // as it was.
  std::unique_ptr<float[]> vertices;
  std::unique_ptr<int32_t[]> triangles;
  if (newVertices) vertices.reset(new float[3 * static_cast<size_t>(vertexCount)]);
  if (newTriangles) triangles.reset(new int32_t[3 * static_cast<size_t>(triangleCount)]);
  std::lock_guard<std::mutex> lock(leaseMutex_);
  if (newVertices && slot.vertices) retiredVertices_.reserve(retiredVertices_.size() + 1);
  if (newTriangles && slot.triangles) retiredTriangles_.reserve(retiredTriangles_.size() + 1);
  if (newTriangles) slot.split.Resize(triangleCount / 2);

  if (newVertices) {
    Retire(std::move(slot.vertices), &retiredVertices_);
    slot.vertices = std::move(vertices);
    slot.record.vertices = slot.vertices.get();
  }
  if (newTriangles) {
    Retire(std::move(slot.triangles), &retiredTriangles_);
    slot.triangles = std::move(triangles);
    slot.record.triangles = slot.triangles.get();
  }
  slot.record.vertexCount = vertexCount;
  slot.record.triangleCount = triangleCount;
}

template <typename T>
void MeshBuilder::Retire(std::unique_ptr<T[]> array, std::vector<std::unique_ptr<T[]>>* retired) {
  // Flat-layout frames carry copies, so only an unreleased reference-layout
  // frame can still read the array; without one it goes at once, and a
  // client that keeps changing the reduction level does not grow the heap.
  if (array && Leased(array.get())) retired->push_back(std::move(array));
}

bool MeshBuilder::Leased(const void* array) const {
  return std::any_of(leases_.begin(), leases_.end(), [array](const Lease& lease) {
    return lease.vertices == array || lease.triangles == array;
  });
}

void MeshBuilder::LeaseArrays(const weftcore::Memory* memory, const Slot& slot) {
  std::lock_guard<std::mutex> lock(leaseMutex_);
  leases_.push_back(Lease{memory, slot.vertices.get(), slot.triangles.get()});
}

void MeshBuilder::FrameReleased(const weftcore::Memory* memory) {
  if (memory == nullptr) return;
  std::lock_guard<std::mutex> lock(leaseMutex_);
  const auto found = std::find_if(leases_.begin(), leases_.end(),
                                  [memory](const Lease& lease) { return lease.memory == memory; });
  if (found == leases_.end()) return;
  *found = leases_.back();
  leases_.pop_back();
  const auto unnamed = [this](const auto& array) { return !Leased(array.get()); };
  retiredVertices_.erase(
      std::remove_if(retiredVertices_.begin(), retiredVertices_.end(), unnamed),
      retiredVertices_.end());
  retiredTriangles_.erase(
      std::remove_if(retiredTriangles_.begin(), retiredTriangles_.end(), unnamed),
      retiredTriangles_.end());
}

void MeshBuilder::ReleaseArrays() {
  for (Slot* slot : {&first_, &second_}) {
    slot->vertices.reset();
    slot->triangles.reset();
    slot->record.vertices = nullptr;
    slot->record.triangles = nullptr;
    slot->split.Release();
  }
  // Frames still out name freed arrays from here on; releasing them later
  // finds no lease and frees nothing twice.
  std::lock_guard<std::mutex> lock(leaseMutex_);
  leases_.clear();
  retiredVertices_.clear();
  retiredTriangles_.clear();
}

}  // namespace ZeltoMesh
