// Part 1.4: Start, Stop, frame production and release.
#include <chrono>
#include <cstdint>
#include <exception>
#include <map>

#include "component/stream_source_logger.h"
#include "component/zelto_mesh_constants.h"
#include "component/zelto_mesh_streamsource.h"
#include "properties/zelto_runtime_settings_property.h"
#include "properties/zelto_tof_properties.h"

namespace {

constexpr uint32_t kPointCloudChannelId = 2;
constexpr int64_t kNanosecondsPerMillisecond = 1000000;

// Step 11: the upstream frame goes back to its stream on every path,
// exceptions included; the status is discarded.
class UpstreamFrameRelease {
 public:
  UpstreamFrameRelease(weftcore::Stream* stream, weftcore::Frame* frame)
      : stream_(stream), frame_(frame) {}
  ~UpstreamFrameRelease() { stream_->ReleaseFrame(frame_); }
  UpstreamFrameRelease(const UpstreamFrameRelease&) = delete;
  UpstreamFrameRelease& operator=(const UpstreamFrameRelease&) = delete;

 private:
  weftcore::Stream* stream_;
  weftcore::Frame* frame_;
};

// Frame memory of a built frame that never reached `frames` goes straight
// back to the allocator, so an exception after fillFrameData leaks nothing.
class UndeliveredFrameMemory {
 public:
  UndeliveredFrameMemory(weftcore::MemoryAllocator* allocator, weftcore::FrameInfo* frame)
      : allocator_(allocator), frame_(frame) {}
  ~UndeliveredFrameMemory() {
    if (delivered_ || allocator_ == nullptr) return;
    for (const weftcore::ChannelRawData& channel : frame_->channels) {
      if (channel.memory != nullptr) allocator_->Free(channel.memory);
    }
  }
  void Delivered() { delivered_ = true; }
  UndeliveredFrameMemory(const UndeliveredFrameMemory&) = delete;
  UndeliveredFrameMemory& operator=(const UndeliveredFrameMemory&) = delete;

 private:
  weftcore::MemoryAllocator* allocator_;
  weftcore::FrameInfo* frame_;
  bool delivered_ = false;
};

// Bytes of a width x height point cloud (6 per point); 0 for an empty image.
uint64_t PointCloudBytes(int32_t width, int32_t height) {
  if (width < 1 || height < 1) return 0;
  return static_cast<uint64_t>(width) * static_cast<uint64_t>(height) * 6u;
}

void LogFillFrameError(const char* message) {
  StreamSourceLogger().WriteLog(ZeltoLogger::Debug, ZeltoMesh::kComponentName,
                                "[%s] fill frame error: %s", ZeltoMesh::kComponentName, message);
}

}  // namespace

weftcore::Status ZeltoMeshStreamSource::Start() {
  // Deviation: Start before a successful Open fails instead of crashing.
  if (zeltoStream == nullptr) {
    return weftcore::Status(weftcore::kLevelError, weftcore::kCauseInvalidArgument,
                            "Null pointer")
        .SetBlock(ZeltoMesh::kComponentName);
  }
  // 1. and 2.
  Zelto::ZeltoRuntimeSettingsProperty_ settings;
  weftcore::Status status = zeltoStream->GetProperty(Zelto::kZeltoRuntimeSettingsKey, &settings);
  if (status.IsError()) return status.AddTrace(nullptr, 0);

  // 3.
  flatRawData = settings.isRemoteServer;
  StreamSourceLogger().WriteLog(ZeltoLogger::Debug, ZeltoMesh::kComponentName,
                                "[%s] Flat Raw Data = %s\n", ZeltoMesh::kComponentName,
                                flatRawData ? "true" : "false");

  // 4. Playback only when the last frame rate set before Start was 15.
  const bool playback = usePlayback.load();
  inputStream = playback ? playerStream : camera2Stream;
  StreamSourceLogger().WriteLog(ZeltoLogger::Debug, ZeltoMesh::kComponentName,
                                "Using playback: %d", playback ? 1 : 0);

  // 5. A player stream that was never opened leaves no input; not an error.
  if (inputStream != nullptr) inputStream->Start();

  // 6. The first GetFrames re-reads the camera configuration.
  fx = 0;
  fy = 0;
  frameCount = 0;
  return weftcore::Status();
}

weftcore::Status ZeltoMeshStreamSource::Stop() {
  // The segmentation stream stays open; Part 3.3 or Close closes it.
  if (segmentationStream != nullptr) segmentationStream->Stop();
  if (inputStream != nullptr) inputStream->Stop();
  {
    // The original cleared both flags with one two-byte store; as atomics
    // they are cleared together under the mutex that guards their writes.
    std::lock_guard<std::mutex> lock(flagsMutex);
    frameRate30 = false;
    usePlayback = false;
  }
  return weftcore::Status();
}

void ZeltoMeshStreamSource::PaceFrameRequests() {
  if (frameCount == 0) return;  // no pacing for the first frame after Start
  const int64_t elapsed =
      std::chrono::duration_cast<std::chrono::nanoseconds>(now() - lastFrameTime).count();
  if (elapsed < kNanosecondsPerMillisecond) {
    // Kept as specified: elapsed is below 1 ms here, so this is always a full
    // millisecond (the remainder is not computed below whole milliseconds).
    const int64_t wait =
        kNanosecondsPerMillisecond -
        (elapsed / kNanosecondsPerMillisecond) * kNanosecondsPerMillisecond;
    weftcore::osal::OSSleep(static_cast<uint64_t>(wait));
  }
}

