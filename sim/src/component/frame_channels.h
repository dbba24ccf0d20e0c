// Channels of a delivered frame: memory from the stream's allocator, freed
// in ReleaseFrame.
#pragma once

#include <cstdint>
#include <string>

#include "weftcore/frame_info.h"
#include "weftcore/memory_allocator.h"

namespace ZeltoSim {

constexpr uint32_t kDepthChannel = 0;
constexpr uint32_t kConfidenceChannel = 1;
constexpr uint32_t kPointCloudChannel = 2;
constexpr char kRawDataTypeDepth[] = "kRawDataTypeDepth";            // uint16 mm
constexpr char kRawDataTypeConfidence[] = "kRawDataTypeConfidence";  // uint8
constexpr char kRawDataTypePointCloud[] = "kRawDataTypePointCloud";  // int16 x, y, z

// Allocates `size` bytes, copies `data` in and appends the channel.
weftcore::Status AppendChannel(weftcore::MemoryAllocator* allocator, uint32_t channelId,
                               const std::string& type, const void* data, uint64_t size,
                               uint64_t timestamp, weftcore::FrameInfo* frame);
// Frees every channel's memory; statuses are ignored (nothing to do about them).
void FreeChannels(weftcore::MemoryAllocator* allocator, const weftcore::FrameInfo& frame);

}  // namespace ZeltoSim
