// The settings-file line ("loglevel=debug", ...): how the first line of
// "zelto_log_settings" becomes a log level.
#pragma once

#include <string>

#include "logging/zelto_logger.h"

namespace ZeltoLogSettings {

// Drops every LF and CR wherever it stands, lowercases, trims: a line typed
// in any editor, with any line ending or capitals, reads alike. Inner blanks
// stay, so "loglevel = debug" matches nothing.
std::string NormalizeLine(const std::string& line);

// The level whose settings line equals `normalized` exactly; false (and
// `*level` untouched) when none does.
bool LevelForLine(const std::string& normalized, ZeltoLogger::LogLevel* level);

// True when the first line of the file at `path` selected a level. A file
// that does not open selects nothing, silently.
bool ReadLevelFromFile(const std::string& path, ZeltoLogger::LogLevel* level);

}  // namespace ZeltoLogSettings
