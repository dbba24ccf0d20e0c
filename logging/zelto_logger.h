// ZeltoLogger: the leveled diagnostic log of every module of the component.
//
// Every module (the logger's own, masking, the source factory, the stream
// source) holds a file-static instance of its own, built when the library
// loads. The log level property of the stream source sets that module's
// instance only, so a client turning the source's log up or down leaves the
// other modules at the level the settings file chose.
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

  // Every logger starts silent. A user who needs diagnostics from a device
  // where no client sets the log level (or from modules the property does
  // not reach) drops a one-line file "zelto_log_settings" anywhere below the
  // application's Documents directory; each logger reads it here, when the
  // library loads. Nothing found, nothing readable: the level stays.
  void Initialize();

  LogLevel GetLogLevel() const;
  void SetLogLevel(LogLevel level);

  // Filtered write: false when filtered out, true once offered to the
  // platform log. The format is printf-style.
  bool WriteLog(LogLevel level, std::string tag, const char* format, ...)
      __attribute__((format(printf, 4, 5)));
  // Unfiltered write; always true. A level outside the five message levels
  // goes out as the default platform type.
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
