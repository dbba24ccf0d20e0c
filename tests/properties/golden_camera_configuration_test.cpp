// Golden bytes of ZeltoTof::ZeltoTofCamera2ConfigurationProperty_ with its
// ZeltoTofCamera2IntrinsicsProperty_ (Part 4.3).
#include "properties/golden.h"

namespace {

using zelto_test::Bytes;
using zelto_test::Cat;
using zelto_test::ExpectGolden;
using zelto_test::F32;
using zelto_test::Key;
using zelto_test::Raw;

const std::string kName31(31, 'c');
const std::string kName32(32, 'N');

ZeltoTof::ZeltoTofCamera2IntrinsicsProperty_ Intrinsics() {
  return {1.5f, -2.25f, 0.5f, 100.0f, 0.1f, -0.5f, 0.25f, -0.0f, 1.0f};
}

Bytes IntrinsicsBytes() {
  return Cat({{0x89},
              Key("fx"), F32(0x3FC00000), Key("fy"), F32(0xC0100000),
              Key("cx"), F32(0x3F000000), Key("cy"), F32(0x42C80000),
              Key("k1"), F32(0x3DCCCCCD), Key("k2"), F32(0xBF000000),
              Key("k3"), F32(0x3E800000), Key("p1"), F32(0x80000000),
              Key("p2"), F32(0x3F800000)});
}

TEST(GoldenCameraConfiguration, FullyPopulatedWithStringsOf0And31And32Bytes) {
  ZeltoTof::ZeltoTofCamera2ConfigurationProperty_ record;
  record.isCalibrated = true;
  record.cameraId = "";
  record.colorCameraId = kName31;
  record.uid = -70000;
  record.width = 640;
  record.height = 480;
  record.frameRate = 30.0f;
  record.unambiguousRange = 5000.0f;
  record.lensFacing = -33;
  record.intrinsics = Intrinsics();
  record.name = kName32;
  record.isDepthPrivate = false;
  record.isFusion = true;
  record.fusionSourceWidth = 65536;
  record.fusionSourceHeight = -32768;
  const Bytes expected = Cat({
      {0x8F},
      Key("isCalibrated"), {0xC3},
      Key("cameraId"), {0xA0},
      Key("colorCameraId"), {0xBF}, Raw(kName31),
      Key("uid"), {0xD2, 0xFF, 0xFE, 0xEE, 0x90},
      Key("width"), {0xCD, 0x02, 0x80},
      Key("height"), {0xCD, 0x01, 0xE0},
      Key("frameRate"), F32(0x41F00000),
      Key("unambiguousRange"), F32(0x459C4000),
      Key("lensFacing"), {0xD0, 0xDF},
      Key("intrinsics"), IntrinsicsBytes(),
      Key("name"), {0xD9, 0x20}, Raw(kName32),
      Key("isDepthPrivate"), {0xC2},
      Key("isFusion"), {0xC3},
      Key("fusionSourceWidth"), {0xCE, 0x00, 0x01, 0x00, 0x00},
      Key("fusionSourceHeight"), {0xD1, 0x80, 0x00},
  });
  ExpectGolden(record, expected);
}

TEST(GoldenCameraConfiguration, IntrinsicsAlone) { ExpectGolden(Intrinsics(), IntrinsicsBytes()); }

}  // namespace
