#include "weftcore/recording_component.h"

#include <algorithm>

namespace weftcore_test {
namespace {

using weftcore::Status;

class RecordingSource final : public weftcore::StreamSource {
 public:
  explicit RecordingSource(std::string type) : type_(std::move(type)) {}

  void GetFrames(std::vector<weftcore::FrameInfo>* frames) override {
    Recorder& recorder = TheRecorder();
    const int request = ++requests_;
    recorder.get_frames_calls = request;
    recorder.Record("GetFrames");
    if (request < recorder.deliver_from_request) return;
    for (int i = 0; i < recorder.frames_per_request; ++i) frames->push_back(MakeFrame());
  }

  Status ReleaseFrame(const weftcore::FrameInfo& info,
                      const std::vector<uint32_t>* referenced_channel_ids) override {
    TheRecorder().Record("ReleaseFrame " + std::to_string(info.sequenceNumber) +
                         (referenced_channel_ids ? " with ids" : ""));
    for (const weftcore::ChannelRawData& channel : info.channels) {
      Status status = allocator_->Free(channel.memory);
      if (status.IsError()) return status;
    }
    return Status();
  }

  Status Open(weftcore::Core* core, weftcore::StreamSourceUtility* util) override {
    TheRecorder().Record("Open " + type_);
    core_ = core;
    Status status = util->GetAllocator("", &allocator_);
    if (status.IsError()) return status;
    if (type_ == "failing") return Status(weftcore::kLevelError, weftcore::kCauseInvalidState,
                                          "open refused");
    if (type_ == "self_opening") return core->OpenStream("loop", &upstream_);
    if (type_ == "mesh_like") {
      core->Initialize();
      return core->OpenStream("upstream", &upstream_);
    }
    return Status();
  }

  Status Close() override {
    TheRecorder().Record("Close " + type_);
    if (upstream_ != nullptr) {
      core_->CloseStream(upstream_);
      upstream_ = nullptr;
    }
    if (type_ == "mesh_like") core_->Finalize();
    return Status();
  }

  Status Start() override {
    TheRecorder().Record("Start " + type_);
    return Status();
  }

  Status Stop() override {
    TheRecorder().Record("Stop " + type_);
    return Status();
  }

  void RegisterMandatoryProperties(weftcore::StreamSourceUtility* util) override {
    TheRecorder().Record("RegisterMandatoryProperties " + type_);
    StreamSource::RegisterMandatoryProperties(util);
  }

  Status Get(const std::string& /*key*/, weftcore::ChannelInfoProperty* property) override {
    property->channels[0] = weftcore::ChannelInfo{kTestRawDataType, "test data"};
    return Status();
  }

  Status Get(const std::string& /*key*/, weftcore::FrameRateProperty* property) override {
    *property = TheRecorder().frame_rate;
    return Status();
  }

  Status Set(const std::string& /*key*/, const weftcore::FrameRateProperty* property) override {
    if (property == nullptr) {
      return Status(weftcore::kLevelError, weftcore::kCauseInvalidArgument, "Null pointer");
    }
    TheRecorder().frame_rate = *property;
    return Status();
  }

  using StreamSource::Set;

 private:
  weftcore::FrameInfo MakeFrame() {
    weftcore::FrameInfo info;
    info.sequenceNumber = ++sequence_;
    weftcore::ChannelRawData data;
    data.channelId = 0;
    if (allocator_->Allocate(kBlockSize, &data.memory).ok()) {
      auto* bytes = static_cast<uint8_t*>(data.memory->GetAddress());
      std::fill(bytes, bytes + kBlockSize, uint8_t{0});
      std::fill(bytes + kDataOffset, bytes + kDataOffset + kDataSize,
                static_cast<uint8_t>(info.sequenceNumber));
      data.size = kDataSize;
      data.offset = kDataOffset;
    }
    data.type = kTestRawDataType;
    data.capturedTimestamp = kTimestampBase + info.sequenceNumber;
    info.channels.push_back(data);
    weftcore::ChannelRawData empty;
    empty.channelId = 7;
    empty.type = "empty";
    info.channels.push_back(empty);
    return info;
  }

  std::string type_;
  weftcore::Core* core_ = nullptr;
  weftcore::MemoryAllocator* allocator_ = nullptr;
  weftcore::Stream* upstream_ = nullptr;
  int requests_ = 0;
  uint64_t sequence_ = 0;
};

class RecordingFactory final : public weftcore::StreamSourceFactory {
 public:
  void GetSupportedList(const weftcore::ComponentArgument& args,
                        std::vector<std::pair<std::string, int>>* list) override {
    TheRecorder().Record("GetSupportedList");
    TheRecorder().last_args = args;
    for (const char* type : {"recording", "failing", "mesh_like", "self_opening", "null"}) {
      list->emplace_back(type, 7);
    }
  }

  Status CreateSource(const std::pair<std::string, int>& type,
                      weftcore::StreamSource** source) override {
    TheRecorder().Record("CreateSource " + type.first + "/" + std::to_string(type.second));
    if (type.first != "null") *source = new RecordingSource(type.first);
    return Status();
  }

  void ReleaseSource(weftcore::StreamSource* source) override {
    TheRecorder().Record("ReleaseSource");
    StreamSourceFactory::ReleaseSource(source);
  }
};

}  // namespace

void Recorder::Record(const std::string& event) {
  std::lock_guard<std::mutex> lock(mutex_);
  events_.push_back(event);
}

std::vector<std::string> Recorder::Events() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return events_;
}

int Recorder::Count(const std::string& event) const {
  std::lock_guard<std::mutex> lock(mutex_);
  return static_cast<int>(std::count(events_.begin(), events_.end(), event));
}

void Recorder::Reset() {
  std::lock_guard<std::mutex> lock(mutex_);
  events_.clear();
  deliver_from_request = 1;
  frames_per_request = 1;
  frame_rate = weftcore::FrameRateProperty{30, 1};
  last_args = weftcore::ComponentArgument();
  get_frames_calls = 0;
}

Recorder& TheRecorder() {
  static Recorder recorder;
  return recorder;
}

weftcore::StandardComponent* CreateRecordingComponent() {
  TheRecorder().Record("CreateComponent");
  return new weftcore::StandardComponent(new RecordingFactory());
}

void DestroyRecordingComponent(weftcore::StandardComponent* component) {
  TheRecorder().Record("DestroyComponent");
  delete component;
}

}  // namespace weftcore_test
