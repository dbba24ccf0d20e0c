// The mesh source's frame thread: Start, Stop, turning each upstream point
// cloud into a mesh frame, and handing frame memory back.
#include <chrono>
#include <cstdint>
#include <exception>
#include <map>

#include "component/entry_guard.h"
#include "component/stream_source_logger.h"
#include "component/zelto_mesh_constants.h"
#include "component/zelto_mesh_streamsource.h"
#include "properties/zelto_runtime_settings_property.h"
#include "properties/zelto_tof_properties.h"

namespace {

constexpr uint32_t kPointCloudChannelId = 2;
constexpr int64_t kNanosecondsPerMillisecond = 1000000;

// The upstream frame goes back to its stream on every path, exceptions
// included: the device's frame memory is finite and a frame kept here would
// stall it. The status is dropped; nothing can be done about it here.
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

// Hands a frame's memory back to the allocator, after telling the builder
// that the arrays a reference-layout frame named are no longer read through it.
void FreeFrameMemory(const weftcore::FrameInfo& frame, weftcore::MemoryAllocator* allocator,
                     ZeltoMesh::MeshBuilder* builder) {
  for (const weftcore::ChannelRawData& channel : frame.channels) {
    if (channel.memory == nullptr) continue;
    builder->FrameReleased(channel.memory);
    allocator->Free(channel.memory);
  }
}

// The frame memory is taken from the host's allocator while the mesh is
// built, before anyone knows whether the frame will be delivered. Memory of a
// frame that never reached `frames` goes straight back, so a failure or an
// exception after fillFrameData leaks nothing.
class UndeliveredFrameMemory {
 public:
  UndeliveredFrameMemory(weftcore::MemoryAllocator* allocator, weftcore::FrameInfo* frame,
                         ZeltoMesh::MeshBuilder* builder)
      : allocator_(allocator), frame_(frame), builder_(builder) {}
  ~UndeliveredFrameMemory() {
    if (delivered_ || allocator_ == nullptr) return;
    FreeFrameMemory(*frame_, allocator_, builder_);
  }
  void Delivered() { delivered_ = true; }
  UndeliveredFrameMemory(const UndeliveredFrameMemory&) = delete;
  UndeliveredFrameMemory& operator=(const UndeliveredFrameMemory&) = delete;

