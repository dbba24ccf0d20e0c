// The component's log records on stderr (--log-level).
#pragma once

#include <string>

#include "weftcore/osal.h"

namespace zelto_cli {

// While alive, every record of the platform log goes to stderr as one line;
// the previous sink comes back on destruction. Keep it alive longer than the
// HostCore so that records written while the component closes still land.
class StderrLogSink {
 public:
  StderrLogSink();
  ~StderrLogSink();
  StderrLogSink(const StderrLogSink&) = delete;
  StderrLogSink& operator=(const StderrLogSink&) = delete;

 private:
  weftcore::osal::LogSink previous_;
};

// The line written for one record: the message without its trailing
// newlines, prefixed with "[TAG] " unless the message already starts so.
std::string LogLine(const char* tag, const char* message);

}  // namespace zelto_cli
