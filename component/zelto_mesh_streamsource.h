// ZeltoMeshStreamSource: the stream source of type "mesh". It reads point-cloud
// frames from the device's ToF stream (live or recorded), optionally blanks the
// points that segmentation masks select, and hands each frame back as a
// triangle mesh; clients steer it through its own properties.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
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
  using Clock = std::function<SteadyClock::time_point()>;

  // `clock` paces frame requests; the factory passes the steady clock, a
  // host that drives time itself may pass its own.
  explicit ZeltoMeshStreamSource(Clock clock = &SteadyClock::now);
  ~ZeltoMeshStreamSource() override;

  // Every operation the host calls answers a failed allocation (or any
  // other exception) with a status or, for GetFrames, a log line and no
  // frame: nothing is thrown back into the host.
  weftcore::Status Open(weftcore::Core* core, weftcore::StreamSourceUtility* util) override;
  using weftcore::StreamSource::Open;  // the one-argument base default stays
  weftcore::Status Close() override;
  // The base's two registrations; a failed one is logged and the stream goes
  // on without the properties not registered yet.
  void RegisterMandatoryProperties(weftcore::StreamSourceUtility* util) override;

  weftcore::Status Start() override;
  weftcore::Status Stop() override;
  void GetFrames(std::vector<weftcore::FrameInfo>* frames) override;
  // Any thread, also while GetFrames runs.
  weftcore::Status ReleaseFrame(const weftcore::FrameInfo& frameinfo,
                                const std::vector<uint32_t>* referenced_channel_ids) override;

  // Property handlers, called on client threads.
  using weftcore::StreamSource::Get;
  using weftcore::StreamSource::Set;
  weftcore::Status Get(const std::string& key, Zelto::ZeltoLogLevelProperty_* property);
  weftcore::Status Set(const std::string& key, const Zelto::ZeltoLogLevelProperty_* property);
  weftcore::Status Get(const std::string& key, weftcore::ChannelInfoProperty* property) override;
  weftcore::Status Get(const std::string& key, weftcore::FrameRateProperty* property) override;
  weftcore::Status Set(const std::string& key,
                       const weftcore::FrameRateProperty* property) override;
  weftcore::Status Get(const std::string& key,
                       ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_* property);
  weftcore::Status Set(const std::string& key,
                       const ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_* property);
  weftcore::Status Get(const std::string& key, ZeltoMesh::ZeltoMeshMaskSettingsProperty_* property);
  weftcore::Status Set(const std::string& key,
                       const ZeltoMesh::ZeltoMeshMaskSettingsProperty_* property);

  // Builds the mesh of a width x height point cloud into `frame`, with frame
  // memory from `allocator`.
  weftcore::Status fillFrameData(weftcore::FrameInfo* frame, weftcore::MemoryAllocator* allocator,
                                 const int16_t* depth, int32_t width, int32_t height, float fx,
                                 float fy, float cx, float cy);

 private:
  // The operations above without their exception guard.
  weftcore::Status OpenStreams(weftcore::Core* core, weftcore::StreamSourceUtility* util);
  weftcore::Status CloseStreams();
  weftcore::Status StartInput();
  weftcore::Status StopInput();
  void PaceFrameRequests();
  // Caches the camera's image size and intrinsics.
  void ReadCameraConfiguration();
  // GetFrames without the exception guard.
  void NextFrame(std::vector<weftcore::FrameInfo>* frames);
  // Everything done with one upstream frame while the caller holds it.
  void ProduceFrame(weftcore::Frame* upstream, std::vector<weftcore::FrameInfo>* frames);

  // The segmentation link (zelto_mesh_streamsource_segmentation.cpp).
  void StartSegmentationStream();
  void StopSegmentationStream();
  // Opens or closes the segmentation stream as the mask settings say, and
  // refreshes the calibration while masking is on.
  void ControlSegmentationStream();
  // Blanks the masked points of `raw` in place.
  void ApplySegmentationMasks(weftcore::Channel::RawData* raw);

  // Set by Open, cleared by Close; read by the frame calls, which the host
  // never runs at the same time as Open or Close.
  weftcore::Core* core = nullptr;
  weftcore::Stream* zeltoStream = nullptr;
  weftcore::Stream* camera2Stream = nullptr;
  weftcore::Stream* playerStream = nullptr;
  weftcore::MemoryAllocator* allocator = nullptr;

  // The frame thread's own state (Start, Stop, GetFrames, ReleaseFrame run
  // one at a time under the host's frame lock): no mutex.
  weftcore::Stream* inputStream = nullptr;  // camera2Stream or playerStream, chosen by Start
  weftcore::Stream* segmentationStream = nullptr;
  uint64_t frameCount = 0;
  bool flatRawData = false;
  float cx = 0;
  float cy = 0;
  float fx = 0;
  float fy = 0;
  int32_t width = 0;
  int32_t height = 0;
  SteadyClock::time_point lastFrameTime{};
  Clock now;

  // Written by the frame-rate handler on client threads under flagsMutex,
  // read by Start and the mesh builder on the frame thread: atomics keep the
  // reads defined, the mutex keeps the two flags in step. The builder's
  // algorithm configuration is atomic, its double buffer flips under
  // flagsMutex; its arrays belong to the frame thread.
  std::mutex flagsMutex;
  std::atomic<bool> frameRate30{false};
  std::atomic<bool> usePlayback{false};
  ZeltoMesh::MeshBuilder meshBuilder;

  // Guarded by maskMutex: the mask settings, the request list and the
  // masking threshold, shared by the mask-settings handlers and the frame
  // thread. The frame thread alone moves maskedPointCloud's camera stream and
  // calibration; the mutex is never held while the segmentation stream is
  // opened, started, stopped or closed.
  std::mutex maskMutex;
  ZeltoMesh::ZeltoMeshMaskSettingsProperty_ maskSettings;
  ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_ maskDataList;
  MaskedPointCloud maskedPointCloud;
};
