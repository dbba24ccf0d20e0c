// Part 4.2: the log level, channel information and frame rate handlers,
// called directly on a source.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "properties/zelto_log_level_property.h"
#include "tests/component/mesh_source_test.h"

namespace zelto_test {
namespace {

using Records = std::vector<PlatformLogRecord>;

class OwnPropertiesTest : public ::testing::Test {
 protected:
  OwnPropertiesTest() { StreamSourceLogger().SetLogLevel(ZeltoLogger::Debug); }

  ZeltoMeshStreamSourceTestPeer peer() { return ZeltoMeshStreamSourceTestPeer(&source); }

  static void ExpectError(const weftcore::Status& status, weftcore::Cause cause,
                          const std::string& message, const std::string& block) {
    ASSERT_TRUE(status.IsError());
    EXPECT_EQ(weftcore::kLevelError, status.level());
    EXPECT_EQ(cause, status.cause());
    EXPECT_EQ(message, status.message());
    EXPECT_EQ(block, status.block());
  }

  weftcore::Status SetFrameRate(uint32_t num, uint32_t denom = 1) {
    weftcore::FrameRateProperty rate;
    rate.num = num;
    rate.denom = denom;
    return source.Set(weftcore::kFrameRatePropertyKey, &rate);
  }

  weftcore::Status SetLogLevel(int32_t level) {
    Zelto::ZeltoLogLevelProperty_ record;
    record.logLevel = static_cast<ZeltoLogger::LogLevel>(level);
    return source.Set(Zelto::kZeltoLogLevelKey, &record);
  }

