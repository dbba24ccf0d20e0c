// The mesh source's properties as a client of the host sees them: bytes in
// and out of "mesh" through HostStream's serialized property calls (Parts
// 2.2, 4.1, 4.2).
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/component/mesh_source_test.h"
#include "tests/component/wire_bytes.h"
#include "weftcore/host/host_stream.h"

namespace zelto_test {
namespace {

class EndToEndPropertiesTest : public MeshSourceTest {
 protected:
  void SetUp() override { ASSERT_NO_FATAL_FAILURE(OpenMesh()); }

  // A client read: get the reply, copy it, hand it back.
  weftcore::Status GetBytes(const std::string& key, const Bytes& input, Bytes* reply) {
    void* property = nullptr;
    size_t size = 0;
    const weftcore::Status status =
        mesh->GetSerializedProperty(key, input.data(), input.size(), &property, &size);
    if (status.ok()) {
      const auto* bytes = static_cast<const uint8_t*>(property);
      reply->assign(bytes, bytes + size);
      const weftcore::Status released = mesh->ReleaseSerializedProperty(key, property, size);
      EXPECT_TRUE(released.ok()) << released.message();
    }
    return status;
  }
  Bytes GetBytes(const std::string& key) {
    Bytes reply;
    const weftcore::Status status = GetBytes(key, Bytes(), &reply);
    EXPECT_TRUE(status.ok()) << status.message();
    return reply;
  }
  weftcore::Status SetBytes(const std::string& key, const Bytes& bytes) {
    return mesh->SetSerializedProperty(key, bytes.empty() ? nullptr : bytes.data(), bytes.size());
  }

