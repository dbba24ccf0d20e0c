// The framework core handed to a source's Open (Part 1.1).
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

  virtual Status Initialize() = 0;        // slot 1
  virtual bool IsInitialized() const = 0;  // slot 2
  virtual Status Finalize() = 0;          // slot 3
  // The stream stays valid until CloseStream.
  virtual Status OpenStream(const std::string& key, Stream** stream) = 0;
  virtual Status CloseStream(Stream* stream) = 0;
};

}  // namespace weftcore
