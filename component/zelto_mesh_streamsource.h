// ZeltoMeshStreamSource: the stream source of type "mesh" (Parts 1.3, 1.4),
// with the property handlers of Parts 2.2, 3.4 and 4.2.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "masking/mask_settings_property.h"
#include "masking/masked_point_cloud.h"
#include "mesh/mesh_algorithm_config_property.h"
#include "mesh/mesh_builder.h"
#include "properties/zelto_log_level_property.h"
#include "properties/zelto_segmentation_properties.h"
#include "weftcore/weftcore.h"

class ZeltoMeshStreamSource : public weftcore::StreamSource {
 public:
  using SteadyClock = std::chrono::steady_clock;

  ZeltoMeshStreamSource();
  ~ZeltoMeshStreamSource() override;

  // Part 1.3
  weftcore::Status Open(weftcore::Core* core, weftcore::StreamSourceUtility* util) override;
  using weftcore::StreamSource::Open;  // the one-argument base default stays
  weftcore::Status Close() override;

  // Part 1.4
  weftcore::Status Start() override;
  weftcore::Status Stop() override;
  void GetFrames(std::vector<weftcore::FrameInfo>* frames) override;
  weftcore::Status ReleaseFrame(const weftcore::FrameInfo& frameinfo,
                                const std::vector<uint32_t>* referenced_channel_ids) override;

  // Part 4.2
  using weftcore::StreamSource::Get;
  using weftcore::StreamSource::Set;
  weftcore::Status Get(const std::string& key, Zelto::ZeltoLogLevelProperty_* property);
  weftcore::Status Set(const std::string& key, const Zelto::ZeltoLogLevelProperty_* property);
  weftcore::Status Get(const std::string& key, weftcore::ChannelInfoProperty* property) override;
  weftcore::Status Get(const std::string& key, weftcore::FrameRateProperty* property) override;
  weftcore::Status Set(const std::string& key,
                       const weftcore::FrameRateProperty* property) override;

  // Part 2.2
  weftcore::Status Get(const std::string& key,
                       ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_* property);
  weftcore::Status Set(const std::string& key,
                       const ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_* property);

  // Part 3.4
  weftcore::Status Get(const std::string& key, ZeltoMesh::ZeltoMeshMaskSettingsProperty_* property);
  weftcore::Status Set(const std::string& key,
                       const ZeltoMesh::ZeltoMeshMaskSettingsProperty_* property);

  // Part 2.1
  weftcore::Status fillFrameData(weftcore::FrameInfo* frame, weftcore::MemoryAllocator* allocator,
                                 const int16_t* depth, int32_t width, int32_t height, float fx,
                                 float fy, float cx, float cy);

  // Test seam: the steady clock that paces GetFrames.
  using ClockFunction = SteadyClock::time_point (*)();
  void SetClockForTesting(ClockFunction clock) { now = clock; }

 private:
  // Tests read the private state through this peer (tests/component).
  friend class ZeltoMeshStreamSourceTestPeer;

  // Part 1.4, GetFrames step 1: at most one frame request per millisecond.
  void PaceFrameRequests();
  // Part 1.4, GetFrames step 4: caches the camera's size and intrinsics.
  void ReadCameraConfiguration();
  // Part 1.4, GetFrames steps 1 to 11, without the exception guard.
  void NextFrame(std::vector<weftcore::FrameInfo>* frames);
  // Part 1.4, GetFrames steps 4 to 10 on one upstream frame.
  void ProduceFrame(weftcore::Frame* upstream, std::vector<weftcore::FrameInfo>* frames);

  // Part 3.3 (zelto_mesh_streamsource_segmentation.cpp)
  void StartSegmentationStream();
  void StopSegmentationStream();
  // GetFrames step 7: opens or closes the segmentation stream, refreshes the
  // calibration.
  void ControlSegmentationStream();
  // GetFrames step 8: blanks the masked points of `raw` in place.
  void ApplySegmentationMasks(weftcore::Channel::RawData* raw);

  // Members of Part 1.3, in its order.
  uint64_t frameCount = 0;
  weftcore::Core* core = nullptr;
  weftcore::Stream* zeltoStream = nullptr;
  weftcore::Stream* inputStream = nullptr;
  weftcore::Stream* camera2Stream = nullptr;
  weftcore::Stream* playerStream = nullptr;
  weftcore::Stream* segmentationStream = nullptr;
  weftcore::MemoryAllocator* allocator = nullptr;
  bool flatRawData = false;
  // Written by the frame-rate handler on client threads, read by Start and the
  // mesh builder on the frame thread: atomics keep those reads defined.
  std::atomic<bool> frameRate30{false};
  std::atomic<bool> usePlayback{false};
  std::mutex flagsMutex;
  std::mutex maskMutex;
  // Mesh algorithm configuration (Part 2.2) and mesh-builder state (Part 2.1).
  ZeltoMesh::MeshBuilder meshBuilder;
  float cx = 0;
  float cy = 0;
  float fx = 0;
  float fy = 0;
  int32_t width = 0;
  int32_t height = 0;
  ZeltoMesh::ZeltoMeshMaskSettingsProperty_ maskSettings;
  ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_ maskDataList;
  MaskedPointCloud maskedPointCloud;
  SteadyClock::time_point lastFrameTime{};

  ClockFunction now = &SteadyClock::now;
};
