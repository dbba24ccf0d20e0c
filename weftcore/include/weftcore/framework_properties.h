// The property records every stream source serves: channel information and
// frame rate. RegisterMandatoryProperties registers both under these keys.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "weftcore/serialize.h"

namespace weftcore {

constexpr char kChannelInfoPropertyKey[] = "channel_info_property";
constexpr char kFrameRatePropertyKey[] = "frame_rate_property";

struct ChannelInfo {
  std::string raw_data_type;
  std::string description;
  MSGPACK_DEFINE_MAP(raw_data_type, description);
};

struct ChannelInfoProperty {
  std::map<uint32_t, ChannelInfo> channels;
  MSGPACK_DEFINE_MAP(channels);
};

struct FrameRateProperty {
  uint32_t num = 0;
  uint32_t denom = 0;
  MSGPACK_DEFINE_MAP(num, denom);
};

}  // namespace weftcore
