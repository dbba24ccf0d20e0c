// Part 4.1, "Conversion of a map to a record", rules 1 to 6, and the Part 4.1
// and 4.3 examples of type mismatches.
#include "properties/decode_expectations.h"
#include "properties/golden.h"

namespace {

using zelto_test::Bytes;
using zelto_test::Cat;
using zelto_test::Decode;
using zelto_test::ExpectFailure;
using zelto_test::Key;
using zelto_test::Raw;
using zelto_test::TypeMismatchMessage;

weftcore::FrameRateProperty FrameRate(uint32_t num, uint32_t denom) {
  weftcore::FrameRateProperty record;
  record.num = num;
  record.denom = denom;
  return record;
}

TEST(MapToRecordRule1, ObjectMustBeAMap) {
  const Bytes notMaps[] = {{0x92, 0x01, 0x02}, {0x01}, {0xC0}, {0xA3, 'n', 'u', 'm'}, {0xC3}};
  for (const Bytes& bytes : notMaps) {
    weftcore::FrameRateProperty record = FrameRate(7, 9);
    ExpectFailure(Decode(bytes, record), 8, TypeMismatchMessage(bytes.size()));
    EXPECT_TRUE(record == FrameRate(7, 9));
  }
}

TEST(MapToRecordRule2, AnIntegerKeyFailsTheWholeConversionBeforeAnyField) {
  const Bytes bytes = Cat({{0x82}, Key("num"), {0x05}, {0x01}, {0x02}});
  weftcore::FrameRateProperty record = FrameRate(7, 9);
  ExpectFailure(Decode(bytes, record), 8, TypeMismatchMessage(bytes.size()));
  EXPECT_TRUE(record == FrameRate(7, 9));
}

TEST(MapToRecordRule2, ABinaryKeyIsNotAStringKey) {
  const Bytes bytes = Cat({{0x81, 0xC4, 0x03}, Raw("num"), {0x05}});
  weftcore::FrameRateProperty record;
  ExpectFailure(Decode(bytes, record), 8, TypeMismatchMessage(bytes.size()));
}

TEST(MapToRecordRule2, ANestedMapWithAnIntegerKeyFailsTheOuterConversion) {
  const Bytes bytes = Cat({{0x81}, Key("T"), {0x81, 0x00, 0xCA, 0, 0, 0, 0}});
  ZeltoTof::ZeltoTofCalibrationSettingsProperty_ record;
  ExpectFailure(Decode(bytes, record), 8, TypeMismatchMessage(bytes.size()));
}

TEST(MapToRecordRule3, WhenAKeyOccursTwiceTheFirstOccurrenceIsUsed) {
  const Bytes bytes = Cat({{0x83}, Key("num"), {0x01}, Key("denom"), {0x02}, Key("num"), {0x03}});
  weftcore::FrameRateProperty record;
  ASSERT_TRUE(Decode(bytes, record).ok());
  EXPECT_TRUE(record == FrameRate(1, 2));
}

TEST(MapToRecordRule3, ALaterDuplicateOfTheWrongTypeIsNeverConverted) {
  const Bytes bytes = Cat({{0x82}, Key("num"), {0x01}, Key("num"), {0xA1, 'x'}});
  weftcore::FrameRateProperty record;
  ASSERT_TRUE(Decode(bytes, record).ok());
  EXPECT_EQ(record.num, 1u);
}

TEST(MapToRecordRule4, FieldsAreConvertedInDeclaredOrderSoAnEarlierFieldIsSetBeforeAFailure) {
  // "denom" comes first in the map, but "num" is declared first.
  const Bytes bytes = Cat({{0x82}, Key("denom"), {0xA1, 'x'}, Key("num"), {0x05}});
  weftcore::FrameRateProperty record = FrameRate(7, 9);
  ExpectFailure(Decode(bytes, record), 8, TypeMismatchMessage(bytes.size()));
  EXPECT_TRUE(record == FrameRate(5, 9));
}

TEST(MapToRecordRule4, VectorsAreResizedToTheArrayLength) {
  ZeltoMesh::ZeltoMeshMaskSettingsProperty_ record;
  record.maskInfo.resize(5);
  record.maskInfo[0].name = "old";
  const Bytes bytes = Cat({{0x81}, Key("maskInfo"), {0x91, 0x81}, Key("name"), {0xA3},
                           Raw("new")});
  ASSERT_TRUE(Decode(bytes, record).ok());
  ASSERT_EQ(record.maskInfo.size(), 1u);
  EXPECT_EQ(record.maskInfo[0].name, "new");
}

TEST(MapToRecordRule4, TypeMismatchesFailWithCause8) {
  struct Case {
    const char* what;
    Bytes bytes;
  };
  const Case frameRateCases[] = {
      {"uint32 from a negative integer", Cat({{0x81}, Key("num"), {0xFF}})},
      {"uint32 from 2^32", Cat({{0x81}, Key("num"), {0xCF, 0, 0, 0, 1, 0, 0, 0, 0}})},
      {"uint32 from a string", Cat({{0x81}, Key("num"), {0xA1, '1'}})},
      {"uint32 from a float", Cat({{0x81}, Key("num"), {0xCA, 0x3F, 0x80, 0, 0}})},
      {"uint32 from nil", Cat({{0x81}, Key("num"), {0xC0}})},
      {"uint32 from a boolean", Cat({{0x81}, Key("num"), {0xC3}})},
  };
  for (const Case& c : frameRateCases) {
    weftcore::FrameRateProperty record;
    ExpectFailure(Decode(c.bytes, record), 8, TypeMismatchMessage(c.bytes.size()));
  }
  const Case algorithmCases[] = {
      {"int32 from 2^31", Cat({{0x81}, Key("meshReductionLevel"), {0xCE, 0x80, 0, 0, 0}})},
      {"int32 from below -2^31",
       Cat({{0x81}, Key("meshReductionLevel"), {0xD3, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F, 0xFF, 0xFF, 0xFF}})},
  };
  for (const Case& c : algorithmCases) {
    ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_ record;
    ExpectFailure(Decode(c.bytes, record), 8, TypeMismatchMessage(c.bytes.size()));
  }
}

TEST(MapToRecordRule4, BoolFieldCarryingAnIntegerFails) {
  const Bytes bytes = Cat({{0x81}, Key("processDepth"), {0x01}});
  ZeltoTof::ZeltoTofProcessTargetsProperty_ record;
  ExpectFailure(Decode(bytes, record), 8, TypeMismatchMessage(bytes.size()));
}

TEST(MapToRecordRule4, StringFieldCarryingAnIntegerFails) {
  const Bytes bytes = Cat({{0x81}, Key("cameraId"), {0x07}});
  ZeltoTof::ZeltoTofCamera2ConfigurationProperty_ record;
  ExpectFailure(Decode(bytes, record), 8, TypeMismatchMessage(bytes.size()));
}

TEST(MapToRecordRule4, NestedRecordCarryingAnArrayFails) {
  const Bytes bytes = Cat({{0x81}, Key("intrinsics"), {0x90}});
  ZeltoTof::ZeltoTofCamera2ConfigurationProperty_ record;
  ExpectFailure(Decode(bytes, record), 8, TypeMismatchMessage(bytes.size()));
}

TEST(MapToRecordRule4, RunModeAsNegativeOrAbove255OrNonIntegerFails) {
  const Bytes values[] = {{0xFF}, {0xCD, 0x01, 0x00}, {0xCA, 0x3F, 0x80, 0x00, 0x00}, {0xC2}};
  for (const Bytes& value : values) {
    const Bytes bytes = Cat({{0x81}, Key("runMode"), value});
    Zelto::ZeltoRuntimeSettingsProperty_ record;
    ExpectFailure(Decode(bytes, record), 8, TypeMismatchMessage(bytes.size()));
  }
}

TEST(MapToRecordRule4, MaskDataAddressAsAStringFails) {
  const Bytes bytes = Cat({{0x81}, Key("data"), {0x91, 0x81}, Key("maskDataAddress"),
                           {0xA2, '1', '2'}});
  ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_ record;
  ExpectFailure(Decode(bytes, record), 8, TypeMismatchMessage(bytes.size()));
}

TEST(MapToRecordRule4, DataAsAnythingOtherThanAnArrayOfMapsFails) {
  const Bytes values[] = {{0x80}, {0x91, 0x01}, {0x91, 0x90}, {0xC0}, {0xA0}};
  for (const Bytes& value : values) {
    const Bytes bytes = Cat({{0x81}, Key("data"), value});
    ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_ record;
    ExpectFailure(Decode(bytes, record), 8, TypeMismatchMessage(bytes.size()));
  }
}

TEST(MapToRecordRule4, UnsignedKeyedMapNeedsAMapWithUnsignedKeys) {
  const Bytes values[] = {{0x90}, Cat({{0x81}, Key("x"), {0x80}}), {0x81, 0xFF, 0x80}};
  for (const Bytes& value : values) {
    const Bytes bytes = Cat({{0x81}, Key("channels"), value});
    weftcore::ChannelInfoProperty record;
    ExpectFailure(Decode(bytes, record), 8, TypeMismatchMessage(bytes.size()));
  }
}

// Like a vector, a present map is converted whole: the caller's entries go.
TEST(MapToRecordRule4, UnsignedKeyedMapReplacesTheCallersEntries) {
  weftcore::ChannelInfoProperty record;
  record.channels[3].raw_data_type = "caller";
  const Bytes bytes = Cat({{0x81}, Key("channels"), {0x81, 0x00, 0x81}, Key("description"),
                           {0xA1, 'd'}});
  ASSERT_TRUE(Decode(bytes, record).ok());
  ASSERT_EQ(record.channels.size(), 1u);
  EXPECT_EQ(record.channels.count(3), 0u);
  EXPECT_EQ(record.channels[0].description, "d");
  EXPECT_EQ(record.channels[0].raw_data_type, "");
}

TEST(MapToRecordRule5, AbsentKeysKeepTheValuesTheRecordHadBefore) {
  weftcore::FrameRateProperty record = FrameRate(7, 9);
  ASSERT_TRUE(Decode(Cat({{0x81}, Key("num"), {0x01}}), record).ok());
  EXPECT_TRUE(record == FrameRate(1, 9));
}

TEST(MapToRecordRule5, AbsentKeysOfNestedRecordsKeepTheirValuesToo) {
  ZeltoTof::ZeltoTofCalibrationSettingsProperty_ record;
  record.T = {1.0f, 2.0f, 3.0f};
  record.colorWidth = 11;
  ASSERT_TRUE(Decode(Cat({{0x81}, Key("T"), {0x81}, Key("y"), {0xCA, 0x40, 0x80, 0, 0}}), record)
                  .ok());
  EXPECT_EQ(record.T.x, 1.0f);
  EXPECT_EQ(record.T.y, 4.0f);
  EXPECT_EQ(record.T.z, 3.0f);
  EXPECT_EQ(record.colorWidth, 11);
}

TEST(MapToRecordRule6, KeysThatNoFieldDeclaresAreIgnored) {
  const Bytes bytes = Cat({{0x84}, Key("rate"), {0x92, 0x01, 0x02}, Key("num"), {0x01},
                           Key("Denom"), {0x09}, Key("denom"), {0x03}});
  weftcore::FrameRateProperty record;
  ASSERT_TRUE(Decode(bytes, record).ok());
  EXPECT_TRUE(record == FrameRate(1, 3));
}

}  // namespace
