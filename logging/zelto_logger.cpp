// ZeltoLogger: the threshold, the settings file read at start, and the
// formatting of each record before it goes to the platform log.
#include "logging/zelto_logger.h"

#include <cstdarg>
#include <cstdio>
#include <vector>

#include "logging/zelto_log_settings.h"
#include "logging/zelto_logger_platform.h"

namespace {

constexpr char kSettingsFileName[] = "zelto_log_settings";
constexpr char kNullMessage[] = "(null)";

// The logger module's own instance; every module holds one (zelto_logger.h).
[[maybe_unused]] ZeltoLogger logger;

// Formats into a buffer sized for this message alone, so a message has no
// length limit, and hands the record to the platform log. The buffer lives
// only for this call, so concurrent writers share nothing.
void FormatAndEmit(ZeltoLogger::LogLevel level, const std::string& tag, const char* format,
                   va_list args) {
  va_list measure;
  va_copy(measure, args);
  const int length = std::vsnprintf(nullptr, 0, format, measure);
  va_end(measure);
  const ZeltoLogger::PlatformLogType type = ZeltoLogger::GetIosLogLevel(level);
  if (length < 0) {
    // The arguments cannot be formatted (a wide string the locale cannot
    // convert). The record still goes out, as the "(null)" the unified log
    // prints for a missing message, so the failure is visible in the log
    // and no sink is ever handed a null pointer.
    ZeltoLoggerPlatform::Emit(type, tag.c_str(), kNullMessage);
    return;
  }
  std::vector<char> message(static_cast<size_t>(length) + 1, '\0');
  std::vsnprintf(message.data(), message.size(), format, args);
  ZeltoLoggerPlatform::Emit(type, tag.c_str(), message.data());
}

}  // namespace

ZeltoLogger::ZeltoLogger() : settingsFileName(kSettingsFileName), level(Silent) { Initialize(); }

void ZeltoLogger::Initialize() {
  std::string path;
  if (!ZeltoLoggerPlatform::LocateSettingsFile(settingsFileName, &path)) return;
  LogLevel selected = Silent;
  if (ZeltoLogSettings::ReadLevelFromFile(path, &selected)) SetLogLevel(selected);
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
