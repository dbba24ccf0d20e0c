// Golden bytes of ZeltoTof::ZeltoTofProcessTargetsProperty_ (Part 4.3).
#include "properties/golden.h"

namespace {

using zelto_test::Bytes;
using zelto_test::Cat;
using zelto_test::ExpectGolden;
using zelto_test::Key;

TEST(GoldenProcessTargets, TrueFalseTrue) {
  ZeltoTof::ZeltoTofProcessTargetsProperty_ record;
  record.processDepth = true;
  record.processConfidence = false;
  record.processPointCloud = true;
  ExpectGolden(record, Cat({{0x83}, Key("processDepth"), {0xC3},
                            Key("processConfidence"), {0xC2},
                            Key("processPointCloud"), {0xC3}}));
}

TEST(GoldenProcessTargets, DefaultRecordWritesEveryField) {
  ExpectGolden(ZeltoTof::ZeltoTofProcessTargetsProperty_{},
               Cat({{0x83}, Key("processDepth"), {0xC2}, Key("processConfidence"), {0xC2},
                    Key("processPointCloud"), {0xC2}}));
}

}  // namespace
