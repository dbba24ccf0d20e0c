// Status payloads: formatted once at the failure site, copied only when a
// status is copied.
#include "weftcore/status.h"

#include <cstdarg>
#include <cstdio>

namespace weftcore {

struct Status::Payload {
  Level level = kLevelNone;
  Cause cause = kCauseNone;
  std::string message;
  std::string block;
  std::vector<TraceEntry> trace;
};

void Status::PayloadDeleter::operator()(Payload* payload) const { delete payload; }

Status::Payload* Status::Copy(const Payload* payload) {
  return payload ? new Payload(*payload) : nullptr;
}

namespace {

std::string FormatMessage(const char* format, va_list args) {
  if (format == nullptr) return std::string();
  va_list measure;
  va_copy(measure, args);
  const int length = std::vsnprintf(nullptr, 0, format, measure);
  va_end(measure);
  if (length <= 0) return std::string();
  std::string text(static_cast<size_t>(length) + 1, '\0');
  std::vsnprintf(text.data(), text.size(), format, args);
  text.resize(static_cast<size_t>(length));
  return text;
}

}  // namespace

Status::Status(Level level, Cause cause, const char* format, ...)
    : payload_(new Payload) {
  payload_->level = level;
  payload_->cause = cause;
  va_list args;
  va_start(args, format);
  payload_->message = FormatMessage(format, args);
  va_end(args);
}

Status::Status(const Status& other)
    : payload_(Copy(other.payload_.get())) {}

Status& Status::operator=(const Status& other) {
  if (this != &other) {
    payload_.reset(Copy(other.payload_.get()));
  }
  return *this;
}

Status::Status(Status&& other) noexcept = default;
Status& Status::operator=(Status&& other) noexcept = default;
Status::~Status() = default;

Level Status::level() const { return payload_ ? payload_->level : kLevelNone; }
Cause Status::cause() const { return payload_ ? payload_->cause : kCauseNone; }
std::string Status::message() const { return payload_ ? payload_->message : std::string(); }
std::string Status::block() const { return payload_ ? payload_->block : std::string(); }
std::vector<TraceEntry> Status::trace() const {
  return payload_ ? payload_->trace : std::vector<TraceEntry>();
}

// An OK status carries no payload, so tracing or naming it changes nothing.
Status& Status::AddTrace(const char* file, int line) {
  if (payload_) payload_->trace.push_back(TraceEntry{file ? file : "", line});
  return *this;
}

Status& Status::SetBlock(const std::string& block) {
  if (payload_) payload_->block = block;
  return *this;
}

}  // namespace weftcore
