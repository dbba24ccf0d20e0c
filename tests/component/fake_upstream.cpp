#include "tests/component/fake_upstream.h"

#include <cstring>
#include <stdexcept>
#include <utility>

#include "logging/zelto_logger.h"
#include "properties/zelto_log_level_property.h"
#include "properties/zelto_runtime_settings_property.h"
#include "weftcore/property_accessor.h"
#include "weftcore/stream_source.h"
#include "weftcore/stream_source_factory.h"

namespace zelto_test {
namespace {

FakeUpstream* currentUpstream = nullptr;

// Serves one FakeProperty through the host's serialized property calls.
class FakePropertyAccessor final : public weftcore::PropertyAccessor {
 public:
  explicit FakePropertyAccessor(std::shared_ptr<FakePropertyBase> property)
      : PropertyAccessor(property->key()), property_(std::move(property)) {}

  weftcore::Status Set(const std::string& /*key*/, const void* bytes, size_t size) override {
    return property_->Write(bytes, size);
  }

  weftcore::Status Get(const std::string& /*key*/, void** reply, size_t* replySize,
                       const void* input, size_t inputSize) override {
    std::vector<uint8_t> answer;
    weftcore::Status status = property_->Read(input, inputSize, &answer);
    if (status.IsError()) return status;
    uint8_t* bytes = new uint8_t[answer.size()];
    std::memcpy(bytes, answer.data(), answer.size());
    *reply = bytes;
    *replySize = answer.size();
    return weftcore::Status();
  }

  weftcore::Status Release(const std::string& /*key*/, void* reply, size_t /*size*/) override {
    delete[] static_cast<uint8_t*>(reply);
    return weftcore::Status();
  }

 private:
  std::shared_ptr<FakePropertyBase> property_;
};

// A source of one fake stream. Frame memory comes from the host's allocator
// and goes back to it in ReleaseFrame.
class FakeSource final : public weftcore::StreamSource {
 public:
  explicit FakeSource(std::shared_ptr<FakeStream> stream) : stream_(std::move(stream)) {}

  using weftcore::StreamSource::Open;
  weftcore::Status Open(weftcore::Core* /*core*/, weftcore::StreamSourceUtility* util) override {
    if (stream_->failOpen) {
      ++stream_->counts.failedOpens;
      return stream_->OpenFailure();
    }
    weftcore::Status status = util->GetAllocator("", &allocator_);
    if (status.IsError()) return status;
    for (const auto& entry : stream_->properties()) {
      auto* accessor = new FakePropertyAccessor(entry.second);
      status = util->RegisterProperty(accessor);
      if (status.IsError()) {
        delete accessor;
        return status;
      }
    }
    opened_ = true;
    ++stream_->counts.opens;
    return weftcore::Status();
  }

  weftcore::Status Close() override {
    if (opened_) ++stream_->counts.closes;
    opened_ = false;
    return weftcore::Status();
  }
  weftcore::Status Start() override {
    ++stream_->counts.starts;
    return weftcore::Status();
  }
  weftcore::Status Stop() override {
    ++stream_->counts.stops;
    return weftcore::Status();
  }

  void GetFrames(std::vector<weftcore::FrameInfo>* frames) override {
    ++stream_->counts.frameRequests;
    if (stream_->throwOnGetFrames) {
      throw std::runtime_error("fake stream " + stream_->key() + " throws");
    }
    FakeFrame next;
    if (!stream_->NextFrame(&next)) return;
    weftcore::FrameInfo info;
    info.sequenceNumber = static_cast<uint64_t>(stream_->counts.framesDelivered);
    for (const FakeChannel& channel : next.channels) {
      weftcore::ChannelRawData data;
      data.channelId = channel.id;
      data.type = channel.type;
      data.capturedTimestamp = next.timestamp;
      if (!channel.withoutMemory) {
        weftcore::Status status = allocator_->Allocate(channel.bytes.size(), &data.memory);
        if (status.IsError()) throw std::runtime_error(status.message());
        std::memcpy(data.memory->GetAddress(), channel.bytes.data(), channel.bytes.size());
        data.size = channel.bytes.size();
      }
      info.channels.push_back(data);
    }
    frames->push_back(info);
    ++stream_->counts.framesDelivered;
  }

