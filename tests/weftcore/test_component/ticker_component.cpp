// A tiny component library that the loading tests dlopen. Its one source type
// "ticker" delivers one frame per request whose channel 0 holds the frame's
// sequence number as a 32-bit value; its frame rate is 10/1.
#include <cstring>

#include "weftcore/weftcore.h"

namespace {

using weftcore::Status;

class TickerSource final : public weftcore::StreamSource {
 public:
  void GetFrames(std::vector<weftcore::FrameInfo>* frames) override {
    weftcore::FrameInfo info;
    info.sequenceNumber = ++sequence_;
    weftcore::ChannelRawData data;
    if (allocator_->Allocate(sizeof(uint32_t), &data.memory).IsError()) return;
    const auto value = static_cast<uint32_t>(info.sequenceNumber);
    std::memcpy(data.memory->GetAddress(), &value, sizeof(value));
    data.size = sizeof(value);
    data.type = "ticker";
    data.capturedTimestamp = 100 * info.sequenceNumber;
    info.channels.push_back(data);
    frames->push_back(info);
  }

  Status ReleaseFrame(const weftcore::FrameInfo& info,
                      const std::vector<uint32_t>* /*referenced_channel_ids*/) override {
    for (const weftcore::ChannelRawData& channel : info.channels) allocator_->Free(channel.memory);
    return Status();
  }

  Status Open(weftcore::Core* /*core*/, weftcore::StreamSourceUtility* util) override {
    return util->GetAllocator("", &allocator_);
  }
  Status Close() override { return Status(); }
  Status Start() override { return Status(); }
  Status Stop() override { return Status(); }

  Status Get(const std::string& /*key*/, weftcore::FrameRateProperty* property) override {
    *property = weftcore::FrameRateProperty{10, 1};
    return Status();
  }
  using StreamSource::Get;

 private:
  weftcore::MemoryAllocator* allocator_ = nullptr;
  uint64_t sequence_ = 0;
};

class TickerFactory final : public weftcore::StreamSourceFactory {
 public:
  void GetSupportedList(const weftcore::ComponentArgument& /*args*/,
                        std::vector<std::pair<std::string, int>>* list) override {
    list->emplace_back("ticker", 3);
  }
  Status CreateSource(const std::pair<std::string, int>& type,
                      weftcore::StreamSource** source) override {
    if (type.first == "ticker") *source = new TickerSource();
    return Status();
  }
};

}  // namespace

extern "C" __attribute__((visibility("default"))) weftcore::StandardComponent* CreateComponent() {
  return new weftcore::StandardComponent(new TickerFactory());
}

extern "C" __attribute__((visibility("default"))) void DestroyComponent(
    weftcore::StandardComponent* component) {
  delete component;
}
