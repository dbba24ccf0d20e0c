// Out-of-line destructors of the interface classes, so that their type
// information lives in libweftcore.so alone, and the defaults a stream source
// inherits when it does not override an operation.
#include "weftcore/core.h"
#include "weftcore/frame.h"
#include "weftcore/memory_allocator.h"
#include "weftcore/property_accessor.h"
#include "weftcore/stream.h"
#include "weftcore/stream_source.h"
#include "weftcore/stream_source_factory.h"
#include "weftcore/stream_source_utility.h"

namespace weftcore {

Memory::~Memory() = default;
MemoryAllocator::~MemoryAllocator() = default;
Channel::~Channel() = default;
Frame::~Frame() = default;
Stream::~Stream() = default;
Core::~Core() = default;
PropertyAccessor::~PropertyAccessor() = default;
StreamSourceUtility::~StreamSourceUtility() = default;
StreamSource::~StreamSource() = default;
StreamSourceFactory::~StreamSourceFactory() = default;

Status StreamSource::Open(StreamSourceUtility* /*util*/) {
  return Status(kLevelError, kCauseNotImplemented, "StreamSource::Open is not implemented.")
      .SetBlock("core");
}

void StreamSource::CatchErrorSendingFrame(const Status& /*status*/) {}

void StreamSource::RegisterMandatoryProperties(StreamSourceUtility* util) {
  if (util == nullptr) return;
  util->CreateProperty<ChannelInfoProperty, StreamSource>(kChannelInfoPropertyKey, this);
  util->CreateProperty<FrameRateProperty, StreamSource>(kFrameRatePropertyKey, this);
}

Status StreamSource::Get(const std::string& /*key*/, ChannelInfoProperty* /*property*/) {
  return Status(kLevelError, kCauseNotImplemented, "StreamSource::Get is not implemented.")
      .SetBlock("core");
}

Status StreamSource::Set(const std::string& key, const ChannelInfoProperty* /*property*/) {
  return Status(kLevelError, kCauseNotAvailable, "not available to set %s", key.c_str())
      .SetBlock("core");
}

Status StreamSource::Get(const std::string& /*key*/, FrameRateProperty* /*property*/) {
  return Status(kLevelError, kCauseNotImplemented, "StreamSource::Get is not implemented.")
      .SetBlock("core");
}

Status StreamSource::Set(const std::string& key, const FrameRateProperty* /*property*/) {
  return Status(kLevelError, kCauseNotAvailable, "not available to set %s", key.c_str())
      .SetBlock("core");
}

void StreamSourceFactory::ReleaseSource(StreamSource* source) { delete source; }

StandardComponent::StandardComponent(StreamSourceFactory* factory) : factory_(factory) {}

StandardComponent::~StandardComponent() { delete factory_; }

}  // namespace weftcore
