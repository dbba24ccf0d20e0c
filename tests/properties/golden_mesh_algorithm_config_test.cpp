// Golden bytes of ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_ (Part 2.2).
#include "properties/golden.h"

namespace {

using zelto_test::Bytes;
using zelto_test::Cat;
using zelto_test::ExpectGolden;
using zelto_test::Key;

TEST(GoldenMeshAlgorithmConfig, FullyPopulatedWithNegativeFixintAndUint16) {
  ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_ record;
  record.meshReductionLevel = -5;
  record.resetTrianglePeriod = 300;
  const Bytes expected = Cat({{0x82},
                              Key("meshReductionLevel"), {0xFB},
                              Key("resetTrianglePeriod"), {0xCD, 0x01, 0x2C}});
  ExpectGolden(record, expected);
}

TEST(GoldenMeshAlgorithmConfig, Int32ExtremesUseInt32AndUint32) {
  ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_ record;
  record.meshReductionLevel = 2147483647;
  record.resetTrianglePeriod = -70000;
  const Bytes expected = Cat({{0x82},
                              Key("meshReductionLevel"), {0xCE, 0x7F, 0xFF, 0xFF, 0xFF},
                              Key("resetTrianglePeriod"), {0xD2, 0xFF, 0xFE, 0xEE, 0x90}});
  ExpectGolden(record, expected);
}

TEST(GoldenMeshAlgorithmConfig, SourceDefaults0And4) {
  ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_ record;
  record.resetTrianglePeriod = 4;
  const Bytes expected =
      Cat({{0x82}, Key("meshReductionLevel"), {0x00}, Key("resetTrianglePeriod"), {0x04}});
  ExpectGolden(record, expected);
}

}  // namespace
