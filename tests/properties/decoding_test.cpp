// Decoding client bytes into a record that may already hold values: what a
// client sees when its bytes are wrong (cause, the decoder's report, where it
// stopped) and how a good map changes the record.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "masking/mask_settings_property.h"
#include "properties/zelto_segmentation_properties.h"
#include "properties/zelto_tof_properties.h"
#include "support/bytes.h"
#include "weftcore/framework_properties.h"

namespace zelto_test {
namespace {

using Rate = weftcore::FrameRateProperty;
using Calibration = ZeltoTof::ZeltoTofCalibrationSettingsProperty_;
using Settings = ZeltoMesh::ZeltoMeshMaskSettingsProperty_;
using Info = ZeltoSegmentation::ZeltoSegmentationMaskInfo_;

struct Outcome { weftcore::Status status; size_t offset; Bytes record; /* encoded */ };
using Decoding = std::function<Outcome(const uint8_t* data, size_t size, size_t from)>;

template <typename T>
Decoding Into(const T& initial = T{}) {
  return [initial](const uint8_t* data, size_t size, size_t from) {
    T record = initial;
    weftcore::serialize::MsgPackDecoder decoder(data, size, from);
    weftcore::Status status = decoder.Pop(record);
    return Outcome{status, decoder.offset(), Encode(record)};
  };
}

const Bytes kRate30 = {0x82, 0xA3, 'n', 'u', 'm', 0x1E, 0xA5, 'd', 'e', 'n', 'o', 'm', 0x01};
const char kAtEnd[] = "";  // cause 8 reported at the end of the input, shown as byte 0x00

TEST(Decoder, ReportsWhereAndWhyClientBytesCannotBeDecoded) {
  struct Case {  // `text`: the whole text; for cause 8, what follows the library's own words
    const char* name; Decoding decoding; Bytes bytes; size_t from; int cause; std::string text;
  };
  const Case cases[] = {
      {"no input", Into<Rate>(), {}, 0, 11, "end of buffer: size=0, offset=0"},
      {"offset past the end", Into<Rate>(), kRate30, 20, 11, "end of buffer: size=13, offset=20"},
      {"top-level array", Into<Rate>(), {0x92, 0x1E, 0x01}, 0, 8, kAtEnd},
      {"integer key", Into<Rate>(), {0x81, 0x01, 0x1E}, 0, 8, kAtEnd},
      {"record from integer", Into<Calibration>(), Cat({{0x81}, Key("T"), {0x01}}), 0, 8, kAtEnd},
      {"truncated map", Into<Rate>(), Bytes(kRate30.begin(), kRate30.begin() + 8), 0, 8, kAtEnd},
      {"second object bad", Into<Rate>(), Cat({kRate30, {0x92, 0x01, 0x02, 0xC3}}), 13, 8,
       ", buffer_size=17, offset=13, current=16(0xc3)"},
      // Refused at the count, before anything is allocated for the elements.
      {"array count beyond the input", Into<Settings>(),
       Cat({{0x81}, Key("maskInfo"), {0xDC, 0xFF, 0xFF}}), 0, 8,
       ", buffer_size=13, offset=0, current=0(0x81)"},
      {"map count beyond the input, 1,000 levels deep", Into<Rate>(),
       Cat({{0x81}, Key("extra"), Bytes(1000, 0x91), {0xDF, 0xFF, 0xFF, 0xFF, 0xFF}}), 0, 8,
       "map size overflow, buffer_size=1012, offset=0, current=0(0x81)"},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    const Outcome outcome = row.decoding(row.bytes.empty() ? kRate30.data() : row.bytes.data(),
                                         row.bytes.size(), row.from);
    const std::string message = outcome.status.message(), size = std::to_string(row.bytes.size());
    const std::string text = row.text.empty() && row.cause == 8
        ? ", buffer_size=" + size + ", offset=0, current=" + size + "(0x00)" : row.text;
    EXPECT_EQ(outcome.status.cause(), row.cause);
    EXPECT_EQ(outcome.status.block(), "core");
    EXPECT_EQ(outcome.offset, row.from);
    EXPECT_EQ(message.rfind(row.cause == 8 ? "what=" : text, 0), 0u) << message;
    EXPECT_NE(message.find(text), std::string::npos) << message;
  }
  EXPECT_EQ(Into<Rate>()(nullptr, 13, 0).status.message(), "buffer is null");
}

TEST(Decoder, ChangesOnlyTheFieldsAMapCarriesInDeclaredOrder) {
  Settings fiveMasks{true, std::vector<Info>(5), 9};
  weftcore::ChannelInfoProperty callerChannels, channel0;
  callerChannels.channels[3] = {"caller", ""};
  channel0.channels[0] = {"", "d"};
  const Calibration t123{11, 0, 0, 0, false, {}, {}, {}, {1.0f, 2.0f, 3.0f}};
  const Calibration t143{11, 0, 0, 0, false, {}, {}, {}, {1.0f, 4.0f, 3.0f}};
  struct Case {  // `decoding` into the record the caller holds; `after`: it afterwards, encoded
    const char* name; Decoding decoding; Bytes bytes; int cause; Bytes after; size_t offset;
  };
  const Case cases[] = {
      {"unknown keys skipped, first duplicate wins", Into(Rate{7, 9}),
       Cat({{0x84}, Key("num"), {1}, Key("Denom"), {0x92, 0xC3, 0xC0}, Key("denom"), {2},
            Key("num"), {3}}), 0, Encode(Rate{1, 2}), 27},
      {"absent keys, nested too, keep values", Into(t123),
       Cat({{0x81}, Key("T"), {0x81}, Key("y"), F32(0x40800000)}), 0, Encode(t143), 11},
      {"an ignored key nesting 1,000 containers", Into(Rate{7, 9}),
       Cat({{0x82}, Key("extra"), Bytes(1000, 0x91), {0xC0}, Key("num"), {5}}), 0,
       Encode(Rate{5, 9}), 1013},
      {"fields convert in declared order", Into(Rate{7, 9}),
       Cat({{0x82}, Key("denom"), {0xA1, 'x'}, Key("num"), {0x05}}), 8, Encode(Rate{5, 9}), 0},
      {"integer key fails before any field", Into(Rate{7, 9}),
       Cat({{0x82}, Key("num"), {0x05, 0x01, 0x02}}), 8, Encode(Rate{7, 9}), 0},
      {"arrays are replaced", Into(fiveMasks),
       Cat({{0x81}, Key("maskInfo"), {0x91, 0x81}, Key("name"), {0xA3}, Raw("new")}), 0,
       Encode(Settings{true, {Info{"new", false, false}}, 9}), 21},
      {"maps are replaced", Into(callerChannels),
       Cat({{0x81}, Key("channels"), {0x81, 0x00, 0x81}, Key("description"), {0xA1, 'd'}}), 0,
       Encode(channel0), 27},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    const Outcome outcome = row.decoding(row.bytes.data(), row.bytes.size(), 0);
    EXPECT_EQ(outcome.status.cause(), row.cause) << outcome.status.message();
    EXPECT_EQ(Hex(outcome.record), Hex(row.after));
    EXPECT_EQ(outcome.offset, row.offset);
  }
}

}  // namespace
}  // namespace zelto_test
