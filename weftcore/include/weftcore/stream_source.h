// The base of every stream source (Part 1.1), with the framework defaults.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "weftcore/core.h"
#include "weftcore/export.h"
#include "weftcore/frame_info.h"
#include "weftcore/framework_properties.h"
#include "weftcore/status.h"
#include "weftcore/stream_source_utility.h"

namespace weftcore {

class WEFTCORE_API StreamSource {
 public:
  StreamSource() = default;
  StreamSource(const StreamSource&) = delete;
  StreamSource& operator=(const StreamSource&) = delete;

  virtual void GetFrames(std::vector<FrameInfo>* frames) = 0;                       // 1
  virtual Status ReleaseFrame(const FrameInfo& frameinfo,
                              const std::vector<uint32_t>* referenced_channel_ids) = 0;  // 2
  virtual Status Open(Core* core, StreamSourceUtility* util) = 0;                   // 3
  // Default: Status(1, 14, "StreamSource::Open is not implemented."), block "core".
  virtual Status Open(StreamSourceUtility* util);                                   // 4
  virtual Status Close() = 0;                                                       // 5
  virtual Status Start() = 0;                                                       // 6
  virtual Status Stop() = 0;                                                        // 7
  // Default: does nothing.
  virtual void CatchErrorSendingFrame(const Status& status);                        // 8
  // Default: registers "channel_info_property" then "frame_rate_property",
  // discarding both statuses.
  virtual void RegisterMandatoryProperties(StreamSourceUtility* util);              // 9
  // Default: Status(1, 14, "StreamSource::Get is not implemented."), block "core".
  virtual Status Get(const std::string& key, ChannelInfoProperty* property);        // 10
  // Default: Status(1, 10, "not available to set %s", key), block "core".
  virtual Status Set(const std::string& key, const ChannelInfoProperty* property);  // 11
  // Default: Status(1, 14, "StreamSource::Get is not implemented."), block "core".
  virtual Status Get(const std::string& key, FrameRateProperty* property);          // 12
  // Default: Status(1, 10, "not available to set %s", key), block "core".
  virtual Status Set(const std::string& key, const FrameRateProperty* property);    // 13
  virtual ~StreamSource();                                                          // 14
};

}  // namespace weftcore
