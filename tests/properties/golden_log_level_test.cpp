// Golden bytes of Zelto::ZeltoLogLevelProperty_ (Part 4.2): one signed
// 32-bit enumeration field, always in its shortest integer form.
#include "properties/golden.h"

namespace {

using zelto_test::Bytes;
using zelto_test::Cat;
using zelto_test::ExpectGolden;
using zelto_test::Key;

Zelto::ZeltoLogLevelProperty_ LogLevel(int32_t value) {
  Zelto::ZeltoLogLevelProperty_ record;
  record.logLevel = static_cast<ZeltoLogger::LogLevel>(value);
  return record;
}

Bytes LogLevelBytes(const Bytes& value) { return Cat({{0x81}, Key("logLevel"), value}); }

TEST(GoldenLogLevel, Level4IsTheElevenBytesOfPart41) {
  const Bytes expected = {0x81, 0xA8, 'l', 'o', 'g', 'L', 'e', 'v', 'e', 'l', 0x04};
  ExpectGolden(LogLevel(4), expected);
}

TEST(GoldenLogLevel, EveryShortestIntegerForm) {
  ExpectGolden(LogLevel(0), LogLevelBytes({0x00}));
  ExpectGolden(LogLevel(127), LogLevelBytes({0x7F}));
  ExpectGolden(LogLevel(128), LogLevelBytes({0xCC, 0x80}));
  ExpectGolden(LogLevel(255), LogLevelBytes({0xCC, 0xFF}));
  ExpectGolden(LogLevel(256), LogLevelBytes({0xCD, 0x01, 0x00}));
  ExpectGolden(LogLevel(65535), LogLevelBytes({0xCD, 0xFF, 0xFF}));
  ExpectGolden(LogLevel(65536), LogLevelBytes({0xCE, 0x00, 0x01, 0x00, 0x00}));
  ExpectGolden(LogLevel(2147483647), LogLevelBytes({0xCE, 0x7F, 0xFF, 0xFF, 0xFF}));
  ExpectGolden(LogLevel(-1), LogLevelBytes({0xFF}));
  ExpectGolden(LogLevel(-32), LogLevelBytes({0xE0}));
  ExpectGolden(LogLevel(-33), LogLevelBytes({0xD0, 0xDF}));
  ExpectGolden(LogLevel(-128), LogLevelBytes({0xD0, 0x80}));
  ExpectGolden(LogLevel(-129), LogLevelBytes({0xD1, 0xFF, 0x7F}));
  ExpectGolden(LogLevel(-32768), LogLevelBytes({0xD1, 0x80, 0x00}));
  ExpectGolden(LogLevel(-32769), LogLevelBytes({0xD2, 0xFF, 0xFF, 0x7F, 0xFF}));
  ExpectGolden(LogLevel(-2147483647 - 1), LogLevelBytes({0xD2, 0x80, 0x00, 0x00, 0x00}));
}

TEST(GoldenLogLevel, DefaultRecordHoldsZero) {
  ExpectGolden(Zelto::ZeltoLogLevelProperty_{}, LogLevelBytes({0x00}));
}

}  // namespace
