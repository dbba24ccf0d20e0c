// The platform log as zelto-mesh sees it: the component's records on stderr
// (--log-level), and the device's report that it stopped at a frame.
#pragma once

#include <mutex>
#include <optional>
#include <string>

#include "weftcore/osal.h"

namespace zelto_cli {

// While alive, receives every record of the platform log; the previous sink
// comes back on destruction. Keep it alive longer than the HostCore so that
// records written while the component closes still land.
class PlatformLogSink {
 public:
  // `echo`: every record goes to stderr as one line.
  explicit PlatformLogSink(bool echo);
  ~PlatformLogSink();
  PlatformLogSink(const PlatformLogSink&) = delete;
  PlatformLogSink& operator=(const PlatformLogSink&) = delete;

  // "FILE: reason" once the simulated device has stopped delivering at a
  // frame it could not read. The mesh source hides upstream failures (it
  // just delivers nothing), so this record is how the run learns of it
  // without waiting out its time-out.
  std::optional<std::string> DeviceStop() const;

 private:
  void Receive(int log_type, const char* tag, const char* message);

  const bool echo_;
  mutable std::mutex mutex_;  // records may come from the device's threads
  std::optional<std::string> deviceStop_;
  weftcore::osal::LogSink previous_;
};

// The line written for one record: the message without its trailing
// newlines, prefixed with "[TAG] " unless the message already starts so.
std::string LogLine(const char* tag, const char* message);

}  // namespace zelto_cli
