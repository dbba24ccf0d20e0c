// Part 5.1, GetIosLogLevel: the deliberately non-monotonic type table.
#include <gtest/gtest.h>

#include "logging/zelto_logger.h"

namespace {

ZeltoLogger::LogLevel Level(int value) { return static_cast<ZeltoLogger::LogLevel>(value); }

TEST(LoggerPlatformLogType, GetIosLogLevelGives0For7AndFor1And16For6) {
  EXPECT_EQ(ZeltoLogger::GetIosLogLevel(Level(7)), 0);
  EXPECT_EQ(ZeltoLogger::GetIosLogLevel(Level(1)), 0);
  EXPECT_EQ(ZeltoLogger::GetIosLogLevel(Level(6)), 16);
}

TEST(LoggerPlatformLogType, VerboseAndDebugAreInfoRecordsInfoAndWarnDebugRecords) {
  EXPECT_EQ(ZeltoLogger::GetIosLogLevel(ZeltoLogger::Verbose), 1);
  EXPECT_EQ(ZeltoLogger::GetIosLogLevel(ZeltoLogger::Debug), 1);
  EXPECT_EQ(ZeltoLogger::GetIosLogLevel(ZeltoLogger::Info), 2);
  EXPECT_EQ(ZeltoLogger::GetIosLogLevel(ZeltoLogger::Warn), 2);
  EXPECT_EQ(ZeltoLogger::GetIosLogLevel(ZeltoLogger::Error), 16);
  EXPECT_EQ(ZeltoLogger::GetIosLogLevel(ZeltoLogger::Silent), 0);
}

TEST(LoggerPlatformLogType, EveryValueOutside2To6IsDefault) {
  for (int value : {-2147483647 - 1, -1, 0, 1, 7, 8, 9, 2147483647}) {
    EXPECT_EQ(ZeltoLogger::GetIosLogLevel(Level(value)), ZeltoLogger::kLogTypeDefault) << value;
  }
}

}  // namespace
