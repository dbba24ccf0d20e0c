// The platform half of ZeltoLogger: where the settings file is and where
// records go. zelto_logger_posix.cpp and zelto_logger_apple.mm each implement
// it; everything else of the logger is platform-independent.
#pragma once

#include <string>

#include "logging/zelto_logger.h"

namespace ZeltoLoggerPlatform {

// False when there is no Documents directory. Otherwise `*path` is
// Documents + "/" + the relative path of the first entry named
// `settingsFileName`, or the Documents directory itself when none is (a
// directory reads nothing, so the level then stays as it was).
bool LocateSettingsFile(const std::string& settingsFileName, std::string* path);

// Writes the record to the system log when that type is enabled there. Off
// Apple the component runs only inside our own host, which may install a
// weftcore log sink to read the records; there the sink is offered the record
// first. On Apple the unified log is the only destination.
void Emit(ZeltoLogger::PlatformLogType type, const char* tag, const char* message);

}  // namespace ZeltoLoggerPlatform
