// Part 5.1, WriteLog steps 1 and 2: which calls get through the threshold.
#include <gtest/gtest.h>

#include "logging/log_capture.h"
#include "logging/zelto_logger.h"

namespace {

using zelto_test::LogCapture;
using zelto_test::LogRecord;

ZeltoLogger::LogLevel Level(int value) { return static_cast<ZeltoLogger::LogLevel>(value); }

TEST(LoggerWriteLog, Level4WriteLogWith3FalseWith456TrueWith7FalseEvenThough7IsAboveTheThreshold) {
  LogCapture capture;
  ZeltoLogger logger;
  logger.SetLogLevel(ZeltoLogger::Info);
  EXPECT_FALSE(logger.WriteLog(Level(3), "ZeltoMesh", "three"));
  EXPECT_TRUE(logger.WriteLog(Level(4), "ZeltoMesh", "four"));
  EXPECT_TRUE(logger.WriteLog(Level(5), "ZeltoMesh", "five"));
  EXPECT_TRUE(logger.WriteLog(Level(6), "ZeltoMesh", "six"));
  EXPECT_FALSE(logger.WriteLog(Level(7), "ZeltoMesh", "seven"));
  const std::vector<LogRecord> expected = {
      {2, "ZeltoMesh", "four"}, {2, "ZeltoMesh", "five"}, {16, "ZeltoMesh", "six"}};
  EXPECT_EQ(capture.records(), expected);
}

TEST(LoggerWriteLog, AfterSetLogLevel0WriteLogAtLevel1FalseBelow2AndAtLevel2True) {
  LogCapture capture;
  ZeltoLogger logger;
  logger.SetLogLevel(Level(0));
  EXPECT_EQ(logger.GetLogLevel(), 0);
  EXPECT_FALSE(logger.WriteLog(Level(1), "ZeltoMesh", "one"));
  EXPECT_FALSE(logger.WriteLog(Level(0), "ZeltoMesh", "zero"));
  EXPECT_TRUE(logger.WriteLog(Level(2), "ZeltoMesh", "two"));
  const std::vector<LogRecord> expected = {{1, "ZeltoMesh", "two"}};
  EXPECT_EQ(capture.records(), expected);
}

TEST(LoggerWriteLog, DefaultThresholdSilentSuppressesEverythingAndEmitsNothing) {
  LogCapture capture;
  ZeltoLogger logger;
  ASSERT_EQ(logger.GetLogLevel(), ZeltoLogger::Silent);
  for (int level = 2; level <= 8; ++level) {
    EXPECT_FALSE(logger.WriteLog(Level(level), "ZeltoMesh", "x")) << level;
  }
  EXPECT_TRUE(capture.records().empty());
}

TEST(LoggerWriteLog, Threshold2LetsAllOf2To6Through) {
  LogCapture capture;
  ZeltoLogger logger;
  logger.SetLogLevel(ZeltoLogger::Verbose);
  for (int level = 2; level <= 6; ++level) {
    EXPECT_TRUE(logger.WriteLog(Level(level), "ZeltoMesh", "level %d", level)) << level;
  }
  const std::vector<LogRecord> expected = {{1, "ZeltoMesh", "level 2"},
                                           {1, "ZeltoMesh", "level 3"},
                                           {2, "ZeltoMesh", "level 4"},
                                           {2, "ZeltoMesh", "level 5"},
                                           {16, "ZeltoMesh", "level 6"}};
  EXPECT_EQ(capture.records(), expected);
}

TEST(LoggerWriteLog, ThresholdEqualToTheLevelLetsItThroughAndOneAboveDoesNot) {
  ZeltoLogger logger;
  logger.SetLogLevel(ZeltoLogger::Error);
  EXPECT_TRUE(logger.WriteLog(ZeltoLogger::Error, "ZeltoMesh", "e"));
  EXPECT_FALSE(logger.WriteLog(ZeltoLogger::Warn, "ZeltoMesh", "w"));
}

TEST(LoggerWriteLog, SetLogLevelStoresAnyValueUnchecked) {
  ZeltoLogger logger;
  for (int value : {-5, 0, 1, 7, 9, 1000}) {
    logger.SetLogLevel(Level(value));
    EXPECT_EQ(logger.GetLogLevel(), value);
  }
  logger.SetLogLevel(Level(7));
  EXPECT_FALSE(logger.WriteLog(ZeltoLogger::Error, "ZeltoMesh", "e"));
  logger.SetLogLevel(Level(-5));
  EXPECT_TRUE(logger.WriteLog(ZeltoLogger::Verbose, "ZeltoMesh", "v"));
}

}  // namespace
