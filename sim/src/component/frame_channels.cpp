#include "component/frame_channels.h"

#include <cstring>

namespace ZeltoSim {

weftcore::Status AppendChannel(weftcore::MemoryAllocator* allocator, uint32_t channelId,
                               const std::string& type, const void* data, uint64_t size,
                               uint64_t timestamp, weftcore::FrameInfo* frame) {
  weftcore::Memory* memory = nullptr;
  weftcore::Status status = allocator->Allocate(size, &memory);
  if (status.IsError()) return status.AddTrace(nullptr, 0);
  std::memcpy(memory->GetAddress(), data, size);
  weftcore::ChannelRawData channel;
  channel.channelId = channelId;
  channel.memory = memory;
  channel.size = size;
  channel.offset = 0;
  channel.type = type;
  channel.capturedTimestamp = timestamp;
  frame->channels.push_back(channel);
  return weftcore::Status();
}

void FreeChannels(weftcore::MemoryAllocator* allocator, const weftcore::FrameInfo& frame) {
  for (const weftcore::ChannelRawData& channel : frame.channels) {
    if (channel.memory != nullptr) (void)allocator->Free(channel.memory);
  }
}

}  // namespace ZeltoSim
