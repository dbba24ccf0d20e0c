// The settings-file line: how the first line a user wrote into
// "zelto_log_settings" becomes a log level.
#include "logging/zelto_log_settings.h"

#include <array>
#include <cctype>
#include <fstream>
#include <utility>

namespace ZeltoLogSettings {
namespace {

// The lines a user may write, each with the level it selects.
using SettingsLine = std::pair<const char*, ZeltoLogger::LogLevel>;
constexpr std::array<SettingsLine, 6> kSettingsLines = {{
    {"loglevel=silent", ZeltoLogger::Silent},
    {"loglevel=verbose", ZeltoLogger::Verbose},
    {"loglevel=debug", ZeltoLogger::Debug},
    {"loglevel=info", ZeltoLogger::Info},
    {"loglevel=warn", ZeltoLogger::Warn},
    {"loglevel=error", ZeltoLogger::Error},
}};

}  // namespace

std::string NormalizeLine(const std::string& line) {
  std::string text;
  text.reserve(line.size());
  for (const char c : line) {
    if (c == '\n' || c == '\r') continue;
    // Through unsigned char: tolower of a negative char is undefined.
    text.push_back(static_cast<char>(std::tolower(static_cast<unsigned char>(c))));
  }
  return TrimWhitespace(text);
}

bool LevelForLine(const std::string& normalized, ZeltoLogger::LogLevel* level) {
  for (const SettingsLine& entry : kSettingsLines) {
    if (normalized == entry.first) {
      *level = entry.second;
      return true;
    }
  }
  return false;
}

bool ReadLevelFromFile(const std::string& path, ZeltoLogger::LogLevel* level) {
  std::ifstream file(path);
  if (!file.is_open()) return false;
  // Only the first line counts, so a user may keep notes below it. A
  // directory opens on POSIX but reads nothing, so it selects nothing.
  std::string line;
  std::getline(file, line);
  return LevelForLine(NormalizeLine(line), level);
}

}  // namespace ZeltoLogSettings
