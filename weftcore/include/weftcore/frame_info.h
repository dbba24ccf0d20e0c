// The frames a source hands to the host from GetFrames: per channel, a block
// of frame memory and the span of it that holds the channel's data.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "weftcore/memory_allocator.h"

namespace weftcore {

struct ChannelRawData {
  uint32_t channelId = 0;
  Memory* memory = nullptr;  // null when the channel has no memory
  uint64_t size = 0;
  uint64_t offset = 0;
  std::string type;
  uint64_t capturedTimestamp = 0;
};

struct FrameInfo {
  uint64_t sequenceNumber = 0;
  std::vector<ChannelRawData> channels;
  uint64_t reserved = 0;
};

}  // namespace weftcore
