// The platform half of ZeltoLogger off Apple: a configurable Documents
// directory, a deterministic recursive walk in place of the Foundation
// enumerator, and syslog in place of the unified log, behind the weftcore
// log sink.
#include <syslog.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "logging/zelto_logger_platform.h"
#include "weftcore/osal.h"

namespace ZeltoLoggerPlatform {
namespace {

namespace fs = std::filesystem;

// $ZELTO_DOCUMENTS_DIR, else $HOME/Documents; false when neither is set.
bool DocumentsDirectory(std::string* documents) {
  const char* configured = std::getenv("ZELTO_DOCUMENTS_DIR");
  if (configured != nullptr && configured[0] != '\0') {
    *documents = configured;
    return true;
  }
  const char* home = std::getenv("HOME");
  if (home == nullptr || home[0] == '\0') return false;
  *documents = std::string(home) + "/Documents";
  return true;
}

// Entry names of `directory` in byte order, so that with two settings files
// the same one wins on every run and every file system; empty when the
// directory cannot be read.
std::vector<std::string> SortedEntryNames(const fs::path& directory) {
  std::vector<std::string> names;
  std::error_code error;
  fs::directory_iterator it(directory, error);
  if (error) return names;
  for (const fs::directory_iterator end; it != end; it.increment(error)) {
    if (error) break;
    names.push_back(it->path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

// Pre-order walk like enumeratorAtPath: every entry (directories too) is
// compared before the walk descends into it; symbolic links are not followed.
bool FindEntry(const fs::path& directory, const std::string& relative, const std::string& name,
               std::string* found) {
  for (const std::string& entry : SortedEntryNames(directory)) {
    const std::string entryRelative = relative.empty() ? entry : relative + "/" + entry;
    if (entry == name) {
      *found = entryRelative;
      return true;
    }
    const fs::path entryPath = directory / entry;
    std::error_code error;
    if (fs::is_directory(fs::symlink_status(entryPath, error)) &&
        FindEntry(entryPath, entryRelative, name, found)) {
      return true;
    }
  }
  return false;
}

int SyslogPriority(ZeltoLogger::PlatformLogType type) {
  switch (type) {
    case ZeltoLogger::kLogTypeInfo:
      return LOG_INFO;
    case ZeltoLogger::kLogTypeDebug:
      return LOG_DEBUG;
    case ZeltoLogger::kLogTypeError:
      return LOG_ERR;
    case ZeltoLogger::kLogTypeDefault:
      break;
  }
  return LOG_NOTICE;
}

}  // namespace

bool LocateSettingsFile(const std::string& settingsFileName, std::string* path) {
  std::string documents;
  if (!DocumentsDirectory(&documents)) return false;
  std::string relative;
  *path = FindEntry(documents, std::string(), settingsFileName, &relative)
              ? documents + "/" + relative
              : documents;
  return true;
}

void Emit(ZeltoLogger::PlatformLogType type, const char* tag, const char* message) {
  if (weftcore::osal::DeliverToLogSink(type, tag, message)) return;
  const int priority = SyslogPriority(type);
  // setlogmask(0) reads the mask without changing it (os_log_type_enabled).
  if ((setlogmask(0) & LOG_MASK(priority)) == 0) return;
  syslog(priority, "[%s] %s", tag, message);
}

}  // namespace ZeltoLoggerPlatform