  LoggerLevelGuard loggerLevel;
  LogRecorder logs;
  ZeltoMeshStreamSource source;
};

// --- Log level --------------------------------------------------------------

TEST_F(OwnPropertiesTest, LogLevelGetAnswersTheModuleLoggerLevelAndLogsOnEntry) {
  Zelto::ZeltoLogLevelProperty_ record;
  EXPECT_TRUE(source.Get("any key", &record).ok());
  EXPECT_EQ(ZeltoLogger::Debug, record.logLevel);
  // The key logged is the constant, not the key received.
  EXPECT_EQ((Records{MeshDebugRecord(Printf(
                "[ZeltoMesh] Get ZeltoLogLevelProperty by key=kZeltoLogLevelKey prop=%p\n",
                static_cast<const void*>(&record)))}),
            logs.Records());
}

TEST_F(OwnPropertiesTest, LogLevelSetChangesTheModuleLoggerAndLogsOnEntryFirst) {
  Zelto::ZeltoLogLevelProperty_ record;
  record.logLevel = ZeltoLogger::Error;
  EXPECT_TRUE(source.Set("any key", &record).ok());
  EXPECT_EQ(ZeltoLogger::Error, StreamSourceLogger().GetLogLevel());
  EXPECT_EQ((Records{MeshDebugRecord(Printf(
                "[ZeltoMesh] Set ZeltoLogLevelProperty by key=kZeltoLogLevelKey prop=%p\n",
                static_cast<const void*>(&record)))}),
            logs.Records());
}

TEST_F(OwnPropertiesTest, SettingTheLogLevelTo7Succeeds) {
  EXPECT_TRUE(SetLogLevel(7).ok());
  EXPECT_EQ(7, StreamSourceLogger().GetLogLevel());
}

TEST_F(OwnPropertiesTest, SettingTheLogLevelTo2And8Succeeds) {
  EXPECT_TRUE(SetLogLevel(2).ok());
  EXPECT_EQ(ZeltoLogger::Verbose, StreamSourceLogger().GetLogLevel());
  EXPECT_TRUE(SetLogLevel(8).ok());
  EXPECT_EQ(ZeltoLogger::Silent, StreamSourceLogger().GetLogLevel());
}

TEST_F(OwnPropertiesTest, SettingTheLogLevelTo1Or9FailsWithOutOfRangeCarryingTheValue) {
  ExpectError(SetLogLevel(1), weftcore::kCauseInvalidArgument,
              "property log level 1 is out of range.", "ZeltoMesh");
  ExpectError(SetLogLevel(9), weftcore::kCauseInvalidArgument,
              "property log level 9 is out of range.", "ZeltoMesh");
  EXPECT_EQ(ZeltoLogger::Debug, StreamSourceLogger().GetLogLevel());
}

TEST_F(OwnPropertiesTest, LogLevelGetAndSetWithANullRecordFailInBlockZelto) {
  ExpectError(source.Get(Zelto::kZeltoLogLevelKey, static_cast<Zelto::ZeltoLogLevelProperty_*>(nullptr)),
              weftcore::kCauseInvalidArgument, "property is null.", "Zelto");
  ExpectError(source.Set(Zelto::kZeltoLogLevelKey,
                         static_cast<const Zelto::ZeltoLogLevelProperty_*>(nullptr)),
              weftcore::kCauseInvalidArgument, "property is null.", "Zelto");
  EXPECT_EQ(ZeltoLogger::Debug, StreamSourceLogger().GetLogLevel());
  // Each handler logs before it tests the pointer.
  const std::string nullText = Printf("%p", static_cast<const void*>(nullptr));
  EXPECT_EQ((Records{MeshDebugRecord("[ZeltoMesh] Get ZeltoLogLevelProperty by "
                                     "key=kZeltoLogLevelKey prop=" + nullText + "\n"),
                     MeshDebugRecord("[ZeltoMesh] Set ZeltoLogLevelProperty by "
                                     "key=kZeltoLogLevelKey prop=" + nullText + "\n")}),
            logs.Records());
}

TEST_F(OwnPropertiesTest, LogLevelHandlersLogNothingWhileTheLoggerIsSilent) {
  StreamSourceLogger().SetLogLevel(ZeltoLogger::Silent);
  Zelto::ZeltoLogLevelProperty_ record;
  EXPECT_TRUE(source.Get(Zelto::kZeltoLogLevelKey, &record).ok());
  EXPECT_EQ(ZeltoLogger::Silent, record.logLevel);
  EXPECT_TRUE(logs.Records().empty());
}

// --- Channel information ----------------------------------------------------

TEST_F(OwnPropertiesTest, ChannelInfoGetAddsChannel0MeshData) {
  weftcore::ChannelInfoProperty info;
  EXPECT_TRUE(source.Get(weftcore::kChannelInfoPropertyKey, &info).ok());
  ASSERT_EQ(1u, info.channels.size());
  EXPECT_EQ("kRawDataTypeMesh", info.channels.at(0).raw_data_type);
  EXPECT_EQ("Mesh Data", info.channels.at(0).description);
  EXPECT_TRUE(logs.Records().empty());
}

TEST_F(OwnPropertiesTest, ReadingChannelInfoWithAnInputChannel0OfOtherStringsReturnsThemUnchanged) {
  weftcore::ChannelInfoProperty info;
  info.channels[0] = weftcore::ChannelInfo{"depth", "Depth Data"};
  EXPECT_TRUE(source.Get(weftcore::kChannelInfoPropertyKey, &info).ok());
  ASSERT_EQ(1u, info.channels.size());
  EXPECT_EQ("depth", info.channels.at(0).raw_data_type);
  EXPECT_EQ("Depth Data", info.channels.at(0).description);
}

TEST_F(OwnPropertiesTest, ReadingChannelInfoWithAnInputHoldingOnlyChannel3ReturnsChannels0And3) {
  weftcore::ChannelInfoProperty info;
  info.channels[3] = weftcore::ChannelInfo{"color", "Color Data"};
  EXPECT_TRUE(source.Get(weftcore::kChannelInfoPropertyKey, &info).ok());
  ASSERT_EQ(2u, info.channels.size());
  EXPECT_EQ("kRawDataTypeMesh", info.channels.at(0).raw_data_type);
  EXPECT_EQ("Mesh Data", info.channels.at(0).description);
  EXPECT_EQ("color", info.channels.at(3).raw_data_type);
  EXPECT_EQ("Color Data", info.channels.at(3).description);
}

TEST_F(OwnPropertiesTest, ChannelInfoGetWithANullRecordFailsWithNullPointer) {
  ExpectError(source.Get(weftcore::kChannelInfoPropertyKey,
                         static_cast<weftcore::ChannelInfoProperty*>(nullptr)),
              weftcore::kCauseInvalidArgument, "Null pointer", "ZeltoMesh");
}

TEST_F(OwnPropertiesTest, WritingChannelInfoFailsWithNotAvailableCarryingTheKey) {
  weftcore::ChannelInfoProperty info;
  ExpectError(source.Set(weftcore::kChannelInfoPropertyKey, &info), weftcore::kCauseNotAvailable,
              "not available to set channel_info_property", "core");
}

// --- Frame rate -------------------------------------------------------------

TEST_F(OwnPropertiesTest, ReadingFrameRateAfterSetting15Yields30And1AndUsePlaybackIsSet) {
  ASSERT_TRUE(SetFrameRate(15).ok());
  weftcore::FrameRateProperty rate;
  EXPECT_TRUE(source.Get(weftcore::kFrameRatePropertyKey, &rate).ok());
  EXPECT_EQ(30u, rate.num);
  EXPECT_EQ(1u, rate.denom);
  EXPECT_TRUE(peer().usePlayback());
  EXPECT_FALSE(peer().frameRate30());
  EXPECT_TRUE(logs.Records().empty());
}

TEST_F(OwnPropertiesTest, SettingFrameRate30SetsFrameRate30Only) {
  ASSERT_TRUE(SetFrameRate(30, 7).ok());  // the denominator is ignored
  EXPECT_TRUE(peer().frameRate30());
  EXPECT_FALSE(peer().usePlayback());
}

TEST_F(OwnPropertiesTest, Setting60ClearsBothFlagsAndSucceeds) {
  ASSERT_TRUE(SetFrameRate(30).ok());
  ASSERT_TRUE(peer().frameRate30());
  EXPECT_TRUE(SetFrameRate(60).ok());
  EXPECT_FALSE(peer().frameRate30());
  EXPECT_FALSE(peer().usePlayback());
  ASSERT_TRUE(SetFrameRate(15).ok());
  ASSERT_TRUE(peer().usePlayback());
  EXPECT_TRUE(SetFrameRate(60).ok());
  EXPECT_FALSE(peer().frameRate30());
  EXPECT_FALSE(peer().usePlayback());
}

TEST_F(OwnPropertiesTest, AfterSetting15ThenStopUsePlaybackAndFrameRate30AreBothFalse) {
  ASSERT_TRUE(SetFrameRate(15).ok());
  ASSERT_TRUE(peer().usePlayback());
  EXPECT_TRUE(source.Stop().ok());
  EXPECT_FALSE(peer().usePlayback());
  EXPECT_FALSE(peer().frameRate30());
}

TEST_F(OwnPropertiesTest, FrameRateGetAndSetWithANullRecordFailWithNullPointerAndChangeNothing) {
  ASSERT_TRUE(SetFrameRate(15).ok());
  ExpectError(source.Get(weftcore::kFrameRatePropertyKey,
                         static_cast<weftcore::FrameRateProperty*>(nullptr)),
              weftcore::kCauseInvalidArgument, "Null pointer", "ZeltoMesh");
  ExpectError(source.Set(weftcore::kFrameRatePropertyKey,
                         static_cast<const weftcore::FrameRateProperty*>(nullptr)),
              weftcore::kCauseInvalidArgument, "Null pointer", "ZeltoMesh");
  EXPECT_TRUE(peer().usePlayback());
}

}  // namespace
}  // namespace zelto_test
