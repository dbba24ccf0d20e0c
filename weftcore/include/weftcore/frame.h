// Frames of an upstream stream as a consumer receives them from GetFrame:
// channels by id, each with a view of its raw data.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "weftcore/export.h"
#include "weftcore/status.h"

namespace weftcore {

class WEFTCORE_API Channel {
 public:
  // What an upstream channel hands out. `address` is writable: a consumer
  // may edit the data in place before it releases the frame.
  struct RawData {
    void* address = nullptr;
    uint64_t size = 0;
    std::string type;
    uint64_t timestamp = 0;
  };

  Channel() = default;
  Channel(const Channel&) = delete;
  Channel& operator=(const Channel&) = delete;
  virtual ~Channel();

  // The order of the virtual functions is shared with binaries built
  // elsewhere; it must not change.
  virtual uint32_t GetChannelId() const = 0;
  virtual Status GetRawData(RawData* raw) = 0;
};

class WEFTCORE_API Frame {
 public:
  Frame() = default;
  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;
  virtual ~Frame();

  virtual uint64_t GetSequenceNumber() const = 0;
  virtual size_t GetChannelCount() const = 0;
  virtual Status GetChannel(uint32_t channel_id, Channel** channel) = 0;
  virtual Status GetChannelList(std::map<uint32_t, Channel*>* channels) = 0;
};

}  // namespace weftcore
