// Records what the component's loggers hand to the platform log, through the
// host substitute's log sink, as (platform log type, tag, message).
#pragma once

#include <mutex>
#include <ostream>
#include <string>
#include <vector>

#include "weftcore/osal.h"

namespace zelto_test {

// ZeltoLogger's Debug records go out as Apple's info type (Part 5.1).
constexpr int kDebugPlatformLogType = 1;

struct PlatformLogRecord {
  int type = 0;
  std::string tag;
  std::string message;
  bool operator==(const PlatformLogRecord& other) const {
    return type == other.type && tag == other.tag && message == other.message;
  }
};
std::ostream& operator<<(std::ostream& out, const PlatformLogRecord& record);

// A Debug record of the component: (1, "ZeltoMesh", message).
PlatformLogRecord MeshDebugRecord(const std::string& message);

class LogRecorder {
 public:
  LogRecorder();   // installs the sink
  ~LogRecorder();  // puts the previous sink back
  LogRecorder(const LogRecorder&) = delete;
  LogRecorder& operator=(const LogRecorder&) = delete;

  std::vector<PlatformLogRecord> Records() const;
  void Clear();

 private:
  weftcore::osal::LogSink previous_;
  mutable std::mutex mutex_;
  std::vector<PlatformLogRecord> records_;
};

// printf into a std::string, for expected messages (pointers as "%p" prints them).
std::string Printf(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace zelto_test
