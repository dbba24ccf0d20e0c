// Golden bytes of ZeltoTof::ZeltoTofCalibrationSettingsProperty_ with its
// nested InternalParameter_, Matrix_ and Vector_ (Part 4.3).
#include "properties/golden.h"

namespace {

using zelto_test::Bytes;
using zelto_test::Cat;
using zelto_test::ExpectGolden;
using zelto_test::F32;
using zelto_test::Key;

ZeltoTof::ZeltoTofCalibrationSettingsProperty_ Calibration() {
  ZeltoTof::ZeltoTofCalibrationSettingsProperty_ record;
  record.colorWidth = 1920;
  record.colorHeight = -1;
  record.depthWidth = 70000;
  record.depthHeight = -200;
  record.isCalibrated = true;
  record.c = {1.5f, -2.25f, 0.5f, 100.0f};
  record.d = {0.0f, -0.0f, 0.1f, 5000.0f};
  record.R = {1.0f, 0.0f, -1.0f, 0.25f, 2.0f, 0.75f, -0.5f, 3.0f, 4.0f};
  record.T = {10.0f, -3.5f, 30.0f};
  return record;
}

TEST(GoldenCalibration, FullyPopulatedWithNestedRecordsAndFloat32Only) {
  const Bytes expected = Cat({
      {0x89},
      Key("colorWidth"), {0xCD, 0x07, 0x80},
      Key("colorHeight"), {0xFF},
      Key("depthWidth"), {0xCE, 0x00, 0x01, 0x11, 0x70},
      Key("depthHeight"), {0xD1, 0xFF, 0x38},
      Key("isCalibrated"), {0xC3},
      Key("c"), {0x84},
      Key("fx"), F32(0x3FC00000), Key("fy"), F32(0xC0100000),
      Key("cx"), F32(0x3F000000), Key("cy"), F32(0x42C80000),
      Key("d"), {0x84},
      Key("fx"), F32(0x00000000), Key("fy"), F32(0x80000000),
      Key("cx"), F32(0x3DCCCCCD), Key("cy"), F32(0x459C4000),
      Key("R"), {0x89},
      Key("a"), F32(0x3F800000), Key("b"), F32(0x00000000), Key("c"), F32(0xBF800000),
      Key("d"), F32(0x3E800000), Key("e"), F32(0x40000000), Key("f"), F32(0x3F400000),
      Key("g"), F32(0xBF000000), Key("h"), F32(0x40400000), Key("i"), F32(0x40800000),
      Key("T"), {0x83},
      Key("x"), F32(0x41200000), Key("y"), F32(0xC0600000), Key("z"), F32(0x41F00000),
  });
  ExpectGolden(Calibration(), expected);
}

TEST(GoldenCalibration, NestedRecordsAlone) {
  ExpectGolden(ZeltoTof::InternalParameter_{1.5f, -2.25f, 0.5f, 100.0f},
               Cat({{0x84}, Key("fx"), F32(0x3FC00000), Key("fy"), F32(0xC0100000),
                    Key("cx"), F32(0x3F000000), Key("cy"), F32(0x42C80000)}));
  ExpectGolden(ZeltoTof::Vector_{10.0f, -3.5f, 30.0f},
               Cat({{0x83}, Key("x"), F32(0x41200000), Key("y"), F32(0xC0600000),
                    Key("z"), F32(0x41F00000)}));
  ExpectGolden(ZeltoTof::Matrix_{},
               Cat({{0x89}, Key("a"), F32(0), Key("b"), F32(0), Key("c"), F32(0),
                    Key("d"), F32(0), Key("e"), F32(0), Key("f"), F32(0),
                    Key("g"), F32(0), Key("h"), F32(0), Key("i"), F32(0)}));
}

}  // namespace
