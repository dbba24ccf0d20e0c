#include "component/tof_source.h"

#include <exception>

#include "component/device_log.h"
#include "component/fault_injection.h"
#include "component/frame_channels.h"
#include "component/source_errors.h"

namespace ZeltoSim {

weftcore::Status TofSource::Open(weftcore::Core* /*core*/, weftcore::StreamSourceUtility* util) {
  const SimFaults& faults = device_->options().faults;
  weftcore::Status status = RefusedCall(faults.failOpen, type_, "open");
  if (status.ok()) status = util->GetAllocator("", &allocator_);
  if (status.ok()) {
    status = ServeProperty<ZeltoTof::ZeltoTofCamera2ConfigurationProperty_>(
        util, ZeltoTof::kZeltoTofCamera2CurrentConfigurationKey, this, faults);
  }
  if (status.ok()) {
    status = ServeProperty<ZeltoTof::ZeltoTofCalibrationSettingsProperty_>(
        util, ZeltoTof::kZeltoTofCalibrationSettingsKey, this, faults);
  }
  if (status.ok()) {
    status = ServeProperty<ZeltoTof::ZeltoTofProcessTargetsProperty_>(
        util, ZeltoTof::kZeltoTofProcessTargetsKey, this, faults);
  }
  if (status.IsError()) status.AddTrace(nullptr, 0);
  return status;
}

weftcore::Status TofSource::Close() {
  EndDecoding();
  return RefusedCall(device_->options().faults.failClose, type_, "close");
}

weftcore::Status TofSource::Start() {
  weftcore::Status status = RefusedCall(device_->options().faults.failStart, type_, "start");
  if (status.IsError()) return status;
  EndDecoding();  // a second Start rewinds
  std::shared_ptr<FramePrefetcher> decoder;
  try {
    decoder = std::make_shared<FramePrefetcher>(device_, device_->options().realtime);
  } catch (const std::exception& e) {  // out of threads or memory: the stream stays stopped
    return SimError(weftcore::kCauseOutOfMemory, type_ + ": cannot start decoding: " + e.what());
  }
  std::lock_guard<std::mutex> lock(decoderMutex_);
  decoder_ = std::move(decoder);
  return weftcore::Status();
}

weftcore::Status TofSource::Stop() {
  EndDecoding();
  return RefusedCall(device_->options().faults.failStop, type_, "stop");
}

void TofSource::EndDecoding() {
  std::shared_ptr<FramePrefetcher> decoder;
  {
    std::lock_guard<std::mutex> lock(decoderMutex_);
    decoder.swap(decoder_);
  }
  if (decoder != nullptr) decoder->Stop();
}

weftcore::Status TofSource::BuildFrame(uint64_t index, weftcore::FrameInfo* frame) {
  weftcore::Status status;
  const ZeltoTof::ZeltoTofProcessTargetsProperty_ targets = device_->ProcessTargets();
  const uint64_t timestamp = device_->FrameTimestamp(index);
  const size_t pixels = points_.size() / 3;
  frame->sequenceNumber = index;
  if (targets.processDepth) {
    std::vector<uint16_t> depth(pixels);
    for (size_t i = 0; i < pixels; ++i) depth[i] = static_cast<uint16_t>(points_[3 * i + 2]);
    status = AppendChannel(allocator_, kDepthChannel, kRawDataTypeDepth, depth.data(),
                           depth.size() * sizeof(uint16_t), timestamp, frame);
  }
  if (status.ok() && targets.processConfidence) {
    std::vector<uint8_t> confidence(pixels);
    for (size_t i = 0; i < pixels; ++i) confidence[i] = points_[3 * i + 2] > 0 ? 255 : 0;
    status = AppendChannel(allocator_, kConfidenceChannel, kRawDataTypeConfidence,
                           confidence.data(), confidence.size(), timestamp, frame);
  }
  if (status.ok() && targets.processPointCloud) {
    const std::string& shape = device_->options().faults.pointCloud;
    if (shape == "null") {
      weftcore::ChannelRawData channel;
      channel.channelId = kPointCloudChannel;
      channel.type = kRawDataTypePointCloud;
      channel.capturedTimestamp = timestamp;
      frame->channels.push_back(channel);
    } else {
      const size_t points = shape == "short" && pixels > 0 ? pixels - 1 : pixels;
      status = AppendChannel(allocator_, kPointCloudChannel, kRawDataTypePointCloud,
                             points_.data(), points * 3 * sizeof(int16_t), timestamp, frame);
    }
  }
  return status;
}

void TofSource::GetFrames(std::vector<weftcore::FrameInfo>* frames) {
  std::shared_ptr<FramePrefetcher> decoder;
  {
    std::lock_guard<std::mutex> lock(decoderMutex_);
    decoder = decoder_;
  }
  if (decoder == nullptr || allocator_ == nullptr) return;
  uint64_t index = 0;
  weftcore::Status failure;
  switch (decoder->Next(&points_, &index, &failure)) {
    case FramePrefetcher::Outcome::kFrame: break;
    case FramePrefetcher::Outcome::kFailed:
      // Delivery stops here rather than skipping the frame: a consumer
      // counting frames would otherwise misnumber every later one.
      LogDeviceError(type_ + ": frame delivery stopped: " + failure.message());
      return;
    case FramePrefetcher::Outcome::kNotDue:
    case FramePrefetcher::Outcome::kEnded: return;
  }
  weftcore::FrameInfo frame;
  if (BuildFrame(index, &frame).IsError()) {
    FreeChannels(allocator_, frame);  // out of frame memory: this frame is lost
    return;
  }
  device_->NoteDelivered(index);
  frames->push_back(frame);
}

weftcore::Status TofSource::ReleaseFrame(const weftcore::FrameInfo& frameinfo,
                                         const std::vector<uint32_t>* /*referenced_channel_ids*/) {
  if (allocator_ != nullptr) FreeChannels(allocator_, frameinfo);
  return weftcore::Status();
}

weftcore::Status TofSource::Get(const std::string& /*key*/,
                                weftcore::ChannelInfoProperty* property) {
  if (property == nullptr) return NullRecordError();
  property->channels.clear();
  property->channels[kDepthChannel] = {kRawDataTypeDepth, "depth, uint16 millimetres"};
  property->channels[kConfidenceChannel] = {kRawDataTypeConfidence, "confidence, uint8"};
  property->channels[kPointCloudChannel] = {kRawDataTypePointCloud,
                                            "point cloud, int16 x y z millimetres"};
  return weftcore::Status();
}

weftcore::Status TofSource::Get(const std::string& /*key*/, weftcore::FrameRateProperty* property) {
  if (property == nullptr) return NullRecordError();
  property->num = 30;
  property->denom = 1;
  return weftcore::Status();
}

weftcore::Status TofSource::Get(const std::string& /*key*/,
                                ZeltoTof::ZeltoTofCamera2ConfigurationProperty_* property) {
  if (property == nullptr) return NullRecordError();
  *property = device_->CurrentConfiguration();
  return weftcore::Status();
}

weftcore::Status TofSource::Set(
    const std::string& key, const ZeltoTof::ZeltoTofCamera2ConfigurationProperty_* /*property*/) {
  return NotSettableError(key);
}

weftcore::Status TofSource::Get(const std::string& /*key*/,
                                ZeltoTof::ZeltoTofCalibrationSettingsProperty_* property) {
  if (property == nullptr) return NullRecordError();
  *property = device_->Calibration();
  return weftcore::Status();
}

weftcore::Status TofSource::Set(
    const std::string& key, const ZeltoTof::ZeltoTofCalibrationSettingsProperty_* /*property*/) {
  return NotSettableError(key);
}

weftcore::Status TofSource::Get(const std::string& /*key*/,
                                ZeltoTof::ZeltoTofProcessTargetsProperty_* property) {
  if (property == nullptr) return NullRecordError();
  *property = device_->ProcessTargets();
  return weftcore::Status();
}

weftcore::Status TofSource::Set(const std::string& /*key*/,
                                const ZeltoTof::ZeltoTofProcessTargetsProperty_* property) {
  if (property == nullptr) return NullRecordError();
  device_->SetProcessTargets(*property);
  return weftcore::Status();
}

}  // namespace ZeltoSim
