// The platform half of ZeltoLogger (Part 5.1): where the settings file is and
// where records go. zelto_logger_posix.cpp and zelto_logger_apple.mm each
// implement it; everything else of the logger is platform-independent.
#pragma once

#include <string>

#include "logging/zelto_logger.h"

namespace ZeltoLoggerPlatform {

// Initialize steps 1 to 3: false when there is no Documents directory.
// Otherwise `*path` is Documents + "/" + the relative path of the first entry
// named `settingsFileName`, or the Documents directory itself when none is.
bool LocateSettingsFile(const std::string& settingsFileName, std::string* path);

// WriteLog step 4: offers the record to the weftcore log sink first, then to
// the system log when that type is enabled there.
void Emit(ZeltoLogger::PlatformLogType type, const char* tag, const char* message);

}  // namespace ZeltoLoggerPlatform
