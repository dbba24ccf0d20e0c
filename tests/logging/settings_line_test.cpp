// Part 5.1, Initialize steps 6 to 8, on the line alone.
#include <gtest/gtest.h>

#include "logging/zelto_log_settings.h"

namespace {

using ZeltoLogSettings::LevelForLine;
using ZeltoLogSettings::NormalizeLine;

TEST(LoggerSettingsLine, LineFeedsAndCarriageReturnsAreDroppedWhereverTheyStand) {
  EXPECT_EQ(NormalizeLine("log\rlevel=\ninfo\r\n"), "loglevel=info");
}

TEST(LoggerSettingsLine, LowercasedThenTrimmed) {
  EXPECT_EQ(NormalizeLine("\t LOGLEVEL=WARN \v\f"), "loglevel=warn");
}

TEST(LoggerSettingsLine, InnerBlanksStay) { EXPECT_EQ(NormalizeLine(" a = b "), "a = b"); }

TEST(LoggerSettingsLine, BytesAbove127PassThroughUnchanged) {
  EXPECT_EQ(NormalizeLine("\xC3\x89X"), "\xC3\x89x");
}

TEST(LoggerSettingsLine, TheSixLinesAndTheirLevels) {
  const std::pair<const char*, ZeltoLogger::LogLevel> cases[] = {
      {"loglevel=silent", ZeltoLogger::Silent}, {"loglevel=verbose", ZeltoLogger::Verbose},
      {"loglevel=debug", ZeltoLogger::Debug},   {"loglevel=info", ZeltoLogger::Info},
      {"loglevel=warn", ZeltoLogger::Warn},     {"loglevel=error", ZeltoLogger::Error},
  };
  for (const auto& [line, expected] : cases) {
    ZeltoLogger::LogLevel level = static_cast<ZeltoLogger::LogLevel>(0);
    EXPECT_TRUE(LevelForLine(line, &level)) << line;
    EXPECT_EQ(level, expected) << line;
  }
}

TEST(LoggerSettingsLine, ComparisonIsWholeStringAndExact) {
  for (const char* line : {"loglevel=debu", "loglevel=debugx", "xloglevel=debug", "",
                           "LOGLEVEL=DEBUG", "loglevel=7"}) {
    ZeltoLogger::LogLevel level = ZeltoLogger::Warn;
    EXPECT_FALSE(LevelForLine(line, &level)) << line;
    EXPECT_EQ(level, ZeltoLogger::Warn) << line;
  }
}

}  // namespace
