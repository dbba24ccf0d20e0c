// Golden bytes of ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_
// and ZeltoSegmentationMaskDataProperty_ (Part 4.3): uint 64 addresses and
// time stamps, a 256-byte name (str 16).
#include "properties/golden.h"

namespace {

using zelto_test::Bytes;
using zelto_test::Cat;
using zelto_test::ExpectGolden;
using zelto_test::Key;
using zelto_test::Raw;

using ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_;
using ZeltoSegmentation::ZeltoSegmentationMaskDataProperty_;

const std::string kName256(256, 'q');

ZeltoSegmentationMaskDataProperty_ Person() {
  ZeltoSegmentationMaskDataProperty_ mask;
  mask.name = "person";
  mask.maskDataAddress = 0x123456789AULL;
  mask.maskDataSize = 65536;
  mask.maskDataWidth = 256;
  mask.maskDataHeight = 200;
  mask.maskDataTimestamp = 18446744073709551615ULL;
  mask.isColorSource = true;
  mask.isInvertMask = false;
  return mask;
}

Bytes PersonBytes() {
  return Cat({{0x88},
              Key("name"), {0xA6}, Raw("person"),
              Key("maskDataAddress"), {0xCF, 0x00, 0x00, 0x00, 0x12, 0x34, 0x56, 0x78, 0x9A},
              Key("maskDataSize"), {0xCE, 0x00, 0x01, 0x00, 0x00},
              Key("maskDataWidth"), {0xCD, 0x01, 0x00},
              Key("maskDataHeight"), {0xCC, 0xC8},
              Key("maskDataTimestamp"), {0xCF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF},
              Key("isColorSource"), {0xC3},
              Key("isInvertMask"), {0xC2}});
}

ZeltoSegmentationMaskDataProperty_ LongName() {
  ZeltoSegmentationMaskDataProperty_ mask;
  mask.name = kName256;
  mask.maskDataAddress = 4294967296ULL;
  mask.maskDataSize = 4294967295ULL;
  mask.maskDataWidth = 127;
  mask.maskDataHeight = 65535;
  mask.maskDataTimestamp = 1700000000000ULL;
  mask.isColorSource = false;
  mask.isInvertMask = true;
  return mask;
}

Bytes LongNameBytes() {
  return Cat({{0x88},
              Key("name"), {0xDA, 0x01, 0x00}, Raw(kName256),
              Key("maskDataAddress"), {0xCF, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00},
              Key("maskDataSize"), {0xCE, 0xFF, 0xFF, 0xFF, 0xFF},
              Key("maskDataWidth"), {0x7F},
              Key("maskDataHeight"), {0xCD, 0xFF, 0xFF},
              Key("maskDataTimestamp"), {0xCF, 0x00, 0x00, 0x01, 0x8B, 0xCF, 0xE5, 0x68, 0x00},
              Key("isColorSource"), {0xC2},
              Key("isInvertMask"), {0xC3}});
}

Bytes ZeroBytes() {
  return Cat({{0x88},
              Key("name"), {0xA0},
              Key("maskDataAddress"), {0x00},
              Key("maskDataSize"), {0x00},
              Key("maskDataWidth"), {0x00},
              Key("maskDataHeight"), {0x00},
              Key("maskDataTimestamp"), {0x00},
              Key("isColorSource"), {0xC2},
              Key("isInvertMask"), {0xC2}});
}

TEST(GoldenMaskDataList, ThreeMasksInVectorOrder) {
  ZeltoSegmentationMaskDataListProperty_ record;
  record.data = {Person(), ZeltoSegmentationMaskDataProperty_{}, LongName()};
  const Bytes expected =
      Cat({{0x81}, Key("data"), {0x93}, PersonBytes(), ZeroBytes(), LongNameBytes()});
  ExpectGolden(record, expected);
}

TEST(GoldenMaskDataList, EmptyVectorIsAnEmptyArray) {
  ExpectGolden(ZeltoSegmentationMaskDataListProperty_{},
               Bytes{0x81, 0xA4, 'd', 'a', 't', 'a', 0x90});
}

TEST(GoldenMaskDataList, MaskDataAlone) {
  ExpectGolden(Person(), PersonBytes());
  ExpectGolden(LongName(), LongNameBytes());
}

}  // namespace
