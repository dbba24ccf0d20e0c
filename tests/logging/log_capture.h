// Collects what the logger hands to the platform log, through the weftcore
// log sink, as (platform log type, tag, message).
#pragma once

#include <mutex>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include "weftcore/osal.h"

namespace zelto_test {

struct LogRecord {
  int type;
  std::string tag;
  std::string message;
  bool operator==(const LogRecord& other) const {
    return std::tie(type, tag, message) == std::tie(other.type, other.tag, other.message);
  }
};

inline std::ostream& operator<<(std::ostream& out, const LogRecord& record) {
  return out << "{" << record.type << ", \"" << record.tag << "\", \"" << record.message << "\"}";
}

class LogCapture {
 public:
  LogCapture() {
    previous_ = weftcore::osal::SetLogSink([this](int type, const char* tag, const char* message) {
      std::lock_guard<std::mutex> lock(mutex_);
      records_.push_back(LogRecord{type, tag, message});
    });
  }
  ~LogCapture() { weftcore::osal::SetLogSink(previous_); }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  std::vector<LogRecord> records() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return records_;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<LogRecord> records_;
  weftcore::osal::LogSink previous_;
};

}  // namespace zelto_test
