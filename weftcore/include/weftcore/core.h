// The host's core as a source sees it in Open: the way to open the upstream
// streams a source consumes.
#pragma once

#include <string>

#include "weftcore/export.h"
#include "weftcore/status.h"
#include "weftcore/stream.h"

namespace weftcore {

class WEFTCORE_API Core {
 public:
  Core() = default;
  Core(const Core&) = delete;
  Core& operator=(const Core&) = delete;
  virtual ~Core();

  // Host and components are built separately and meet only through these
  // virtual tables: the order of the virtual functions must not change.
  virtual Status Initialize() = 0;
  virtual bool IsInitialized() const = 0;
  virtual Status Finalize() = 0;
  // The stream stays valid until CloseStream.
  virtual Status OpenStream(const std::string& key, Stream** stream) = 0;
  virtual Status CloseStream(Stream* stream) = 0;
};

}  // namespace weftcore
