// ZeltoLogger (Part 5.1): the leveled diagnostic log of every module.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

class ZeltoLogger {
 public:
  // Signed 32-bit; 0, 1 and 7 have no enumerator but are representable.
  enum LogLevel : int32_t {
    Verbose = 2,
    Debug = 3,
    Info = 4,
    Warn = 5,
    Error = 6,
    Silent = 8,
  };

  // Apple unified-log types (os_log_type_t values).
  enum PlatformLogType : uint8_t {
    kLogTypeDefault = 0,
    kLogTypeInfo = 1,
    kLogTypeDebug = 2,
    kLogTypeError = 16,
  };

  ZeltoLogger();
  ZeltoLogger(const ZeltoLogger&) = delete;
  ZeltoLogger& operator=(const ZeltoLogger&) = delete;

  // Looks up "zelto_log_settings" below the Documents directory and applies
  // its first line.
  void Initialize();

  LogLevel GetLogLevel() const;
  void SetLogLevel(LogLevel level);

  // Filtered write: false when filtered out, true once offered to the
  // platform log. The format is printf-style.
  bool WriteLog(LogLevel level, std::string tag, const char* format, ...)
      __attribute__((format(printf, 4, 5)));
  // Unfiltered write; always true.
  bool ForceWriteLog(LogLevel level, std::string tag, const char* format, ...)
      __attribute__((format(printf, 4, 5)));

  static PlatformLogType GetIosLogLevel(LogLevel level);

 private:
  std::string settingsFileName;
  // Written by the log level property while frame threads read it.
  std::atomic<int32_t> level;
};

// `text` without its leading and trailing space, \n, \r, \t, \f and \v.
std::string TrimWhitespace(const std::string& text);
