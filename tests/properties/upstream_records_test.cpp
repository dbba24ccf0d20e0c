// Part 4.3, "Edge cases worth testing": upstream records read through
// Stream::GetProperty from a scripted stream.
#include <gtest/gtest.h>

#include "properties/golden.h"
#include "properties/scripted_stream.h"

namespace {

using zelto_test::Bytes;
using zelto_test::Cat;
using zelto_test::Decode;
using zelto_test::Encode;
using zelto_test::Hex;
using zelto_test::Key;
using zelto_test::Raw;
using zelto_test::ScriptedStream;

using ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_;
using ZeltoSegmentation::ZeltoSegmentationMaskDataProperty_;

Bytes MaskBytes(const std::string& name, uint8_t width) {
  return Cat({{0x88}, Key("name"), {static_cast<uint8_t>(0xA0 | name.size())}, Raw(name),
              Key("maskDataAddress"), {0x00}, Key("maskDataSize"), {0x00},
              Key("maskDataWidth"), {width}, Key("maskDataHeight"), {0x00},
              Key("maskDataTimestamp"), {0x00}, Key("isColorSource"), {0xC2},
              Key("isInvertMask"), {0xC2}});
}

TEST(Part43EdgeCases, MaskDataListReplyWithAnEmptyArrayYieldsAnEmptyDataVector) {
  ScriptedStream stream;
  stream.reply = Cat({{0x81}, Key("data"), {0x90}});
  ZeltoSegmentationMaskDataListProperty_ list;
  list.data.resize(2);  // the caller's entries are replaced, not kept
  ASSERT_TRUE(stream.GetProperty("kZeltoSegmentationMaskDataListKey", &list).ok());
  EXPECT_TRUE(list.data.empty());
}

TEST(Part43EdgeCases, MaskDataListReplyWithThreeMapsYieldsThreeRecordsInArrayOrder) {
  ScriptedStream stream;
  stream.reply = Cat({{0x81}, Key("data"), {0x93}, MaskBytes("person", 1), MaskBytes("sky", 2),
                      MaskBytes("hair", 3)});
  ZeltoSegmentationMaskDataListProperty_ list;
  ASSERT_TRUE(stream.GetProperty("kZeltoSegmentationMaskDataListKey", &list).ok());
  ASSERT_EQ(list.data.size(), 3u);
  EXPECT_EQ(list.data[0].name, "person");
  EXPECT_EQ(list.data[0].maskDataWidth, 1u);
  EXPECT_EQ(list.data[1].name, "sky");
  EXPECT_EQ(list.data[1].maskDataWidth, 2u);
  EXPECT_EQ(list.data[2].name, "hair");
  EXPECT_EQ(list.data[2].maskDataWidth, 3u);
}

TEST(Part43EdgeCases, CameraConfigurationReplyLackingIntrinsicsLeavesTheCallersIntrinsicsUnchanged) {
  ScriptedStream stream;
  stream.reply = Cat({{0x82}, Key("width"), {0xCD, 0x02, 0x80}, Key("height"),
                      {0xCD, 0x01, 0xE0}});
  ZeltoTof::ZeltoTofCamera2ConfigurationProperty_ configuration;
  configuration.intrinsics = {500.0f, 501.0f, 320.0f, 240.0f, 0.1f, 0.2f, 0.3f, 0.4f, 0.5f};
  const ZeltoTof::ZeltoTofCamera2IntrinsicsProperty_ before = configuration.intrinsics;
  ASSERT_TRUE(stream.GetProperty("kZeltoTofCamera2CurrentConfigurationKey", &configuration).ok());
  EXPECT_EQ(configuration.width, 640);
  EXPECT_EQ(configuration.height, 480);
  EXPECT_TRUE(configuration.intrinsics == before);
}

TEST(Part43EdgeCases, RunMode200EncodesAs0xCC0xC8AndDecodesBackTo200) {
  Zelto::ZeltoRuntimeSettingsProperty_ settings;
  settings.runMode = static_cast<Zelto::RunMode>(200);
  const Bytes bytes = Encode(settings);
  const Bytes expected = Cat({{0x83}, Key("runMode"), {0xCC, 0xC8}, Key("isRemoteServer"), {0xC2},
                              Key("isUsingArFoundation"), {0xC2}});
  EXPECT_EQ(Hex(bytes), Hex(expected));
  Zelto::ZeltoRuntimeSettingsProperty_ decoded;
  ASSERT_TRUE(Decode(bytes, decoded).ok());
  EXPECT_EQ(static_cast<int>(decoded.runMode), 200);
}

TEST(Part43EdgeCases, MaskDataAddressValuesAbove4294967295SurviveARoundTrip) {
  for (uint64_t address : {4294967296ULL, 0x0000FFFFDEADBEEFULL, 18446744073709551615ULL}) {
    ZeltoSegmentationMaskDataListProperty_ list;
    list.data.resize(1);
    list.data[0].maskDataAddress = address;
    const Bytes bytes = Encode(list);
    // 0x81 "data" 0x91 0x88 "name" 0xA0 "maskDataAddress" then uint 64.
    ASSERT_GT(bytes.size(), 30u);
    EXPECT_EQ(bytes[30], 0xCF);
    ZeltoSegmentationMaskDataListProperty_ decoded;
    ASSERT_TRUE(Decode(bytes, decoded).ok());
    ASSERT_EQ(decoded.data.size(), 1u);
    EXPECT_EQ(decoded.data[0].maskDataAddress, address);
  }
}

TEST(Part43Records, ProcessTargetsAreWrittenThroughSetProperty) {
  ScriptedStream stream;
  ZeltoTof::ZeltoTofProcessTargetsProperty_ targets;
  targets.processPointCloud = true;
  ASSERT_TRUE(stream.SetProperty("kZeltoTofProcessTargetsKey", &targets).ok());
  EXPECT_EQ(stream.setKey, "kZeltoTofProcessTargetsKey");
  EXPECT_EQ(Hex(stream.setBytes),
            Hex(Cat({{0x83}, Key("processDepth"), {0xC2}, Key("processConfidence"), {0xC2},
                     Key("processPointCloud"), {0xC3}})));
}

TEST(Part43Records, KeyTextsAreTheirOwnIdentifiers) {
  EXPECT_STREQ(ZeltoTof::kZeltoTofCalibrationSettingsKey, "kZeltoTofCalibrationSettingsKey");
  EXPECT_STREQ(ZeltoTof::kZeltoTofProcessTargetsKey, "kZeltoTofProcessTargetsKey");
  EXPECT_STREQ(Zelto::kZeltoRuntimeSettingsKey, "kZeltoRuntimeSettingsKey");
  EXPECT_STREQ(ZeltoTof::kZeltoTofCamera2CurrentConfigurationKey,
               "kZeltoTofCamera2CurrentConfigurationKey");
  EXPECT_STREQ(ZeltoSegmentation::kZeltoSegmentationMaskDataListKey,
               "kZeltoSegmentationMaskDataListKey");
  EXPECT_STREQ(Zelto::kZeltoLogLevelKey, "kZeltoLogLevelKey");
  EXPECT_STREQ(ZeltoMesh::kZeltoMeshAlgorithmConfigKey, "kZeltoMeshAlgorithmConfigKey");
  EXPECT_STREQ(ZeltoMesh::kZeltoMeshMaskSettingsKey, "kZeltoMeshMaskSettingsKey");
  EXPECT_STREQ(weftcore::kChannelInfoPropertyKey, "channel_info_property");
  EXPECT_STREQ(weftcore::kFrameRatePropertyKey, "frame_rate_property");
}

}  // namespace
