// Part 5.1, WriteLog steps 3 to 5 and ForceWriteLog: what reaches the
// platform log, exactly.
#include <syslog.h>

#include <gtest/gtest.h>

#include <string>

#include "logging/log_capture.h"
#include "logging/zelto_logger.h"

namespace {

using zelto_test::LogCapture;
using zelto_test::LogRecord;

ZeltoLogger::LogLevel Level(int value) { return static_cast<ZeltoLogger::LogLevel>(value); }

TEST(LoggerWriteLogFormat, ErrorRecordIsType16WithTheTagAndTheFormattedText) {
  LogCapture capture;
  ZeltoLogger logger;
  logger.SetLogLevel(ZeltoLogger::Debug);
  EXPECT_TRUE(logger.WriteLog(ZeltoLogger::Error, "ZeltoMesh", "[%s] failed: %d %s %.2f %zu",
                              "ZeltoMesh", -7, "text", 1.5, size_t{42}));
  const std::vector<LogRecord> expected = {
      {16, "ZeltoMesh", "[ZeltoMesh] failed: -7 text 1.50 42"}};
  EXPECT_EQ(capture.records(), expected);
}

TEST(LoggerWriteLogFormat, PropertyHandlerLineKeepsItsTrailingNewline) {
  LogCapture capture;
  ZeltoLogger logger;
  logger.SetLogLevel(ZeltoLogger::Debug);
  EXPECT_TRUE(logger.WriteLog(ZeltoLogger::Debug, "ZeltoMesh", "[%s] Get %s by key=%s\n",
                              "ZeltoMesh", "ZeltoLogLevelProperty", "kZeltoLogLevelKey"));
  const std::vector<LogRecord> expected = {
      {1, "ZeltoMesh", "[ZeltoMesh] Get ZeltoLogLevelProperty by key=kZeltoLogLevelKey\n"}};
  EXPECT_EQ(capture.records(), expected);
}

TEST(LoggerWriteLogFormat, TheTagIsPassedThroughAsGiven) {
  LogCapture capture;
  ZeltoLogger logger;
  logger.SetLogLevel(ZeltoLogger::Verbose);
  EXPECT_TRUE(logger.WriteLog(ZeltoLogger::Warn, "", "empty tag"));
  EXPECT_TRUE(logger.WriteLog(ZeltoLogger::Warn, std::string("Other Tag"), "%%"));
  const std::vector<LogRecord> expected = {{2, "", "empty tag"}, {2, "Other Tag", "%"}};
  EXPECT_EQ(capture.records(), expected);
}

TEST(LoggerWriteLogFormat, EmptyMessageGoesOutEmpty) {
  LogCapture capture;
  ZeltoLogger logger;
  logger.SetLogLevel(ZeltoLogger::Verbose);
  EXPECT_TRUE(logger.WriteLog(ZeltoLogger::Info, "ZeltoMesh", "%s", ""));
  const std::vector<LogRecord> expected = {{2, "ZeltoMesh", ""}};
  EXPECT_EQ(capture.records(), expected);
}

TEST(LoggerWriteLogFormat, LongMessagesHaveNoSizeLimit) {
  LogCapture capture;
  ZeltoLogger logger;
  logger.SetLogLevel(ZeltoLogger::Verbose);
  std::string body(200000, 'm');
  body[0] = 'A';
  body[199999] = 'Z';
  EXPECT_TRUE(logger.WriteLog(ZeltoLogger::Error, "ZeltoMesh", "<%s>", body.c_str()));
  EXPECT_TRUE(logger.WriteLog(ZeltoLogger::Error, "ZeltoMesh", "%70000d", 5));
  const std::vector<LogRecord> records = capture.records();
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[0].message, "<" + body + ">");
  EXPECT_EQ(records[0].message.size(), 200002u);
  EXPECT_EQ(records[1].message, std::string(69999, ' ') + "5");
}

TEST(LoggerWriteLogFormat, ForceWriteLogIgnoresTheThresholdAndAlwaysReturnsTrue) {
  LogCapture capture;
  ZeltoLogger logger;
  ASSERT_EQ(logger.GetLogLevel(), ZeltoLogger::Silent);
  EXPECT_TRUE(logger.ForceWriteLog(ZeltoLogger::Debug, "ZeltoMesh", "debug %d", 3));
  EXPECT_TRUE(logger.ForceWriteLog(ZeltoLogger::Error, "ZeltoMesh", "error"));
  const std::vector<LogRecord> expected = {{1, "ZeltoMesh", "debug 3"}, {16, "ZeltoMesh", "error"}};
  EXPECT_EQ(capture.records(), expected);
}

TEST(LoggerWriteLogFormat, ForceWriteLogOutside2To6GoesOutAsDefaultType0) {
  LogCapture capture;
  ZeltoLogger logger;
  for (int level : {0, 1, 7, 8, -1}) {
    EXPECT_TRUE(logger.ForceWriteLog(Level(level), "ZeltoMesh", "level %d", level));
  }
  const std::vector<LogRecord> expected = {{0, "ZeltoMesh", "level 0"},
                                           {0, "ZeltoMesh", "level 1"},
                                           {0, "ZeltoMesh", "level 7"},
                                           {0, "ZeltoMesh", "level 8"},
                                           {0, "ZeltoMesh", "level -1"}};
  EXPECT_EQ(capture.records(), expected);
}

// A wide character that the "C" locale cannot convert makes the length pass
// of vsnprintf fail; the record still goes out, with os_log's "(null)".
TEST(LoggerWriteLogFormat, FailedLengthPassHandsOnTheNullMessageAsNullText) {
  LogCapture capture;
  ZeltoLogger logger;
  logger.SetLogLevel(ZeltoLogger::Verbose);
  const wchar_t unconvertible[] = {static_cast<wchar_t>(0x4E2D), 0};
  EXPECT_TRUE(logger.WriteLog(ZeltoLogger::Error, "ZeltoMesh", "%ls", unconvertible));
  const std::vector<LogRecord> expected = {{16, "ZeltoMesh", "(null)"}};
  EXPECT_EQ(capture.records(), expected);
}

// Without a sink the record goes to syslog only when its priority is enabled;
// WriteLog reports true either way.
TEST(LoggerWriteLogFormat, WithoutSinkWriteLogReturnsTrueWhetherOrNotTheSystemLogTakesIt) {
  const int savedMask = setlogmask(LOG_MASK(LOG_EMERG));
  ZeltoLogger logger;
  logger.SetLogLevel(ZeltoLogger::Verbose);
  EXPECT_TRUE(logger.WriteLog(ZeltoLogger::Error, "ZeltoMesh", "not enabled"));
  EXPECT_TRUE(logger.ForceWriteLog(Level(0), "ZeltoMesh", "not enabled"));
  setlogmask(savedMask);
}

}  // namespace
