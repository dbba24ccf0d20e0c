// ZeltoLogger: the threshold, the settings file read at start, and the
// formatting of each record before it goes to the platform log.
#include "logging/zelto_logger.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <new>

#include "logging/zelto_log_settings.h"
#include "logging/zelto_logger_platform.h"

namespace {

constexpr char kSettingsFileName[] = "zelto_log_settings";
constexpr char kNullMessage[] = "(null)";

// The logger module's own instance; every module holds one (zelto_logger.h).
[[maybe_unused]] ZeltoLogger logger;

// The platform log, or the host's sink in its place. A record the sink cannot
// take (it throws, out of memory) is dropped: logging never fails its caller.
void EmitRecord(ZeltoLogger::PlatformLogType type, const std::string& tag, const char* message) {
  try {
    ZeltoLoggerPlatform::Emit(type, tag.c_str(), message);
  } catch (const std::exception&) {
    return;
  }
}

// A message that fits here is formatted without touching the heap, which
// is what a log line about exhausted memory needs.
constexpr size_t kStackMessageSize = 512;
constexpr char kTruncatedByMemory[] = " [truncated: out of memory]";

// Formats the message, without a length limit, and hands the record to the
// platform log. The buffers live only for this call, so concurrent writers
// share nothing. A longer message whose buffer cannot be allocated goes out
// cut short, and says so, instead of throwing into the caller.
void FormatAndEmit(ZeltoLogger::LogLevel level, const std::string& tag, const char* format,
                   va_list args) {
  char text[kStackMessageSize];
  va_list first;
  va_copy(first, args);
  const int length = std::vsnprintf(text, sizeof text, format, first);
  va_end(first);
  const ZeltoLogger::PlatformLogType type = ZeltoLogger::GetIosLogLevel(level);
  if (length < 0) {
    // The arguments cannot be formatted (a wide string the locale cannot
    // convert). The record still goes out, as the "(null)" the unified log
    // prints for a missing message, so the failure is visible in the log
    // and no sink is ever handed a null pointer.
    EmitRecord(type, tag, kNullMessage);
    return;
  }
  if (static_cast<size_t>(length) < sizeof text) {
    EmitRecord(type, tag, text);
    return;
  }
  std::unique_ptr<char[]> message(new (std::nothrow) char[static_cast<size_t>(length) + 1]);
  if (!message) {
    std::memcpy(text + sizeof text - sizeof kTruncatedByMemory, kTruncatedByMemory,
                sizeof kTruncatedByMemory);
    EmitRecord(type, tag, text);
    return;
  }
  std::vsnprintf(message.get(), static_cast<size_t>(length) + 1, format, args);
  EmitRecord(type, tag, message.get());
}

}  // namespace

ZeltoLogger::ZeltoLogger() : settingsFileName(kSettingsFileName), level(Silent) { Initialize(); }

void ZeltoLogger::Initialize() {
  // Runs while the host loads the library, where an exception would end the
  // process: a settings file that cannot be searched for or read for want
  // of memory is treated as absent.
  try {
    std::string path;
    if (!ZeltoLoggerPlatform::LocateSettingsFile(settingsFileName, &path)) return;
    LogLevel selected = Silent;
    if (ZeltoLogSettings::ReadLevelFromFile(path, &selected)) SetLogLevel(selected);
  } catch (const std::exception&) {
    return;
  }
}

ZeltoLogger::LogLevel ZeltoLogger::GetLogLevel() const {
  return static_cast<LogLevel>(level.load(std::memory_order_relaxed));
}

// No check of the value: the log level property validates what clients
// send, and an unnamed value (0, 1, 7) still works as a threshold.
void ZeltoLogger::SetLogLevel(LogLevel newLevel) {
  level.store(static_cast<int32_t>(newLevel), std::memory_order_relaxed);
}

bool ZeltoLogger::WriteLog(LogLevel messageLevel, std::string tag, const char* format, ...) {
  // Only the five named message levels are ever written: 7 and Silent are
  // thresholds, and a record at 7 is dropped even when the threshold is 4.
  if (messageLevel < Verbose || messageLevel > Error) return false;
  if (level.load(std::memory_order_relaxed) > messageLevel) return false;
  va_list args;
  va_start(args, format);
  FormatAndEmit(messageLevel, tag, format, args);
  va_end(args);
  return true;
}

bool ZeltoLogger::ForceWriteLog(LogLevel messageLevel, std::string tag, const char* format, ...) {
  va_list args;
  va_start(args, format);
  FormatAndEmit(messageLevel, tag, format, args);
  va_end(args);
  return true;
}

ZeltoLogger::PlatformLogType ZeltoLogger::GetIosLogLevel(LogLevel messageLevel) {
  // Deliberately not monotonic: verbose and debug go out as info records,
  // info and warn as debug records. Device log collection filters on these
  // types, so changing the table would change what users find collected.
  static constexpr PlatformLogType kTypes[5] = {kLogTypeInfo, kLogTypeInfo, kLogTypeDebug,
                                                kLogTypeDebug, kLogTypeError};
  const uint32_t index = static_cast<uint32_t>(messageLevel) - 2u;
  return index < 5u ? kTypes[index] : kLogTypeDefault;
}

std::string TrimWhitespace(const std::string& text) {
  static constexpr char kWhitespace[] = " \n\r\t\f\v";
  const size_t first = text.find_first_not_of(kWhitespace);
  if (first == std::string::npos) return std::string();
  const size_t last = text.find_last_not_of(kWhitespace);
  return text.substr(first, last - first + 1);
}
