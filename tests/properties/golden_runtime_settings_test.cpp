// Golden bytes of Zelto::ZeltoRuntimeSettingsProperty_ (Part 4.3): the
// unsigned 8-bit run mode.
#include "properties/golden.h"

namespace {

using zelto_test::Bytes;
using zelto_test::Cat;
using zelto_test::ExpectGolden;
using zelto_test::Key;

Zelto::ZeltoRuntimeSettingsProperty_ Settings(uint8_t runMode, bool remote, bool arFoundation) {
  Zelto::ZeltoRuntimeSettingsProperty_ record;
  record.runMode = static_cast<Zelto::RunMode>(runMode);
  record.isRemoteServer = remote;
  record.isUsingArFoundation = arFoundation;
  return record;
}

Bytes SettingsBytes(const Bytes& runMode, uint8_t remote, uint8_t arFoundation) {
  return Cat({{0x83}, Key("runMode"), runMode, Key("isRemoteServer"), {remote},
              Key("isUsingArFoundation"), {arFoundation}});
}

TEST(GoldenRuntimeSettings, RunMode200IsUint8) {
  ExpectGolden(Settings(200, true, false), SettingsBytes({0xCC, 0xC8}, 0xC3, 0xC2));
}

TEST(GoldenRuntimeSettings, RunModeFixintUpTo127AndUint8From128) {
  ExpectGolden(Settings(0, false, true), SettingsBytes({0x00}, 0xC2, 0xC3));
  ExpectGolden(Settings(127, false, false), SettingsBytes({0x7F}, 0xC2, 0xC2));
  ExpectGolden(Settings(128, true, true), SettingsBytes({0xCC, 0x80}, 0xC3, 0xC3));
  ExpectGolden(Settings(255, false, false), SettingsBytes({0xCC, 0xFF}, 0xC2, 0xC2));
}

}  // namespace
