#include "component/sim_device.h"

#include <algorithm>
#include <cstring>

namespace ZeltoSim {

SimDevice::SimDevice(const SimOptions& options) : options_(options) {
  processTargets_.processDepth = true;  // the point cloud waits for a client to ask
  logLevel_.logLevel = static_cast<ZeltoLogger::LogLevel>(options.logLevel);
  runtimeSettings_.runMode = static_cast<Zelto::RunMode>(options.runMode);
  runtimeSettings_.isRemoteServer = options.remote;
}

weftcore::Status SimDevice::Create(const SimOptions& options, std::unique_ptr<SimDevice>* device) {
  std::unique_ptr<SimDevice> created(new SimDevice(options));
  if (options.input.empty()) {
    created->scene_ = std::make_unique<const SyntheticScene>(options.seed);
    created->intrinsics_ = SceneIntrinsics();
    created->calibration_ = SceneCalibration();
    created->masks_.push_back(
        MaskBuffer{kPersonMaskName, true, kPersonMaskWidth, kPersonMaskHeight, 0, {}, UINT64_MAX});
    created->masks_.push_back(
        MaskBuffer{kFloorMaskName, false, kFloorMaskWidth, kFloorMaskHeight, 0, {}, UINT64_MAX});
  } else {
    weftcore::Status status = LoadRecording(options.input, &created->recording_);
    if (status.IsError()) return status.AddTrace(nullptr, 0);
    created->hasRecording_ = true;
    created->intrinsics_ = created->recording_.intrinsics;
    created->calibration_ = created->recording_.calibration;
    for (size_t i = 0; i < created->recording_.masks.size(); ++i) {
      const MaskTrack& track = created->recording_.masks[i];
      created->masks_.push_back(MaskBuffer{
          track.name, track.isColorSource, track.width, track.height, i, {}, UINT64_MAX});
    }
  }
  for (MaskBuffer& mask : created->masks_) {
    mask.bytes.assign(static_cast<size_t>(mask.width) * mask.height, 0);
  }
  *device = std::move(created);
  return weftcore::Status();
}

ZeltoTof::ZeltoTofCamera2ConfigurationProperty_ SimDevice::CurrentConfiguration() const {
  ZeltoTof::ZeltoTofCamera2ConfigurationProperty_ configuration;
  configuration.isCalibrated = calibration_.isCalibrated;
  configuration.cameraId = "zelto_sim_tof";
  configuration.colorCameraId = "zelto_sim_color";
  configuration.uid = 0;
  configuration.width = intrinsics_.width;
  configuration.height = intrinsics_.height;
  configuration.frameRate = 30.0f;
  configuration.unambiguousRange = 6.0f;  // metres
  configuration.lensFacing = 1;           // back
  configuration.intrinsics.fx = static_cast<float>(intrinsics_.fx);
  configuration.intrinsics.fy = static_cast<float>(intrinsics_.fy);
  configuration.intrinsics.cx = static_cast<float>(intrinsics_.cx);
  configuration.intrinsics.cy = static_cast<float>(intrinsics_.cy);
  configuration.name = hasRecording_ ? "recording" : "synthetic";
  return configuration;
}

uint64_t SimDevice::FrameLimit() const {
  if (!hasRecording_) return options_.frames;
  const uint64_t count = recording_.frameFiles.size();
  return options_.frames == 0 ? count : std::min(count, options_.frames);
}

uint64_t SimDevice::FrameTimestamp(uint64_t index) const {
  if (hasRecording_ && index < recording_.timestamps.size()) return recording_.timestamps[index];
  return index * kFramePeriodNs;
}

weftcore::Status SimDevice::ReadFrame(uint64_t index, std::vector<int16_t>* points) const {
  if (hasRecording_) return ReadPointCloudFrame(recording_, index, points);
  std::vector<uint16_t> depth;
  scene_->RenderDepth(index, &depth);
  points->resize(depth.size() * 3);
  DepthImageToPointCloud(depth.data(), intrinsics_, points->data());
  return weftcore::Status();
}

void SimDevice::NoteDelivered(uint64_t index) {
  std::lock_guard<std::mutex> lock(mutex_);
  currentFrame_ = index;
}

bool SimDevice::Refresh(MaskBuffer* mask, uint64_t frame) const {
  if (mask->frame == frame) return true;
  std::vector<uint8_t> bytes;
  if (hasRecording_) {
    if (ReadMaskFrame(recording_.masks[mask->track], frame, &bytes).IsError()) return false;
  } else if (mask->name == kPersonMaskName) {
    scene_->RenderPersonMask(frame, &bytes);
  } else {
    scene_->RenderFloorMask(frame, &bytes);
  }
  if (bytes.size() != mask->bytes.size()) return false;
  std::memcpy(mask->bytes.data(), bytes.data(), bytes.size());  // keeps the address
  mask->frame = frame;
  return true;
}

void SimDevice::AnswerMasks(ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_* list) {
  std::lock_guard<std::mutex> lock(mutex_);
  for (ZeltoSegmentation::ZeltoSegmentationMaskDataProperty_& entry : list->data) {
    entry.maskDataAddress = 0;
    entry.maskDataSize = 0;
    entry.maskDataWidth = 0;
    entry.maskDataHeight = 0;
    entry.maskDataTimestamp = 0;
    for (MaskBuffer& mask : masks_) {
      if (mask.name != entry.name || !Refresh(&mask, currentFrame_)) continue;
      entry.maskDataAddress = reinterpret_cast<uint64_t>(mask.bytes.data());
      entry.maskDataSize = mask.bytes.size();
      entry.maskDataWidth = mask.width;
      entry.maskDataHeight = mask.height;
      entry.maskDataTimestamp = FrameTimestamp(currentFrame_);
      entry.isColorSource = mask.isColorSource;
      break;
    }
  }
}

ZeltoTof::ZeltoTofProcessTargetsProperty_ SimDevice::ProcessTargets() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return processTargets_;
}

void SimDevice::SetProcessTargets(const ZeltoTof::ZeltoTofProcessTargetsProperty_& targets) {
  std::lock_guard<std::mutex> lock(mutex_);
  processTargets_ = targets;
}

Zelto::ZeltoLogLevelProperty_ SimDevice::LogLevel() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return logLevel_;
}

void SimDevice::SetLogLevel(const Zelto::ZeltoLogLevelProperty_& level) {
  std::lock_guard<std::mutex> lock(mutex_);
  logLevel_ = level;
}

Zelto::ZeltoRuntimeSettingsProperty_ SimDevice::RuntimeSettings() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return runtimeSettings_;
}

void SimDevice::SetRuntimeSettings(const Zelto::ZeltoRuntimeSettingsProperty_& settings) {
  std::lock_guard<std::mutex> lock(mutex_);
  runtimeSettings_ = settings;
}

}  // namespace ZeltoSim
