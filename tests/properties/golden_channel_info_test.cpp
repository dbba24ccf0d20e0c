// Golden bytes of weftcore::ChannelInfoProperty (Part 4.2): the map keyed by
// unsigned channel numbers, ascending, whatever the insertion order.
#include "properties/golden.h"

namespace {

using zelto_test::Bytes;
using zelto_test::Cat;
using zelto_test::ExpectGolden;
using zelto_test::Key;
using zelto_test::Raw;

weftcore::ChannelInfo Info(const std::string& type, const std::string& description) {
  weftcore::ChannelInfo info;
  info.raw_data_type = type;
  info.description = description;
  return info;
}

TEST(GoldenChannelInfo, FourChannelsWithEveryUnsignedKeyForm) {
  weftcore::ChannelInfoProperty record;
  record.channels[4294967295u] = Info("a", "b");
  record.channels[65535] = Info(std::string(32, 't'), "");
  record.channels[200] = Info("", "");
  record.channels[0] = Info("kRawDataTypeMesh", "Mesh Data");
  const Bytes expected = Cat({{0x81}, Key("channels"), {0x84},
                              {0x00},
                              {0x82}, Key("raw_data_type"), {0xB0}, Raw("kRawDataTypeMesh"),
                              Key("description"), {0xA9}, Raw("Mesh Data"),
                              {0xCC, 0xC8},
                              {0x82}, Key("raw_data_type"), {0xA0}, Key("description"), {0xA0},
                              {0xCD, 0xFF, 0xFF},
                              {0x82}, Key("raw_data_type"), {0xD9, 0x20}, Raw(std::string(32, 't')),
                              Key("description"), {0xA0},
                              {0xCE, 0xFF, 0xFF, 0xFF, 0xFF},
                              {0x82}, Key("raw_data_type"), {0xA1}, Raw("a"),
                              Key("description"), {0xA1}, Raw("b")});
  ExpectGolden(record, expected);
}

TEST(GoldenChannelInfo, EmptyMapIsWritten) {
  ExpectGolden(weftcore::ChannelInfoProperty{}, Cat({{0x81}, Key("channels"), {0x80}}));
}

}  // namespace