void ZeltoMeshStreamSource::ReadCameraConfiguration() {
  ZeltoTof::ZeltoTofCamera2ConfigurationProperty_ configuration;
  const weftcore::Status status =
      inputStream->GetProperty(ZeltoTof::kZeltoTofCamera2CurrentConfigurationKey, &configuration);
  if (status.IsError()) return;  // silent; retried on the next frame
  width = configuration.width;
  height = configuration.height;
  fx = configuration.intrinsics.fx;
  fy = configuration.intrinsics.fy;
  cx = configuration.intrinsics.cx;
  cy = configuration.intrinsics.cy;
  StreamSourceLogger().WriteLog(ZeltoLogger::Debug, ZeltoMesh::kComponentName,
                                "mesh loaded height:%d width:%d fx:%f fy:%f cx:%f cy:%f", height,
                                width, static_cast<double>(fx), static_cast<double>(fy),
                                static_cast<double>(cx), static_cast<double>(cy));
}

void ZeltoMeshStreamSource::GetFrames(std::vector<weftcore::FrameInfo>* frames) {
  if (frames == nullptr) return;  // deviation: nowhere to deliver
  // Deviation: no exception may reach the host; one is reported like a failed
  // fillFrameData and nothing is delivered.
  try {
    NextFrame(frames);
  } catch (const std::exception& e) {
    LogFillFrameError(e.what());
  } catch (...) {
    LogFillFrameError("unknown exception");
  }
}

void ZeltoMeshStreamSource::NextFrame(std::vector<weftcore::FrameInfo>* frames) {
  // 1. and 2.
  PaceFrameRequests();
  lastFrameTime = now();

  // 3. Deviation: no input (playback chosen without a player stream) gives
  // an empty answer instead of a null call.
  if (inputStream == nullptr) return;
  weftcore::Frame* upstream = nullptr;
  const weftcore::Status status = inputStream->GetFrame(&upstream, 0);
  if (status.IsError() || upstream == nullptr) return;

  UpstreamFrameRelease release(inputStream, upstream);  // 11.
  ProduceFrame(upstream, frames);
}

void ZeltoMeshStreamSource::ProduceFrame(weftcore::Frame* upstream,
                                         std::vector<weftcore::FrameInfo>* frames) {
  // 4.
  if (fx == 0 || fy == 0) ReadCameraConfiguration();

  // 5. Channel 2 is tested before the map is indexed.
  std::map<uint32_t, weftcore::Channel*> channels;
  if (upstream->GetChannelList(&channels).IsError() ||
      channels.count(kPointCloudChannelId) == 0) {
    return;
  }
  weftcore::Channel* pointCloud = channels.at(kPointCloudChannelId);
  if (pointCloud == nullptr) return;  // deviation: a null channel is a missing one

  // 6. Status not examined: a failed read leaves the zeroed raw data.
  weftcore::Channel::RawData raw;
  pointCloud->GetRawData(&raw);

  // 7. Segmentation link (Part 3.3): open or close the segmentation stream
  // and refresh the calibration, as the mask settings say.
  ControlSegmentationStream();
  // 8. Masking (Part 3.3): blanks masked points of `raw` in place.
  ApplySegmentationMasks(&raw);

  // Deviation: the builder reads width x height points; a smaller point cloud
  // (configuration and frame out of step) would be read past its end.
  const uint64_t needed = PointCloudBytes(width, height);
  if (raw.address != nullptr && raw.size < needed) {
    StreamSourceLogger().WriteLog(
        ZeltoLogger::Debug, ZeltoMesh::kComponentName,
        "[%s] fill frame error: point cloud is too small: size=%llu, expected=%llu",
        ZeltoMesh::kComponentName, static_cast<unsigned long long>(raw.size),
        static_cast<unsigned long long>(needed));
    return;
  }
  // 9.
  weftcore::FrameInfo frame;
  UndeliveredFrameMemory undelivered(allocator, &frame);
  const weftcore::Status status =
      fillFrameData(&frame, allocator, static_cast<const int16_t*>(raw.address), width, height,
                    fx, fy, cx, cy);

  // 10.
  if (status.IsError()) {
    LogFillFrameError(status.message().c_str());
    return;
  }
  if (!frame.channels.empty()) frame.channels.front().capturedTimestamp = raw.timestamp;
  frame.sequenceNumber = frameCount;
  frames->push_back(frame);
  undelivered.Delivered();
  ++frameCount;  // after the append, so that a failed append reuses the number
}

weftcore::Status ZeltoMeshStreamSource::fillFrameData(weftcore::FrameInfo* frame,
                                                      weftcore::MemoryAllocator* allocator,
                                                      const int16_t* depth, int32_t width,
                                                      int32_t height, float fx, float fy,
                                                      float cx, float cy) {
  return meshBuilder.Fill(frame, allocator, depth, width, height, fx, fy, cx, cy, flagsMutex,
                          flatRawData, frameRate30);
}

weftcore::Status ZeltoMeshStreamSource::ReleaseFrame(
    const weftcore::FrameInfo& frameinfo, const std::vector<uint32_t>* /*referenced_channel_ids*/) {
  if (allocator == nullptr) return weftcore::Status();  // nothing can have been allocated
  for (const weftcore::ChannelRawData& channel : frameinfo.channels) {
    if (channel.memory != nullptr) allocator->Free(channel.memory);
  }
  return weftcore::Status();
}
