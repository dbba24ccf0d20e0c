// The wire format of every property record: each encodes to exactly the bytes
// written out below, which decode to a record that encodes to them again.
// Damaged, the same bytes show that hostile client bytes never crash the decoder.
#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>
#include <utility>

#include "masking/mask_settings_property.h"
#include "mesh/mesh_algorithm_config_property.h"
#include "properties/zelto_log_level_property.h"
#include "properties/zelto_runtime_settings_property.h"
#include "properties/zelto_segmentation_properties.h"
#include "properties/zelto_tof_properties.h"
#include "support/bytes.h"
#include "weftcore/framework_properties.h"

namespace zelto_test {
namespace {

using Info = ZeltoSegmentation::ZeltoSegmentationMaskInfo_;
using Mask = ZeltoSegmentation::ZeltoSegmentationMaskDataProperty_;

struct Decoded { weftcore::Status status; size_t offset; Bytes reencoded; /* empty on failure */ };
struct GoldenRow {  // `decode`: into a fresh record of the row's type
  std::string name; Bytes bytes, encoded; std::function<Decoded(const Bytes&)> decode;
};

template <typename T>
GoldenRow Row(std::string name, const T& record, Bytes bytes) {
  const auto decode = [](const Bytes& input) {
    static const uint8_t kNothing = 0;  // a real pointer even for no bytes
    weftcore::serialize::MsgPackDecoder decoder(input.empty() ? &kNothing : input.data(),
                                                input.size());
    T decoded{};
    const weftcore::Status status = decoder.Pop(decoded);
    return Decoded{status, decoder.offset(), status.ok() ? Encode(decoded) : Bytes()};
  };
  return {std::move(name), std::move(bytes), Encode(record), decode};
}

// Shortest forms: positive fixint, then uint 8/16/32; below zero negative
// fixint, then int 8/16/32. Strings: fixstr, then str 8/16/32.
const std::pair<int64_t, Bytes> kSignedForms[] = {
    {0, {0x00}}, {127, {0x7F}}, {128, {0xCC, 0x80}}, {255, {0xCC, 0xFF}},
    {256, {0xCD, 0x01, 0x00}}, {65535, {0xCD, 0xFF, 0xFF}},
    {65536, {0xCE, 0x00, 0x01, 0x00, 0x00}}, {2147483647, {0xCE, 0x7F, 0xFF, 0xFF, 0xFF}},
    {-1, {0xFF}}, {-32, {0xE0}}, {-33, {0xD0, 0xDF}}, {-128, {0xD0, 0x80}},
    {-129, {0xD1, 0xFF, 0x7F}}, {-32768, {0xD1, 0x80, 0x00}},
    {-32769, {0xD2, 0xFF, 0xFF, 0x7F, 0xFF}}, {-2147483648LL, {0xD2, 0x80, 0x00, 0x00, 0x00}}};
const std::pair<size_t, Bytes> kStringHeaders[] = {
    {0, {0xA0}}, {31, {0xBF}}, {32, {0xD9, 0x20}}, {255, {0xD9, 0xFF}}, {256, {0xDA, 0x01, 0x00}},
    {65535, {0xDA, 0xFF, 0xFF}}, {65536, {0xDB, 0x00, 0x01, 0x00, 0x00}}};

Bytes InfoBytes(const Bytes& name, uint8_t color, uint8_t invert) {
  return Cat({{0x83}, Key("name"), name, Key("isColorSource"), {color}, Key("isInvertMask"),
              {invert}});
}

Bytes ChannelBytes(const Bytes& type, const Bytes& description) {
  return Cat({{0x82}, Key("raw_data_type"), type, Key("description"), description});
}

// A nested record of float fields: a fixmap of float 32 values, in order.
Bytes Floats(const std::vector<std::string>& keys, const std::vector<uint32_t>& bits) {
  Bytes bytes{static_cast<uint8_t>(0x80 | keys.size())};
  for (size_t i = 0; i < keys.size(); ++i) bytes = Cat({bytes, Key(keys[i]), F32(bits[i])});
  return bytes;
}

std::vector<GoldenRow> AllRows() {
  using Settings = ZeltoMesh::ZeltoMeshMaskSettingsProperty_;
  using Runtime = Zelto::ZeltoRuntimeSettingsProperty_;
  using Targets = ZeltoTof::ZeltoTofProcessTargetsProperty_;
  std::vector<GoldenRow> rows;
  for (const auto& [value, form] : kSignedForms) {
    rows.push_back(Row("int32 " + std::to_string(value),
                       Zelto::ZeltoLogLevelProperty_{static_cast<ZeltoLogger::LogLevel>(value)},
                       Cat({{0x81}, Key("logLevel"), form})));
  }
  for (const auto& [length, header] : kStringHeaders) {
    const std::string name(length, 's');
    rows.push_back(Row("string of " + std::to_string(length), Info{name, false, true},
                       InfoBytes(Cat({header, Raw(name)}), 0xC2, 0xC3)));
  }
  rows.push_back(Row("frame rate 30/1", weftcore::FrameRateProperty{30, 1},
                     {0x82, 0xA3, 'n', 'u', 'm', 0x1E, 0xA5, 'd', 'e', 'n', 'o', 'm', 0x01}));
  rows.push_back(Row("algorithm config", ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_{-5, 300},
                     Cat({{0x82}, Key("meshReductionLevel"), {0xFB}, Key("resetTrianglePeriod"),
                          {0xCD, 0x01, 0x2C}})));
  rows.push_back(Row("runtime settings", Runtime{Zelto::RunMode{200}, true, false},
                     Cat({{0x83}, Key("runMode"), {0xCC, 0xC8}, Key("isRemoteServer"), {0xC3},
                          Key("isUsingArFoundation"), {0xC2}})));
  rows.push_back(Row("process targets", Targets{true, false, true},
                     Cat({{0x83}, Key("processDepth"), {0xC3}, Key("processConfidence"), {0xC2},
                          Key("processPointCloud"), {0xC3}})));

  // Whole-valued floats and -0.0 stay float 32 throughout; records nest.
  const ZeltoTof::ZeltoTofCamera2IntrinsicsProperty_ intrinsics = {
      1.5f, -2.25f, 0.5f, 100.0f, 0.1f, -0.5f, 0.25f, -0.0f, 1.0f};
  const Bytes intrinsicsBytes =
      Floats({"fx", "fy", "cx", "cy", "k1", "k2", "k3", "p1", "p2"},
             {0x3FC00000, 0xC0100000, 0x3F000000, 0x42C80000, 0x3DCCCCCD, 0xBF000000, 0x3E800000,
              0x80000000, 0x3F800000});
  const ZeltoTof::ZeltoTofCamera2ConfigurationProperty_ camera = {
      true, "", std::string(31, 'c'), -70000, 640, 480, 30.0f, 5000.0f, -33, intrinsics,
      std::string(32, 'N'), false, true, 65536, -32768};
  rows.push_back(Row(
      "camera configuration", camera,
      Cat({{0x8F}, Key("isCalibrated"), {0xC3}, Key("cameraId"), {0xA0}, Key("colorCameraId"),
           {0xBF}, Raw(camera.colorCameraId), Key("uid"), {0xD2, 0xFF, 0xFE, 0xEE, 0x90},
           Key("width"), {0xCD, 0x02, 0x80}, Key("height"), {0xCD, 0x01, 0xE0}, Key("frameRate"),
           F32(0x41F00000), Key("unambiguousRange"), F32(0x459C4000), Key("lensFacing"),
           {0xD0, 0xDF}, Key("intrinsics"), intrinsicsBytes, Key("name"), {0xD9, 0x20},
           Raw(camera.name), Key("isDepthPrivate"), {0xC2}, Key("isFusion"), {0xC3},
           Key("fusionSourceWidth"), {0xCE, 0x00, 0x01, 0x00, 0x00}, Key("fusionSourceHeight"),
           {0xD1, 0x80, 0x00}})));
  const ZeltoTof::ZeltoTofCalibrationSettingsProperty_ calibration = {
      1920, -1, 70000, -200, true, {1.5f, -2.25f, 0.5f, 100.0f}, {0.0f, -0.0f, 0.1f, 5000.0f},
      {1.0f, 0.0f, -1.0f, 0.25f, 2.0f, 0.75f, -0.5f, 3.0f, 4.0f}, {10.0f, -3.5f, 30.0f}};
  const std::vector<std::string> lens = {"fx", "fy", "cx", "cy"};
  rows.push_back(Row(
      "calibration", calibration,
      Cat({{0x89}, Key("colorWidth"), {0xCD, 0x07, 0x80}, Key("colorHeight"), {0xFF},
           Key("depthWidth"), {0xCE, 0x00, 0x01, 0x11, 0x70}, Key("depthHeight"),
           {0xD1, 0xFF, 0x38}, Key("isCalibrated"), {0xC3},
           Key("c"), Floats(lens, {0x3FC00000, 0xC0100000, 0x3F000000, 0x42C80000}),
           Key("d"), Floats(lens, {0x00000000, 0x80000000, 0x3DCCCCCD, 0x459C4000}),
           Key("R"), Floats({"a", "b", "c", "d", "e", "f", "g", "h", "i"},
                            {0x3F800000, 0x00000000, 0xBF800000, 0x3E800000, 0x40000000,
                             0x3F400000, 0xBF000000, 0x40400000, 0x40800000}),
           Key("T"), Floats({"x", "y", "z"}, {0x41200000, 0xC0600000, 0x41F00000})})));

  // Containers: array 16 and map 16 (fixarray and fixmap elsewhere), the
  // channel map keyed by ascending channel number in every integer form.
  std::vector<Info> infos(16);
  infos[0] = {"person", true, false};
  infos[1] = {"", false, true};
  Bytes array16 = Cat({{0x83}, Key("enabled"), {0xC3}, Key("maskInfo"), {0xDC, 0x00, 0x10},
                       InfoBytes(Cat({{0xA6}, Raw("person")}), 0xC3, 0xC2),
                       InfoBytes({0xA0}, 0xC2, 0xC3)});
  for (int i = 2; i < 16; ++i) array16 = Cat({array16, InfoBytes({0xA0}, 0xC2, 0xC2)});
  rows.push_back(Row("mask settings", Settings{true, infos, 200},
                     Cat({array16, Key("maskThreshold"), {0xCC, 0xC8}})));
  weftcore::ChannelInfoProperty channels;
  channels.channels[4294967295u] = {"a", "b"};
  channels.channels[65535] = {std::string(32, 't'), "Mesh Data"};
  channels.channels[200] = {"kRawDataTypeMesh", ""};
  Bytes map16 = Cat({{0x81}, Key("channels"), {0xDE, 0x00, 0x10}});
  for (uint8_t key = 0; key < 13; ++key) {
    channels.channels[key] = {};
    map16 = Cat({map16, {key}, ChannelBytes({0xA0}, {0xA0})});
  }
  rows.push_back(Row(
      "channel info", channels,
      Cat({map16, {0xCC, 0xC8}, ChannelBytes(Cat({{0xB0}, Raw("kRawDataTypeMesh")}), {0xA0}),
           {0xCD, 0xFF, 0xFF}, ChannelBytes(Cat({{0xD9, 0x20}, Raw(std::string(32, 't'))}),
                                             Cat({{0xA9}, Raw("Mesh Data")})),
           {0xCE, 0xFF, 0xFF, 0xFF, 0xFF}, ChannelBytes({0xA1, 'a'}, {0xA1, 'b'})})));

  const Mask person{"person", 0x123456789A, 4294967295, 256, 200, 18446744073709551615ULL, true};
  rows.push_back(Row(
      "mask data list", ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_{{person}},
      Cat({{0x81}, Key("data"), {0x91, 0x88}, Key("name"), {0xA6}, Raw("person"),
           Key("maskDataAddress"), {0xCF, 0x00, 0x00, 0x00, 0x12, 0x34, 0x56, 0x78, 0x9A},
           Key("maskDataSize"), {0xCE, 0xFF, 0xFF, 0xFF, 0xFF}, Key("maskDataWidth"),
           {0xCD, 0x01, 0x00}, Key("maskDataHeight"), {0xCC, 0xC8}, Key("maskDataTimestamp"),
           {0xCF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, Key("isColorSource"), {0xC3},
           Key("isInvertMask"), {0xC2}})));
  rows.push_back(Row("empty mask data list",
                     ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_{},
                     {0x81, 0xA4, 'd', 'a', 't', 'a', 0x90}));
  return rows;
}

const std::vector<GoldenRow>& GoldenRows() {
  static const std::vector<GoldenRow> rows = AllRows();
  return rows;
}

TEST(WireFormat, EveryRecordEncodesToItsGoldenBytesAndDecodesBackToThem) {
  for (const GoldenRow& row : GoldenRows()) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(Hex(row.encoded), Hex(row.bytes));
    const Decoded decoded = row.decode(row.bytes);
    ASSERT_TRUE(decoded.status.ok()) << decoded.status.message();
    EXPECT_EQ(decoded.offset, row.bytes.size());
    EXPECT_EQ(Hex(decoded.reencoded), Hex(row.bytes));
  }
}

// Damaged golden bytes and noise; the sanitizer builds watch memory.
TEST(DecoderFuzz, DamagedBytesDecodeOrFailCleanly) {
  std::mt19937 random(20261123);
  const auto upTo = [&random](size_t last) {
    return std::uniform_int_distribution<size_t>(0, last)(random);
  };
  for (const GoldenRow& row : GoldenRows()) {
    SCOPED_TRACE(row.name);
    for (int i = 0; i < 1000; ++i) {
      Bytes bytes = i % 4 == 3 ? Bytes(upTo(64)) : row.bytes;  // noise, or damaged golden bytes
      for (size_t edits = i % 4 == 3 ? bytes.size() : 3; edits-- > 0 && !bytes.empty();) {
        bytes[upTo(bytes.size() - 1)] = static_cast<uint8_t>(upTo(255));
      }
      if (i % 4 == 1) bytes.resize(upTo(bytes.size()));
      if (i % 4 == 2) bytes.push_back(static_cast<uint8_t>(upTo(255)));
      const Decoded decoded = row.decode(bytes);
      if (decoded.status.ok()) {  // what was accepted is a record: its encoding decodes to itself
        EXPECT_TRUE(decoded.offset > 0 && decoded.offset <= bytes.size()) << Hex(bytes);
        EXPECT_TRUE(row.decode(decoded.reencoded).reencoded == decoded.reencoded) << Hex(bytes);
      } else {
        EXPECT_EQ(decoded.status.cause(), bytes.empty() ? 11 : 8) << Hex(bytes);
        EXPECT_EQ(decoded.offset, 0u);
      }
    }
  }
}

}  // namespace
}  // namespace zelto_test
