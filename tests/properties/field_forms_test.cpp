// Part 4.1, "Serialized form of a record": the MessagePack form of every
// field type, byte for byte.
#include <limits>

#include "properties/golden.h"

namespace {

using zelto_test::Bytes;
using zelto_test::Cat;
using zelto_test::Encode;
using zelto_test::ExpectGolden;
using zelto_test::F32;
using zelto_test::Hex;
using zelto_test::Key;
using zelto_test::Raw;

using ZeltoSegmentation::ZeltoSegmentationMaskDataProperty_;
using ZeltoSegmentation::ZeltoSegmentationMaskInfo_;

// A mask data record whose only non-zero field is the time stamp (uint64).
Bytes TimestampBytes(const Bytes& value) {
  return Cat({{0x88}, Key("name"), {0xA0}, Key("maskDataAddress"), {0x00},
              Key("maskDataSize"), {0x00}, Key("maskDataWidth"), {0x00},
              Key("maskDataHeight"), {0x00}, Key("maskDataTimestamp"), value,
              Key("isColorSource"), {0xC2}, Key("isInvertMask"), {0xC2}});
}

TEST(FieldForms, Uint64UsesTheShortestUnsignedForm) {
  const std::pair<uint64_t, Bytes> cases[] = {
      {0, {0x00}},
      {127, {0x7F}},
      {128, {0xCC, 0x80}},
      {255, {0xCC, 0xFF}},
      {256, {0xCD, 0x01, 0x00}},
      {65535, {0xCD, 0xFF, 0xFF}},
      {65536, {0xCE, 0x00, 0x01, 0x00, 0x00}},
      {4294967295ULL, {0xCE, 0xFF, 0xFF, 0xFF, 0xFF}},
      {4294967296ULL, {0xCF, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00}},
      {0x8000000000000000ULL, {0xCF, 0x80, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}},
  };
  for (const auto& [value, form] : cases) {
    ZeltoSegmentationMaskDataProperty_ record;
    record.maskDataTimestamp = value;
    SCOPED_TRACE(value);
    ExpectGolden(record, TimestampBytes(form));
  }
}

TEST(FieldForms, Uint32UsesTheShortestUnsignedForm) {
  const std::pair<uint32_t, Bytes> cases[] = {
      {0, {0x00}},          {127, {0x7F}},
      {128, {0xCC, 0x80}},  {256, {0xCD, 0x01, 0x00}},
      {65536, {0xCE, 0x00, 0x01, 0x00, 0x00}},
  };
  for (const auto& [value, form] : cases) {
    weftcore::FrameRateProperty record;
    record.num = 1;
    record.denom = value;
    SCOPED_TRACE(value);
    ExpectGolden(record, Cat({{0x82}, Key("num"), {0x01}, Key("denom"), form}));
  }
}

TEST(FieldForms, SignedInt32UsesFixintAndUintFormsAboveZeroAndIntFormsBelow) {
  const std::pair<int32_t, Bytes> cases[] = {
      {1, {0x01}},
      {200, {0xCC, 0xC8}},
      {1000, {0xCD, 0x03, 0xE8}},
      {70000, {0xCE, 0x00, 0x01, 0x11, 0x70}},
      {-1, {0xFF}},
      {-100, {0xD0, 0x9C}},
      {-200, {0xD1, 0xFF, 0x38}},
      {-70000, {0xD2, 0xFF, 0xFE, 0xEE, 0x90}},
  };
  for (const auto& [value, form] : cases) {
    ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_ record;
    record.meshReductionLevel = value;
    SCOPED_TRACE(value);
    ExpectGolden(record, Cat({{0x82}, Key("meshReductionLevel"), form,
                              Key("resetTrianglePeriod"), {0x00}}));
  }
}

TEST(FieldForms, FloatIsAlwaysFloat32EvenForWholeAndZeroValues) {
  ZeltoTof::Vector_ record{0.0f, 1.0f, 0.1f};
  ExpectGolden(record, Cat({{0x83}, Key("x"), {0xCA, 0x00, 0x00, 0x00, 0x00},
                            Key("y"), {0xCA, 0x3F, 0x80, 0x00, 0x00},
                            Key("z"), {0xCA, 0x3D, 0xCC, 0xCC, 0xCD}}));
}

TEST(FieldForms, FloatInfinitiesAndLargestFiniteKeepTheirBits) {
  ZeltoTof::Vector_ record{std::numeric_limits<float>::infinity(),
                           -std::numeric_limits<float>::infinity(),
                           std::numeric_limits<float>::max()};
  ExpectGolden(record, Cat({{0x83}, Key("x"), F32(0x7F800000), Key("y"), F32(0xFF800000),
                            Key("z"), F32(0x7F7FFFFF)}));
}

TEST(FieldForms, BoolIsFalseOrTrue) {
  ZeltoTof::ZeltoTofProcessTargetsProperty_ record;
  record.processConfidence = true;
  EXPECT_EQ(Hex(Encode(record)),
            Hex(Cat({{0x83}, Key("processDepth"), {0xC2}, Key("processConfidence"), {0xC3},
                     Key("processPointCloud"), {0xC2}})));
}

TEST(FieldForms, KeysAreFixstrOfTheFieldName) {
  ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_ record;
  const Bytes bytes = Encode(record);
  const Bytes expected = Cat({{0x82, 0xB2}, Raw("meshReductionLevel"), {0x00},
                              {0xB3}, Raw("resetTrianglePeriod"), {0x00}});
  EXPECT_EQ(Hex(bytes), Hex(expected));
}

TEST(FieldForms, StringsUseFixstrThenStr8Str16Str32) {
  const std::pair<size_t, Bytes> cases[] = {
      {0, {0xA0}},
      {31, {0xBF}},
      {32, {0xD9, 0x20}},
      {255, {0xD9, 0xFF}},
      {256, {0xDA, 0x01, 0x00}},
      {65535, {0xDA, 0xFF, 0xFF}},
      {65536, {0xDB, 0x00, 0x01, 0x00, 0x00}},
  };
  for (const auto& [length, header] : cases) {
    ZeltoSegmentationMaskInfo_ record;
    record.name = std::string(length, 's');
    SCOPED_TRACE(length);
    ExpectGolden(record, Cat({{0x83}, Key("name"), header, Raw(record.name),
                              Key("isColorSource"), {0xC2}, Key("isInvertMask"), {0xC2}}));
  }
}

TEST(FieldForms, StringBytesAreCopiedVerbatimIncludingNulAndNonAscii) {
  ZeltoSegmentationMaskInfo_ record;
  record.name = std::string("a\0\xC3\xA9", 4);
  ExpectGolden(record, Cat({{0x83}, Key("name"), {0xA4, 'a', 0x00, 0xC3, 0xA9},
                            Key("isColorSource"), {0xC2}, Key("isInvertMask"), {0xC2}}));
}

TEST(FieldForms, EveryDeclaredFieldIsWrittenForDefaultRecords) {
  EXPECT_EQ(Encode(Zelto::ZeltoLogLevelProperty_{})[0], 0x81);
  EXPECT_EQ(Encode(ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_{})[0], 0x82);
  EXPECT_EQ(Encode(ZeltoMesh::ZeltoMeshMaskSettingsProperty_{})[0], 0x83);
  EXPECT_EQ(Encode(ZeltoSegmentationMaskInfo_{})[0], 0x83);
  EXPECT_EQ(Encode(weftcore::ChannelInfoProperty{})[0], 0x81);
  EXPECT_EQ(Encode(weftcore::ChannelInfo{})[0], 0x82);
  EXPECT_EQ(Encode(weftcore::FrameRateProperty{})[0], 0x82);
  EXPECT_EQ(Encode(ZeltoTof::ZeltoTofCalibrationSettingsProperty_{})[0], 0x89);
  EXPECT_EQ(Encode(ZeltoTof::InternalParameter_{})[0], 0x84);
  EXPECT_EQ(Encode(ZeltoTof::Matrix_{})[0], 0x89);
  EXPECT_EQ(Encode(ZeltoTof::Vector_{})[0], 0x83);
  EXPECT_EQ(Encode(ZeltoTof::ZeltoTofProcessTargetsProperty_{})[0], 0x83);
  EXPECT_EQ(Encode(Zelto::ZeltoRuntimeSettingsProperty_{})[0], 0x83);
  EXPECT_EQ(Encode(ZeltoTof::ZeltoTofCamera2ConfigurationProperty_{})[0], 0x8F);
  EXPECT_EQ(Encode(ZeltoTof::ZeltoTofCamera2IntrinsicsProperty_{})[0], 0x89);
  EXPECT_EQ(Encode(ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_{})[0], 0x81);
  EXPECT_EQ(Encode(ZeltoSegmentationMaskDataProperty_{})[0], 0x88);
}

TEST(FieldForms, DefaultRecordsAreZeroInitialised) {
  const Bytes calibration = Cat({
      {0x89}, Key("colorWidth"), {0x00}, Key("colorHeight"), {0x00}, Key("depthWidth"), {0x00},
      Key("depthHeight"), {0x00}, Key("isCalibrated"), {0xC2},
      Key("c"), {0x84}, Key("fx"), F32(0), Key("fy"), F32(0), Key("cx"), F32(0), Key("cy"), F32(0),
      Key("d"), {0x84}, Key("fx"), F32(0), Key("fy"), F32(0), Key("cx"), F32(0), Key("cy"), F32(0),
      Key("R"), {0x89}, Key("a"), F32(0), Key("b"), F32(0), Key("c"), F32(0), Key("d"), F32(0),
      Key("e"), F32(0), Key("f"), F32(0), Key("g"), F32(0), Key("h"), F32(0), Key("i"), F32(0),
      Key("T"), {0x83}, Key("x"), F32(0), Key("y"), F32(0), Key("z"), F32(0)});
  ExpectGolden(ZeltoTof::ZeltoTofCalibrationSettingsProperty_{}, calibration);
  ExpectGolden(Zelto::ZeltoRuntimeSettingsProperty_{},
               Cat({{0x83}, Key("runMode"), {0x00}, Key("isRemoteServer"), {0xC2},
                    Key("isUsingArFoundation"), {0xC2}}));
  ExpectGolden(ZeltoMesh::ZeltoMeshMaskSettingsProperty_{},
               Cat({{0x83}, Key("enabled"), {0xC2}, Key("maskInfo"), {0x90},
                    Key("maskThreshold"), {0x00}}));
}

TEST(FieldForms, VectorOf16ElementsIsArray16) {
  ZeltoMesh::ZeltoMeshMaskSettingsProperty_ record;
  record.maskInfo.resize(16);
  Bytes expected = Cat({{0x83}, Key("enabled"), {0xC2}, Key("maskInfo"), {0xDC, 0x00, 0x10}});
  for (int i = 0; i < 16; ++i) {
    expected = Cat({expected, {0x83}, Key("name"), {0xA0}, Key("isColorSource"), {0xC2},
                    Key("isInvertMask"), {0xC2}});
  }
  expected = Cat({expected, Key("maskThreshold"), {0x00}});
  ExpectGolden(record, expected);
}

TEST(FieldForms, UnsignedKeyedMapOf16ChannelsIsMap16WithAscendingKeys) {
  weftcore::ChannelInfoProperty record;
  for (uint32_t channel = 16; channel-- > 0;) record.channels[channel * 16] = {};
  Bytes expected = Cat({{0x81}, Key("channels"), {0xDE, 0x00, 0x10}});
  for (uint32_t channel = 0; channel < 16; ++channel) {
    const uint32_t key = channel * 16;
    const Bytes keyBytes = key < 128 ? Bytes{static_cast<uint8_t>(key)}
                                     : Bytes{0xCC, static_cast<uint8_t>(key)};
    expected = Cat({expected, keyBytes, {0x82}, Key("raw_data_type"), {0xA0},
                    Key("description"), {0xA0}});
  }
  ExpectGolden(record, expected);
}

}  // namespace
