// The base of every stream source: what the host calls on a source, with the
// defaults a source inherits for the operations it does not serve.
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

  // Components are built apart from the host and meet it only through this
  // virtual table: the order of the virtual functions must not change.
  virtual void GetFrames(std::vector<FrameInfo>* frames) = 0;
  virtual Status ReleaseFrame(const FrameInfo& frameinfo,
                              const std::vector<uint32_t>* referenced_channel_ids) = 0;
  virtual Status Open(Core* core, StreamSourceUtility* util) = 0;
  // Default: Status(1, 14, "StreamSource::Open is not implemented."), block "core".
  virtual Status Open(StreamSourceUtility* util);
  virtual Status Close() = 0;
  virtual Status Start() = 0;
  virtual Status Stop() = 0;
  // Default: does nothing.
  virtual void CatchErrorSendingFrame(const Status& status);
  // Default: registers "channel_info_property" then "frame_rate_property",
  // discarding both statuses.
  virtual void RegisterMandatoryProperties(StreamSourceUtility* util);
  // Default: Status(1, 14, "StreamSource::Get is not implemented."), block "core".
  virtual Status Get(const std::string& key, ChannelInfoProperty* property);
  // Default: Status(1, 10, "not available to set %s", key), block "core".
  virtual Status Set(const std::string& key, const ChannelInfoProperty* property);
  // Default: Status(1, 14, "StreamSource::Get is not implemented."), block "core".
  virtual Status Get(const std::string& key, FrameRateProperty* property);
  // Default: Status(1, 10, "not available to set %s", key), block "core".
  virtual Status Set(const std::string& key, const FrameRateProperty* property);
  virtual ~StreamSource();
};

}  // namespace weftcore