  weftcore::Status ReleaseFrame(const weftcore::FrameInfo& frame,
                                const std::vector<uint32_t>* /*ids*/) override {
    ++stream_->counts.framesReleased;
    for (const weftcore::ChannelRawData& data : frame.channels) {
      if (data.memory != nullptr) allocator_->Free(data.memory);
    }
    return weftcore::Status();
  }

 private:
  std::shared_ptr<FakeStream> stream_;
  weftcore::MemoryAllocator* allocator_ = nullptr;
  bool opened_ = false;
};

// Offers one source type per stream key; an absent stream's type stays on
// the list (the host asks for it once) and fails in CreateSource.
class FakeUpstreamFactory final : public weftcore::StreamSourceFactory {
 public:
  void GetSupportedList(const weftcore::ComponentArgument& /*args*/,
                        std::vector<std::pair<std::string, int>>* list) override {
    if (currentUpstream == nullptr) return;
    for (const std::string& key : currentUpstream->Keys()) list->emplace_back(key, 0);
  }

  weftcore::Status CreateSource(const std::pair<std::string, int>& type,
                                weftcore::StreamSource** source) override {
    std::shared_ptr<FakeStream> stream =
        currentUpstream == nullptr ? nullptr : currentUpstream->Find(type.first);
    if (stream == nullptr) return FakeUpstream::AbsentFailure(type.first);
    *source = new FakeSource(std::move(stream));
    return weftcore::Status();
  }
};

weftcore::StandardComponent* CreateFakeUpstreamComponent() {
  return new weftcore::StandardComponent(new FakeUpstreamFactory());
}

void DestroyFakeUpstreamComponent(weftcore::StandardComponent* component) { delete component; }

std::vector<uint8_t> Bytes(const std::vector<int16_t>& samples) {
  std::vector<uint8_t> bytes(samples.size() * sizeof(int16_t));
  std::memcpy(bytes.data(), samples.data(), bytes.size());
  return bytes;
}

}  // namespace

FakeFrame PointCloudFrame(const std::vector<int16_t>& points, uint64_t timestamp) {
  FakeFrame frame;
  frame.timestamp = timestamp;
  frame.channels.push_back(FakeChannel{kPointCloudChannelId, Bytes(points), "point_cloud", false});
  return frame;
}

FakeFrame FlatPointCloudFrame(int16_t depthMm, uint64_t timestamp) {
  std::vector<int16_t> points;
  for (int16_t v = 0; v < kFakeImageHeight; ++v) {
    for (int16_t u = 0; u < kFakeImageWidth; ++u) {
      points.insert(points.end(), {u, v, depthMm});
    }
  }
  return PointCloudFrame(points, timestamp);
}

FakeFrame FrameWithoutPointCloud(uint64_t timestamp) {
  FakeFrame frame;
  frame.timestamp = timestamp;
  frame.channels.push_back(FakeChannel{0, {1, 2, 3, 4}, "depth", false});
  return frame;
}

FakeFrame FrameWithNullPointCloud(uint64_t timestamp) {
  FakeFrame frame;
  frame.timestamp = timestamp;
  frame.channels.push_back(FakeChannel{kPointCloudChannelId, {}, "point_cloud", true});
  return frame;
}

ZeltoTof::ZeltoTofCamera2ConfigurationProperty_ DefaultCameraConfiguration() {
  ZeltoTof::ZeltoTofCamera2ConfigurationProperty_ configuration;
  configuration.cameraId = "fake_tof";
  configuration.width = kFakeImageWidth;
  configuration.height = kFakeImageHeight;
  configuration.frameRate = 30;
  configuration.intrinsics.fx = 2.0f;
  configuration.intrinsics.fy = 2.0f;
  configuration.intrinsics.cx = 1.5f;
  configuration.intrinsics.cy = 1.0f;
  return configuration;
}

void FakeStream::ClearFrames() {
  script_.clear();
  steady_ = ScriptEntry();
}

bool FakeStream::NextFrame(FakeFrame* frame) {
  if (script_.empty()) {
    *frame = steady_.frame;
    return steady_.hasFrame;
  }
  const bool hasFrame = script_.front().hasFrame;
  *frame = std::move(script_.front().frame);
  script_.pop_front();
  return hasFrame;
}

weftcore::Status FakeStream::OpenFailure() const {
  return weftcore::Status(weftcore::kLevelError, weftcore::kCauseInvalidState,
                          "fake stream %s refuses to open", key_.c_str())
      .SetBlock("fake");
}

FakeUpstream::FakeUpstream() {
  currentUpstream = this;

  FakeStream& zelto = Add(Zelto::kStreamKey);
  Zelto::ZeltoLogLevelProperty_ level;
  level.logLevel = ZeltoLogger::Debug;
  zelto.Serve(Zelto::kZeltoLogLevelKey, level);
  zelto.Serve(Zelto::kZeltoRuntimeSettingsKey, Zelto::ZeltoRuntimeSettingsProperty_());

  FakeStream& camera = Add(ZeltoTof::kCamera2StreamKey);
  camera.Serve(ZeltoTof::kZeltoTofCamera2CurrentConfigurationKey, DefaultCameraConfiguration());
  ZeltoTof::ZeltoTofProcessTargetsProperty_ targets;
  targets.processDepth = true;
  camera.Serve(ZeltoTof::kZeltoTofProcessTargetsKey, targets);

  FakeStream& player = Add(ZeltoTof::kCamera2StreamPlaybackKey);
  player.Serve(ZeltoTof::kZeltoTofCamera2CurrentConfigurationKey, DefaultCameraConfiguration());
}

FakeUpstream::~FakeUpstream() {
  if (currentUpstream == this) currentUpstream = nullptr;
}

FakeStream& FakeUpstream::ZeltoStream() { return StreamOf(Zelto::kStreamKey); }
FakeStream& FakeUpstream::Camera() { return StreamOf(ZeltoTof::kCamera2StreamKey); }
FakeStream& FakeUpstream::Player() { return StreamOf(ZeltoTof::kCamera2StreamPlaybackKey); }

FakeStream& FakeUpstream::Add(const std::string& key) {
  auto stream = std::make_shared<FakeStream>(key);
  streams_[key] = stream;
  keys_.insert(key);
  return *stream;
}

FakeStream& FakeUpstream::StreamOf(const std::string& key) { return *streams_.at(key); }

void FakeUpstream::Remove(const std::string& key) { streams_.erase(key); }

weftcore::Status FakeUpstream::AbsentFailure(const std::string& key) {
  return weftcore::Status(weftcore::kLevelError, weftcore::kCauseNotFound,
                          "fake stream %s is absent", key.c_str())
      .SetBlock("fake");
}

weftcore::Status FakeUpstream::Register(weftcore::host::HostCore* core) {
  return core->RegisterComponent(kComponentName, &CreateFakeUpstreamComponent,
                                 &DestroyFakeUpstreamComponent);
}

void FakeUpstream::AddTo(weftcore::host::HostConfiguration* configuration) const {
  for (const std::string& key : keys_) {
    configuration->streams[key] = weftcore::host::StreamEntry{kComponentName, key};
  }
}

FakeUpstream* FakeUpstream::Current() { return currentUpstream; }

std::shared_ptr<FakeStream> FakeUpstream::Find(const std::string& key) const {
  const auto found = streams_.find(key);
  return found == streams_.end() ? nullptr : found->second;
}

}  // namespace zelto_test