 private:
  weftcore::MemoryAllocator* allocator_;
  weftcore::FrameInfo* frame_;
  ZeltoMesh::MeshBuilder* builder_;
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
  return ZeltoMesh::WithoutExceptions("Start", [this] { return StartInput(); });
}

weftcore::Status ZeltoMeshStreamSource::Stop() {
  return ZeltoMesh::WithoutExceptions("Stop", [this] { return StopInput(); });
}

weftcore::Status ZeltoMeshStreamSource::StartInput() {
  // Without a successful Open there are no streams to start from; a host
  // that calls Start anyway gets a status rather than a crash.
  if (zeltoStream == nullptr) {
    return weftcore::Status(weftcore::kLevelError, weftcore::kCauseInvalidArgument,
                            "Null pointer")
        .SetBlock(ZeltoMesh::kComponentName);
  }
  // A remote server receives the mesh over the wire: it gets the flat layout.
  Zelto::ZeltoRuntimeSettingsProperty_ settings;
  weftcore::Status status = zeltoStream->GetProperty(Zelto::kZeltoRuntimeSettingsKey, &settings);
  if (status.IsError()) return status.AddTrace(nullptr, 0);

  flatRawData = settings.isRemoteServer;
  StreamSourceLogger().WriteLog(ZeltoLogger::Debug, ZeltoMesh::kComponentName,
                                "[%s] Flat Raw Data = %s\n", ZeltoMesh::kComponentName,
                                flatRawData ? "true" : "false");

  // Playback only when the last frame rate set before Start was 15.
  const bool playback = usePlayback.load();
  inputStream = playback ? playerStream : camera2Stream;
  StreamSourceLogger().WriteLog(ZeltoLogger::Debug, ZeltoMesh::kComponentName,
                                "Using playback: %d", playback ? 1 : 0);

  // A player stream that was never opened leaves no input; GetFrames then
  // answers with nothing until the next Start.
  if (inputStream != nullptr) inputStream->Start();

  // The camera may have changed while stopped: the first GetFrames re-reads
  // its configuration.
  fx = 0;
  fy = 0;
  frameCount = 0;
  return weftcore::Status();
}

weftcore::Status ZeltoMeshStreamSource::StopInput() {
  // The segmentation stream stays open for the next Start; the frame thread
  // closes it when masking is switched off, Close in any case.
  if (segmentationStream != nullptr) segmentationStream->Stop();
  if (inputStream != nullptr) inputStream->Stop();
  {
    // Cleared together under the mutex that guards their writes, so a
    // frame-rate Set never sees one flag cleared and the other not.
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
    // The remainder is counted in whole elapsed milliseconds, and here none
    // has elapsed: the wait is always a full millisecond. A host polling in a
    // tight loop is thereby held to one request per millisecond, whatever
    // the resolution of its clock; sleeping less would only save a fraction
    // of a millisecond on a frame that is not ready anyway.
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
  // A camera that cannot say its size yet is asked again on the next frame;
  // the log would fill with one line per frame otherwise.
  if (status.IsError()) return;
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
  if (frames == nullptr) return;  // nowhere to deliver
  // An exception must not unwind through the host's frame loop, which has no
  // way to know this component's types: it is logged like a failed
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
  PaceFrameRequests();
  lastFrameTime = now();

  // Playback asked for on a device without a recording: nothing to read.
  if (inputStream == nullptr) return;
  weftcore::Frame* upstream = nullptr;
  const weftcore::Status status = inputStream->GetFrame(&upstream, 0);
  if (status.IsError() || upstream == nullptr) return;

  UpstreamFrameRelease release(inputStream, upstream);
  ProduceFrame(upstream, frames);
}

void ZeltoMeshStreamSource::ProduceFrame(weftcore::Frame* upstream,
                                         std::vector<weftcore::FrameInfo>* frames) {
  if (fx == 0 || fy == 0) ReadCameraConfiguration();

  // A frame without a point cloud (the camera refused to compute one) is
  // not a mesh frame: dropped without a log line.
  std::map<uint32_t, weftcore::Channel*> channels;
  if (upstream->GetChannelList(&channels).IsError() ||
      channels.count(kPointCloudChannelId) == 0) {
    return;
  }
  weftcore::Channel* pointCloud = channels.at(kPointCloudChannelId);
  if (pointCloud == nullptr) return;  // a null channel is a missing one

  // The status is not examined: a failed read leaves the zeroed raw data,
  // which fillFrameData reports as a null point cloud.
  weftcore::Channel::RawData raw;
  pointCloud->GetRawData(&raw);

  ControlSegmentationStream();
  ApplySegmentationMasks(&raw);

  // The builder reads width x height points. A smaller point cloud means the
  // camera's configuration and its frames are out of step (a resolution
  // change under way): reading on would run past the device's buffer, so the
  // frame is dropped, with a log line because the cause is not obvious.
  const uint64_t needed = PointCloudBytes(width, height);
  if (raw.address != nullptr && raw.size < needed) {
    StreamSourceLogger().WriteLog(
        ZeltoLogger::Debug, ZeltoMesh::kComponentName,
        "[%s] fill frame error: point cloud is too small: size=%llu, expected=%llu",
        ZeltoMesh::kComponentName, static_cast<unsigned long long>(raw.size),
        static_cast<unsigned long long>(needed));
    return;
  }
  weftcore::FrameInfo frame;
  UndeliveredFrameMemory undelivered(allocator, &frame, &meshBuilder);
  const weftcore::Status status =
      fillFrameData(&frame, allocator, static_cast<const int16_t*>(raw.address), width, height,
                    fx, fy, cx, cy);

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
  // The host may release on any thread while GetFrames runs; the builder
  // guards what it shares with the frame thread.
  FreeFrameMemory(frameinfo, allocator, &meshBuilder);
  return weftcore::Status();
}
