// Collects what the loggers hand to the platform log, through the host
// substitute's log sink, as (platform log type, tag, message).
#pragma once

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include "weftcore/osal.h"

namespace zelto_test {

// The platform log type of a Debug record: the unified log's "info".
constexpr int kDebugLogType = 1;

struct LogRecord {
  int type = 0;
  std::string tag;
  std::string message;
  bool operator==(const LogRecord& other) const {
    return std::tie(type, tag, message) == std::tie(other.type, other.tag, other.message);
  }
};

inline std::ostream& operator<<(std::ostream& out, const LogRecord& record) {
  return out << "{" << record.type << ", \"" << record.tag << "\", \"" << record.message << "\"}";
}

// A Debug record of the mesh component.
inline LogRecord MeshDebug(std::string message) {
  return LogRecord{kDebugLogType, "ZeltoMesh", std::move(message)};
}

// Installs itself as the log sink for its lifetime; thread-safe.
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
  void Clear() {
    std::lock_guard<std::mutex> lock(mutex_);
    records_.clear();
  }

 private:
  mutable std::mutex mutex_;
  std::vector<LogRecord> records_;
  weftcore::osal::LogSink previous_;
};

// printf into a std::string, for expected messages ("%p" as the log prints it).
__attribute__((format(printf, 1, 2))) inline std::string Printf(const char* format, ...) {
  va_list args;
  va_start(args, format);
  va_list copy;
  va_copy(copy, args);
  const int size = std::vsnprintf(nullptr, 0, format, copy);
  va_end(copy);
  std::string text(size > 0 ? static_cast<size_t>(size) : 0, '\0');
  if (size > 0) std::vsnprintf(&text[0], text.size() + 1, format, args);
  va_end(args);
  return text;
}

}  // namespace zelto_test
