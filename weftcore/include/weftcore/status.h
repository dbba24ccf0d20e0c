// weftcore::Status: the result of every fallible operation. An OK status is
// an empty pointer, so passing success around costs nothing.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "weftcore/export.h"

namespace weftcore {

// Levels and causes are plain 32-bit numbers on the wire of the framework;
// unscoped enums keep them printable with "%d" and comparable with plain numbers.
enum Level : int32_t {
  kLevelNone = 0,
  kLevelError = 1,
};

enum Cause : int32_t {
  kCauseNone = 0,
  kCauseUnknown = 1,
  kCauseInvalidArgument = 2,
  kCauseInvalidState = 3,
  kCauseNotFound = 4,
  kCauseAlreadyExists = 5,
  kCauseOutOfMemory = 6,
  kCauseTimeout = 7,
  kCauseSerializer = 8,
  kCauseLibraryLoad = 9,
  kCauseNotAvailable = 10,
  kCauseEndOfData = 11,
  kCauseNotImplemented = 14,
};

struct TraceEntry {
  std::string file;  // empty when the caller passed no file name
  int line = 0;
};

class WEFTCORE_API Status {
 public:
  Status() = default;
  Status(Level level, Cause cause, const char* format, ...)
      __attribute__((format(printf, 4, 5)));

  Status(const Status& other);
  Status& operator=(const Status& other);
  Status(Status&& other) noexcept;
  Status& operator=(Status&& other) noexcept;
  ~Status();

  // A status is an error exactly when it carries a payload.
  bool ok() const { return payload_ == nullptr; }
  bool IsError() const { return payload_ != nullptr; }

  Level level() const;
  Cause cause() const;
  std::string message() const;
  std::string block() const;
  std::vector<TraceEntry> trace() const;

  Status& AddTrace(const char* file, int line);
  Status& SetBlock(const std::string& block);

 private:
  struct Payload;
  static Payload* Copy(const Payload* payload);
  // Out-of-line deleter: Payload stays incomplete for every user of the header.
  struct PayloadDeleter {
    void operator()(Payload* payload) const;
  };
  std::unique_ptr<Payload, PayloadDeleter> payload_;
};

}  // namespace weftcore
