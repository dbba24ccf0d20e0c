// The settings-file line of Part 5.1 ("loglevel=debug", ...): how the first
// line of "zelto_log_settings" becomes a log level.
#pragma once

#include <string>

#include "logging/zelto_logger.h"

namespace ZeltoLogSettings {

// Initialize steps 6 and 7: drops every LF and CR, lowercases, trims.
std::string NormalizeLine(const std::string& line);

// Initialize step 8: the level whose settings line equals `normalized`
// exactly; false (and `*level` untouched) when none does.
bool LevelForLine(const std::string& normalized, ZeltoLogger::LogLevel* level);

// Initialize steps 4 to 8 for the file at `path`: true when its first line
// selected a level. A file that does not open selects nothing.
bool ReadLevelFromFile(const std::string& path, ZeltoLogger::LogLevel* level);

}  // namespace ZeltoLogSettings
