// The test peer that ZeltoMeshStreamSource befriends: read access to the
// members of Part 1.3 that no public operation shows (and write access to
// the masking state, which the segmentation suites arrange).
#pragma once

#include <chrono>
#include <cstdint>

#include "component/zelto_mesh_streamsource.h"

class ZeltoMeshStreamSourceTestPeer {
 public:
  explicit ZeltoMeshStreamSourceTestPeer(ZeltoMeshStreamSource* source) : source_(source) {}

  uint64_t frameCount() const { return source_->frameCount; }
  weftcore::Core* core() const { return source_->core; }
  weftcore::Stream* zeltoStream() const { return source_->zeltoStream; }
  weftcore::Stream* inputStream() const { return source_->inputStream; }
  weftcore::Stream* camera2Stream() const { return source_->camera2Stream; }
  weftcore::Stream* playerStream() const { return source_->playerStream; }
  weftcore::Stream* segmentationStream() const { return source_->segmentationStream; }
  weftcore::MemoryAllocator* allocator() const { return source_->allocator; }
  bool flatRawData() const { return source_->flatRawData; }
  bool frameRate30() const { return source_->frameRate30; }
  bool usePlayback() const { return source_->usePlayback; }
  const ZeltoMesh::MeshBuilder& meshBuilder() const { return source_->meshBuilder; }
  float fx() const { return source_->fx; }
  float fy() const { return source_->fy; }
  float cx() const { return source_->cx; }
  float cy() const { return source_->cy; }
  int32_t width() const { return source_->width; }
  int32_t height() const { return source_->height; }
  const ZeltoMesh::ZeltoMeshMaskSettingsProperty_& maskSettings() const {
    return source_->maskSettings;
  }
  // Mutable: the segmentation suites arrange these.
  ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_& maskDataList() const {
    return source_->maskDataList;
  }
  MaskedPointCloud& maskedPointCloud() const { return source_->maskedPointCloud; }
  std::chrono::steady_clock::time_point lastFrameTime() const { return source_->lastFrameTime; }

 private:
  ZeltoMeshStreamSource* source_;
};
