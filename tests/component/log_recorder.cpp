#include "tests/component/log_recorder.h"

#include <cstdarg>
#include <cstdio>
#include <utility>

namespace zelto_test {

std::ostream& operator<<(std::ostream& out, const PlatformLogRecord& record) {
  return out << "{" << record.type << ", \"" << record.tag << "\", \"" << record.message << "\"}";
}

PlatformLogRecord MeshDebugRecord(const std::string& message) {
  return PlatformLogRecord{kDebugPlatformLogType, "ZeltoMesh", message};
}

LogRecorder::LogRecorder() {
  previous_ = weftcore::osal::SetLogSink([this](int type, const char* tag, const char* message) {
    std::lock_guard<std::mutex> lock(mutex_);
    records_.push_back(PlatformLogRecord{type, tag ? tag : "", message ? message : ""});
  });
}

LogRecorder::~LogRecorder() { weftcore::osal::SetLogSink(std::move(previous_)); }

std::vector<PlatformLogRecord> LogRecorder::Records() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return records_;
}

void LogRecorder::Clear() {
  std::lock_guard<std::mutex> lock(mutex_);
  records_.clear();
}

std::string Printf(const char* format, ...) {
  va_list args;
  va_start(args, format);
  va_list measure;
  va_copy(measure, args);
  const int length = std::vsnprintf(nullptr, 0, format, measure);
  va_end(measure);
  std::string text(length > 0 ? static_cast<size_t>(length) : 0, '\0');
  if (length > 0) std::vsnprintf(text.data(), text.size() + 1, format, args);
  va_end(args);
  return text;
}

}  // namespace zelto_test
