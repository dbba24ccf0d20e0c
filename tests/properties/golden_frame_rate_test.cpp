// Golden bytes of weftcore::FrameRateProperty (Part 4.2).
#include "properties/golden.h"

namespace {

using zelto_test::Bytes;
using zelto_test::Cat;
using zelto_test::ExpectGolden;
using zelto_test::Key;

weftcore::FrameRateProperty FrameRate(uint32_t num, uint32_t denom) {
  weftcore::FrameRateProperty record;
  record.num = num;
  record.denom = denom;
  return record;
}

TEST(GoldenFrameRate, ThirtyOverOneIsTheThirteenBytesOfPart41) {
  const Bytes expected = {0x82, 0xA3, 'n', 'u', 'm', 0x1E, 0xA5, 'd', 'e', 'n', 'o', 'm', 0x01};
  ASSERT_EQ(expected.size(), 13u);
  ExpectGolden(FrameRate(30, 1), expected);
}

TEST(GoldenFrameRate, Uint32MaximumAndUint32Form) {
  ExpectGolden(FrameRate(4294967295u, 65536),
               Cat({{0x82}, Key("num"), {0xCE, 0xFF, 0xFF, 0xFF, 0xFF},
                    Key("denom"), {0xCE, 0x00, 0x01, 0x00, 0x00}}));
}

TEST(GoldenFrameRate, Uint16AndUint8Forms) {
  ExpectGolden(FrameRate(1000, 128),
               Cat({{0x82}, Key("num"), {0xCD, 0x03, 0xE8}, Key("denom"), {0xCC, 0x80}}));
}

}  // namespace
