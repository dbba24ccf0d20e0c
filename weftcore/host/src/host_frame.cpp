// Frames as a consumer of a host stream sees them: read-only views over the
// FrameInfo the source delivered, checked against the frame's memory.
#include "weftcore/host/host_stream.h"

#include <utility>

namespace weftcore {
namespace host {
namespace {

// A view over one ChannelRawData of a delivered frame; owns nothing.
class HostChannel final : public Channel {
 public:
  explicit HostChannel(const ChannelRawData& data) : data_(data) {}

  uint32_t GetChannelId() const override { return data_.channelId; }

  Status GetRawData(RawData* raw) override {
    if (raw == nullptr) {
      return Status(kLevelError, kCauseInvalidArgument, "raw is null").SetBlock("core");
    }
    void* address = nullptr;
    if (data_.memory != nullptr) {
      // A source bug, not a consumer's: refuse a view that runs past the block.
      const uint64_t capacity = data_.memory->GetSize();
      if (data_.offset > capacity || data_.size > capacity - data_.offset) {
        return Status(kLevelError, kCauseInvalidArgument,
                      "channel %u (offset %llu, size %llu) exceeds its memory of %llu bytes",
                      data_.channelId, static_cast<unsigned long long>(data_.offset),
                      static_cast<unsigned long long>(data_.size),
                      static_cast<unsigned long long>(capacity))
            .SetBlock("core");
      }
      address = static_cast<uint8_t*>(data_.memory->GetAddress()) + data_.offset;
    }
    raw->address = address;
    raw->size = data_.size;
    raw->type = data_.type;
    raw->timestamp = data_.capturedTimestamp;
    return Status();
  }

 private:
  const ChannelRawData& data_;  // lives in the frame's FrameInfo
};

}  // namespace

HostFrame::HostFrame(FrameInfo info) : info_(std::move(info)) {
  // A repeated channel id keeps its first channel.
  for (const ChannelRawData& data : info_.channels) {
    if (channels_.count(data.channelId) == 0) {
      channels_.emplace(data.channelId, std::make_unique<HostChannel>(data));
    }
  }
}

HostFrame::~HostFrame() = default;

uint64_t HostFrame::GetSequenceNumber() const { return info_.sequenceNumber; }

size_t HostFrame::GetChannelCount() const { return channels_.size(); }

Status HostFrame::GetChannel(uint32_t channel_id, Channel** channel) {
  if (channel == nullptr) {
    return Status(kLevelError, kCauseInvalidArgument, "channel is null").SetBlock("core");
  }
  const auto found = channels_.find(channel_id);
  if (found == channels_.end()) {
    *channel = nullptr;
    return Status(kLevelError, kCauseNotFound, "channel %u is not in the frame", channel_id)
        .SetBlock("core");
  }
  *channel = found->second.get();
  return Status();
}

Status HostFrame::GetChannelList(std::map<uint32_t, Channel*>* channels) {
  if (channels == nullptr) {
    return Status(kLevelError, kCauseInvalidArgument, "channels is null").SetBlock("core");
  }
  channels->clear();
  for (const auto& [id, channel] : channels_) channels->emplace(id, channel.get());
  return Status();
}

}  // namespace host
}  // namespace weftcore
