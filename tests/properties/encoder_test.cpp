// Part 4.1, MsgPackEncoder::Push.
#include "properties/decode_expectations.h"
#include "properties/golden.h"

namespace {

using weftcore::serialize::MsgPackEncoder;
using weftcore::serialize::SerializedBuffer;
using zelto_test::Bytes;
using zelto_test::Cat;
using zelto_test::ExpectFailure;
using zelto_test::Hex;

TEST(MsgPackEncoderPush, NullBufferIsBufferIsNullCause2) {
  MsgPackEncoder encoder(nullptr);
  ExpectFailure(encoder.Push(weftcore::FrameRateProperty{}), 2, "buffer is null");
}

TEST(MsgPackEncoderPush, SuccessiveRecordsAreAppendedToTheBuffer) {
  SerializedBuffer buffer;
  MsgPackEncoder encoder(&buffer);
  weftcore::FrameRateProperty frameRate;
  frameRate.num = 30;
  frameRate.denom = 1;
  Zelto::ZeltoLogLevelProperty_ logLevel;
  logLevel.logLevel = ZeltoLogger::Info;
  ASSERT_TRUE(encoder.Push(frameRate).ok());
  ASSERT_TRUE(encoder.Push(logLevel).ok());
  const Bytes expected = {0x82, 0xA3, 'n', 'u', 'm', 0x1E, 0xA5, 'd', 'e', 'n', 'o', 'm', 0x01,
                          0x81, 0xA8, 'l', 'o', 'g', 'L', 'e', 'v', 'e', 'l', 0x04};
  EXPECT_EQ(Hex(Bytes(buffer.data(), buffer.data() + buffer.size())), Hex(expected));
}

}  // namespace
