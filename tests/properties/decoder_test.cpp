// Part 4.1, MsgPackDecoder::Pop: failures, offsets, and the edge cases of
// Part 4.1 that concern decoding.
#include "properties/decode_expectations.h"
#include "properties/golden.h"

namespace {

using weftcore::serialize::MsgPackDecoder;
using zelto_test::Bytes;
using zelto_test::Cat;
using zelto_test::Decode;
using zelto_test::ExpectFailure;
using zelto_test::Key;
using zelto_test::TypeMismatchMessage;

const Bytes kFrameRate30 = {0x82, 0xA3, 'n', 'u', 'm', 0x1E, 0xA5, 'd', 'e', 'n', 'o', 'm', 0x01};

TEST(Part41EdgeCases, MapWithExtraKeysDecodes) {
  const Bytes bytes = Cat({{0x83}, Key("num"), {0x1E}, Key("extra"), {0xC3}, Key("denom"), {0x01}});
  weftcore::FrameRateProperty record;
  ASSERT_TRUE(Decode(bytes, record).ok());
  EXPECT_EQ(record.num, 30u);
  EXPECT_EQ(record.denom, 1u);
}

TEST(Part41EdgeCases, MapWithMissingKeysDecodesWithDefaults) {
  ZeltoTof::ZeltoTofCamera2ConfigurationProperty_ record;
  ASSERT_TRUE(Decode(Cat({{0x81}, Key("width"), {0xCD, 0x02, 0x80}}), record).ok());
  ZeltoTof::ZeltoTofCamera2ConfigurationProperty_ expected;
  expected.width = 640;
  EXPECT_TRUE(record == expected);
}

TEST(Part41EdgeCases, EmptyMap0x80DecodesToADefaultRecord) {
  ZeltoTof::ZeltoTofCalibrationSettingsProperty_ calibration;
  ASSERT_TRUE(Decode(Bytes{0x80}, calibration).ok());
  EXPECT_TRUE(calibration == ZeltoTof::ZeltoTofCalibrationSettingsProperty_{});
  ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_ list;
  ASSERT_TRUE(Decode(Bytes{0x80}, list).ok());
  EXPECT_TRUE(list.data.empty());
}

TEST(Part41EdgeCases, TopLevelArrayFailsWithCause8) {
  const Bytes bytes = {0x92, 0x1E, 0x01};
  weftcore::FrameRateProperty record;
  ExpectFailure(Decode(bytes, record), 8, TypeMismatchMessage(3));
}

TEST(Part41EdgeCases, MapWithIntegerKeyFailsWithCause8) {
  const Bytes bytes = {0x81, 0x01, 0x1E};
  weftcore::FrameRateProperty record;
  ExpectFailure(Decode(bytes, record), 8, TypeMismatchMessage(3));
}

TEST(Part41EdgeCases, BoolFieldCarryingAnIntegerFailsWithCause8) {
  const Bytes bytes = Cat({{0x81}, Key("isCalibrated"), {0x01}});
  ZeltoTof::ZeltoTofCalibrationSettingsProperty_ record;
  ExpectFailure(Decode(bytes, record), 8, TypeMismatchMessage(bytes.size()));
}

TEST(Part41EdgeCases, BytesAfterTheFirstCompleteObjectAreIgnoredAndTheOffsetStopsAfterTheObject) {
  const Bytes bytes = Cat({kFrameRate30, {0xC1, 0xFF, 0x00}});
  MsgPackDecoder decoder(bytes.data(), bytes.size());
  weftcore::FrameRateProperty record;
  ASSERT_TRUE(decoder.Pop(record).ok());
  EXPECT_EQ(record.num, 30u);
  EXPECT_EQ(record.denom, 1u);
  EXPECT_EQ(decoder.offset(), 13u);
}

TEST(Part41EdgeCases, TruncatedMapFailsWithCause8AndCurrentAtTheEndShowingByte0x00) {
  const Bytes bytes(kFrameRate30.begin(), kFrameRate30.begin() + 8);
  MsgPackDecoder decoder(bytes.data(), bytes.size());
  weftcore::FrameRateProperty record;
  ExpectFailure(decoder.Pop(record), 8,
                "what=insufficient bytes, buffer_size=8, offset=0, current=8(0x00)");
  EXPECT_EQ(decoder.offset(), 0u);
}

TEST(MsgPackDecoderPop, NullInputIsBufferIsNullCause2) {
  MsgPackDecoder decoder(nullptr, 13);
  weftcore::FrameRateProperty record;
  ExpectFailure(decoder.Pop(record), 2, "buffer is null");
}

TEST(MsgPackDecoderPop, EmptyInputIsEndOfBufferCause11) {
  const uint8_t byte = 0x80;
  MsgPackDecoder decoder(&byte, 0);
  weftcore::FrameRateProperty record;
  ExpectFailure(decoder.Pop(record), 11, "end of buffer: size=0, offset=0");
}

TEST(MsgPackDecoderPop, SuccessivePopsReadSuccessiveObjectsThenReportTheEnd) {
  const Bytes second = {0x82, 0xA3, 'n', 'u', 'm', 0x0F, 0xA5, 'd', 'e', 'n', 'o', 'm', 0x02};
  const Bytes bytes = Cat({kFrameRate30, second});
  MsgPackDecoder decoder(bytes.data(), bytes.size());
  weftcore::FrameRateProperty record;
  ASSERT_TRUE(decoder.Pop(record).ok());
  EXPECT_EQ(record.num, 30u);
  ASSERT_TRUE(decoder.Pop(record).ok());
  EXPECT_EQ(record.num, 15u);
  EXPECT_EQ(record.denom, 2u);
  EXPECT_EQ(decoder.offset(), 26u);
  ExpectFailure(decoder.Pop(record), 11, "end of buffer: size=26, offset=26");
}

TEST(MsgPackDecoderPop, OffsetPastTheEndIsEndOfBuffer) {
  MsgPackDecoder decoder(kFrameRate30.data(), kFrameRate30.size(), 20);
  weftcore::FrameRateProperty record;
  ExpectFailure(decoder.Pop(record), 11, "end of buffer: size=13, offset=20");
}

TEST(MsgPackDecoderPop, StartingOffsetIsReportedAndCurrentIsAbsolute) {
  const Bytes bytes = Cat({kFrameRate30, {0x92, 0x01, 0x02, 0xC3}});
  MsgPackDecoder decoder(bytes.data(), bytes.size(), 13);
  weftcore::FrameRateProperty record;
  ExpectFailure(decoder.Pop(record), 8,
                "what=std::bad_cast, buffer_size=17, offset=13, current=16(0xc3)");
  EXPECT_EQ(decoder.offset(), 13u);
}

TEST(MsgPackDecoderPop, FailedConversionWithTrailingBytesShowsTheNextByte) {
  const Bytes bytes = Cat({{0x81}, Key("num"), {0xA1, 'x'}, {0xAB}});
  weftcore::FrameRateProperty record;
  ExpectFailure(Decode(bytes, record), 8,
                "what=std::bad_cast, buffer_size=8, offset=0, current=7(0xab)");
}

TEST(MsgPackDecoderPop, NeverUsedByte0xC1IsAParseErrorAtTheOffset) {
  const Bytes bytes = {0xC1, 0x00};
  weftcore::FrameRateProperty record;
  ExpectFailure(Decode(bytes, record), 8,
                "what=parse error, buffer_size=2, offset=0, current=0(0xc1)");
}

TEST(MsgPackDecoderPop, TruncatedNestedStringReportsTheEnd) {
  const Bytes bytes = Cat({{0x81}, Key("name"), {0xA6, 'p', 'e'}});
  ZeltoSegmentation::ZeltoSegmentationMaskInfo_ record;
  ExpectFailure(Decode(bytes, record), 8,
                "what=insufficient bytes, buffer_size=9, offset=0, current=9(0x00)");
}

// A count larger than the bytes left cannot be honest; it is refused before
// anything is allocated for it.
TEST(MsgPackDecoderPop, ArrayCountBeyondTheInputFailsWithoutAllocating) {
  const Bytes bytes = Cat({{0x81}, Key("data"), {0xDD, 0xFF, 0xFF, 0xFF, 0xFF}});
  ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_ record;
  const weftcore::Status status = Decode(bytes, record);
  ASSERT_TRUE(status.IsError());
  EXPECT_EQ(status.cause(), 8);
  EXPECT_EQ(status.message().rfind("what=array size overflow, buffer_size=11, offset=0, current=", 0),
            0u)
      << status.message();
}

TEST(MsgPackDecoderPop, StringFieldsAreCopiesThatOutliveTheInput) {
  ZeltoSegmentation::ZeltoSegmentationMaskInfo_ record;
  {
    const Bytes bytes = Cat({{0x81}, Key("name"), {0xA6, 'p', 'e', 'r', 's', 'o', 'n'}});
    ASSERT_TRUE(Decode(bytes, record).ok());
  }
  EXPECT_EQ(record.name, "person");
}

}  // namespace
