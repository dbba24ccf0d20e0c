// Golden bytes of ZeltoMesh::ZeltoMeshMaskSettingsProperty_ and
// ZeltoSegmentation::ZeltoSegmentationMaskInfo_ (Part 3.4).
#include "properties/golden.h"

namespace {

using zelto_test::Bytes;
using zelto_test::Cat;
using zelto_test::ExpectGolden;
using zelto_test::Key;
using zelto_test::Raw;

using ZeltoSegmentation::ZeltoSegmentationMaskInfo_;

ZeltoSegmentationMaskInfo_ MaskInfo(const std::string& name, bool color, bool invert) {
  ZeltoSegmentationMaskInfo_ info;
  info.name = name;
  info.isColorSource = color;
  info.isInvertMask = invert;
  return info;
}

TEST(GoldenMaskInfo, NameAndBothFlags) {
  const Bytes expected = Cat({{0x83},
                              Key("name"), {0xA6}, Raw("person"),
                              Key("isColorSource"), {0xC3},
                              Key("isInvertMask"), {0xC2}});
  ExpectGolden(MaskInfo("person", true, false), expected);
}

TEST(GoldenMaskSettings, ThreeMaskInfosAndThreshold200AsUint8) {
  const std::string name31(31, 'n');
  ZeltoMesh::ZeltoMeshMaskSettingsProperty_ record;
  record.enabled = true;
  record.maskInfo = {MaskInfo("person", true, false), MaskInfo("", false, true),
                     MaskInfo(name31, true, true)};
  record.maskThreshold = 200;
  const Bytes expected = Cat({{0x83},
                              Key("enabled"), {0xC3},
                              Key("maskInfo"), {0x93},
                              {0x83}, Key("name"), {0xA6}, Raw("person"),
                              Key("isColorSource"), {0xC3}, Key("isInvertMask"), {0xC2},
                              {0x83}, Key("name"), {0xA0},
                              Key("isColorSource"), {0xC2}, Key("isInvertMask"), {0xC3},
                              {0x83}, Key("name"), {0xBF}, Raw(name31),
                              Key("isColorSource"), {0xC3}, Key("isInvertMask"), {0xC3},
                              Key("maskThreshold"), {0xCC, 0xC8}});
  ExpectGolden(record, expected);
}

TEST(GoldenMaskSettings, EmptyMaskInfoAndSourceDefaultThreshold55) {
  ZeltoMesh::ZeltoMeshMaskSettingsProperty_ record;
  record.maskThreshold = 55;
  const Bytes expected = Cat({{0x83},
                              Key("enabled"), {0xC2},
                              Key("maskInfo"), {0x90},
                              Key("maskThreshold"), {0x37}});
  ExpectGolden(record, expected);
}

TEST(GoldenMaskSettings, Threshold127IsFixintAnd128And255AreUint8) {
  ZeltoMesh::ZeltoMeshMaskSettingsProperty_ record;
  const std::pair<uint8_t, Bytes> cases[] = {
      {127, {0x7F}}, {128, {0xCC, 0x80}}, {255, {0xCC, 0xFF}}, {0, {0x00}}};
  for (const auto& [threshold, value] : cases) {
    record.maskThreshold = threshold;
    ExpectGolden(record, Cat({{0x83}, Key("enabled"), {0xC2}, Key("maskInfo"), {0x90},
                              Key("maskThreshold"), value}));
  }
}

}  // namespace