  static void ExpectError(const weftcore::Status& status, weftcore::Cause cause,
                          const std::string& message, const std::string& block) {
    ASSERT_TRUE(status.IsError());
    EXPECT_EQ(weftcore::kLevelError, status.level());
    EXPECT_EQ(cause, status.cause());
    EXPECT_EQ(message, status.message());
    EXPECT_EQ(block, status.block());
  }
};

Bytes LogLevelBytes(uint8_t level) { return Concat({{0x81}, FixStr("logLevel"), {level}}); }

Bytes FrameRateBytes(uint8_t num, uint8_t denom) {
  return Concat({{0x82}, FixStr("num"), {num}, FixStr("denom"), {denom}});
}

Bytes AlgorithmConfigBytes(uint8_t level, uint8_t period) {
  return Concat(
      {{0x82}, FixStr("meshReductionLevel"), {level}, FixStr("resetTrianglePeriod"), {period}});
}

Bytes ChannelInfoEntry(uint8_t channel, const std::string& type, const std::string& description) {
  return Concat({{channel, 0x82}, FixStr("raw_data_type"), FixStr(type), FixStr("description"),
                 FixStr(description)});
}

// --- "kZeltoLogLevelKey" ----------------------------------------------------

TEST_F(EndToEndPropertiesTest, LogLevelGetAnswersTheLevelAdoptedAtOpen) {
  EXPECT_EQ(LogLevelBytes(3), GetBytes("kZeltoLogLevelKey"));  // the fake's Debug
}

TEST_F(EndToEndPropertiesTest, LogLevelSetThenGet) {
  ASSERT_TRUE(SetBytes("kZeltoLogLevelKey", LogLevelBytes(6)).ok());
  EXPECT_EQ(LogLevelBytes(6), GetBytes("kZeltoLogLevelKey"));
  EXPECT_EQ(ZeltoLogger::Error, StreamSourceLogger().GetLogLevel());
}

TEST_F(EndToEndPropertiesTest, AClientSetOfTheLogLevelWithZeroBytesFailsWithPropertyIsNullInBlockZelto) {
  const weftcore::Status status = SetBytes("kZeltoLogLevelKey", Bytes());
  ExpectError(status, weftcore::kCauseInvalidArgument, "property is null.", "Zelto");
  EXPECT_FALSE(status.trace().empty());
  EXPECT_EQ(ZeltoLogger::Debug, StreamSourceLogger().GetLogLevel());
}

TEST_F(EndToEndPropertiesTest, LogLevelSetOutOfRangeFails) {
  ExpectError(SetBytes("kZeltoLogLevelKey", LogLevelBytes(9)), weftcore::kCauseInvalidArgument,
              "property log level 9 is out of range.", "ZeltoMesh");
  EXPECT_EQ(LogLevelBytes(3), GetBytes("kZeltoLogLevelKey"));
}

// --- "channel_info_property" ------------------------------------------------

TEST_F(EndToEndPropertiesTest, ChannelInfoGetAnswersChannel0MeshData) {
  EXPECT_EQ(Concat({{0x81}, FixStr("channels"), {0x81},
                    ChannelInfoEntry(0, "kRawDataTypeMesh", "Mesh Data")}),
            GetBytes("channel_info_property"));
}

TEST_F(EndToEndPropertiesTest, ChannelInfoGetWithAnInputHoldingChannel3AnswersChannels0And3) {
  const Bytes input =
      Concat({{0x81}, FixStr("channels"), {0x81}, ChannelInfoEntry(3, "color", "Color Data")});
  Bytes reply;
  ASSERT_TRUE(GetBytes("channel_info_property", input, &reply).ok());
  EXPECT_EQ(Concat({{0x81}, FixStr("channels"), {0x82},
                    ChannelInfoEntry(0, "kRawDataTypeMesh", "Mesh Data"),
                    ChannelInfoEntry(3, "color", "Color Data")}),
            reply);
}

TEST_F(EndToEndPropertiesTest, ChannelInfoGetWithAnInputChannel0KeepsItsStrings) {
  const Bytes input =
      Concat({{0x81}, FixStr("channels"), {0x81}, ChannelInfoEntry(0, "depth", "Depth Data")});
  Bytes reply;
  ASSERT_TRUE(GetBytes("channel_info_property", input, &reply).ok());
  EXPECT_EQ(input, reply);
}

TEST_F(EndToEndPropertiesTest, WritingChannelInfoFailsWithNotAvailableCarryingTheKey) {
  const Bytes bytes = Concat({{0x81}, FixStr("channels"), {0x80}});
  ExpectError(SetBytes("channel_info_property", bytes), weftcore::kCauseNotAvailable,
              "not available to set channel_info_property", "core");
}

// --- "frame_rate_property" --------------------------------------------------

TEST_F(EndToEndPropertiesTest, FrameRateGetAnswers30Over1) {
  EXPECT_EQ(FrameRateBytes(30, 1), GetBytes("frame_rate_property"));
}

TEST_F(EndToEndPropertiesTest, ReadingFrameRateAfterSetting15Over1StillYields30Over1) {
  ASSERT_TRUE(SetBytes("frame_rate_property", FrameRateBytes(15, 1)).ok());
  EXPECT_EQ(FrameRateBytes(30, 1), GetBytes("frame_rate_property"));
  EXPECT_TRUE(peer().usePlayback());
  EXPECT_FALSE(peer().frameRate30());
}

TEST_F(EndToEndPropertiesTest, FrameRateSetWithZeroBytesFailsWithNullPointer) {
  ExpectError(SetBytes("frame_rate_property", Bytes()), weftcore::kCauseInvalidArgument,
              "Null pointer", "ZeltoMesh");
}

// --- "kZeltoMeshAlgorithmConfigKey" -----------------------------------------

TEST_F(EndToEndPropertiesTest, AlgorithmConfigGetAnswersTheDefaults) {
  EXPECT_EQ(AlgorithmConfigBytes(0, 4), GetBytes("kZeltoMeshAlgorithmConfigKey"));
}

TEST_F(EndToEndPropertiesTest, AlgorithmConfigSet2And0ThenGetAnswers2And4) {
  ASSERT_TRUE(SetBytes("kZeltoMeshAlgorithmConfigKey", AlgorithmConfigBytes(2, 0)).ok());
  EXPECT_EQ(AlgorithmConfigBytes(2, 4), GetBytes("kZeltoMeshAlgorithmConfigKey"));
}

TEST_F(EndToEndPropertiesTest, ASerializedMapHoldingOnlyMeshReductionLevelSetsTheLevelAndKeepsThePeriod) {
  ASSERT_TRUE(SetBytes("kZeltoMeshAlgorithmConfigKey", AlgorithmConfigBytes(0, 9)).ok());
  const Bytes onlyLevel = Concat({{0x81}, FixStr("meshReductionLevel"), {0x01}});
  ASSERT_TRUE(SetBytes("kZeltoMeshAlgorithmConfigKey", onlyLevel).ok());
  EXPECT_EQ(AlgorithmConfigBytes(1, 9), GetBytes("kZeltoMeshAlgorithmConfigKey"));
}

TEST_F(EndToEndPropertiesTest, AlgorithmConfigSetNegativeFailsAndChangesNothing) {
  const Bytes negative = Concat(
      {{0x82}, FixStr("meshReductionLevel"), {0xFF}, FixStr("resetTrianglePeriod"), {0x05}});
  ExpectError(SetBytes("kZeltoMeshAlgorithmConfigKey", negative), weftcore::kCauseInvalidArgument,
              "mesh reduction level must be equal or greater than zero.", "ZeltoMesh");
  EXPECT_EQ(AlgorithmConfigBytes(0, 4), GetBytes("kZeltoMeshAlgorithmConfigKey"));
}

TEST_F(EndToEndPropertiesTest, AlgorithmConfigSetWithZeroBytesFailsWithPropertyIsNull) {
  ExpectError(SetBytes("kZeltoMeshAlgorithmConfigKey", Bytes()), weftcore::kCauseInvalidArgument,
              "property is null.", "ZeltoMesh");
}

TEST_F(EndToEndPropertiesTest, TheMeshStreamServesExactlyItsFiveProperties) {
  auto* stream = static_cast<weftcore::host::HostStream*>(mesh);
  EXPECT_EQ((std::vector<std::string>{"channel_info_property", "frame_rate_property",
                                      "kZeltoLogLevelKey", "kZeltoMeshAlgorithmConfigKey",
                                      "kZeltoMeshMaskSettingsKey"}),
            stream->utility()->PropertyKeys());
}

}  // namespace
}  // namespace zelto_test
