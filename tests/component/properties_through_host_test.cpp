// The mesh source's properties as a client sees them: MessagePack bytes into the host's
// "mesh" stream, bytes or a status back; and the Debug line each handler logs on entry.
#include <string>
#include <vector>

#include "tests/component/mesh_source_fixture.h"
#include "tests/support/bytes.h"

namespace zelto_test {
namespace {

Bytes LogLevel(uint8_t level) { return Cat({{0x81}, Key("logLevel"), {level}}); }
Bytes FrameRate(uint8_t num) { return Cat({{0x82}, Key("num"), {num}, Key("denom"), {1}}); }
Bytes Config(Bytes level, Bytes period) {
  return Cat({{0x82}, Key("meshReductionLevel"), level, Key("resetTrianglePeriod"), period});
}
Bytes Channel(uint8_t id, const char* type, const char* description) {
  return Cat({{id, 0x82}, Key("raw_data_type"), Key(type), Key("description"), Key(description)});
}
Bytes Channels(uint8_t count, Bytes entries) {
  return Cat({{0x81}, Key("channels"), {static_cast<uint8_t>(0x80 | count)}, entries});
}
Bytes Masks(uint8_t enabled, Bytes infos, uint8_t threshold) {
  return Cat({{0x83}, Key("enabled"), {enabled}, Key("maskInfo"), infos, Key("maskThreshold"),
              {threshold}});
}
// One inverted depth mask "person", as a one-element array.
const Bytes kPerson = Cat({{0x91, 0x83}, Key("name"), Key("person"), Key("isColorSource"), {0xC2},
                           Key("isInvertMask"), {0xC3}});
const Bytes kMesh = Channel(0, "kRawDataTypeMesh", "Mesh Data");
const Bytes kNull;
const char kLog[] = "kZeltoLogLevelKey";
const char kInfo[] = "channel_info_property";
const char kRate[] = "frame_rate_property";
const char kConfig[] = "kZeltoMeshAlgorithmConfigKey";
const char kMask[] = "kZeltoMeshMaskSettingsKey";
const bool kSet = true;
const bool kGet = false;

TEST(MeshProperties, AnswerClientBytesThroughTheHost) {
  struct Case {
    const char* key;
    bool set;
    Bytes in;
    Bytes out;          // Get: the reply
    std::string error;  // "<block>: <message>", "" for OK
  } const cases[] = {
      // clang-format off
      {kLog, kGet, {}, LogLevel(5), ""},  // the device's level, adopted at Open
      {kLog, kSet, LogLevel(9), {}, "ZeltoMesh: property log level 9 is out of range."},
      {kLog, kSet, LogLevel(1), {}, "ZeltoMesh: property log level 1 is out of range."},
      {kLog, kSet, kNull, {}, "Zelto: property is null."},
      {kLog, kSet, LogLevel(7), {}, ""},
      {kLog, kGet, {}, LogLevel(7), ""},
      {kInfo, kGet, {}, Channels(1, kMesh), ""},
      {kInfo, kGet, Channels(1, Channel(3, "color", "Color")),
       Channels(2, Cat({kMesh, Channel(3, "color", "Color")})), ""},
      {kInfo, kGet, Channels(1, Channel(0, "d", "D")), Channels(1, Channel(0, "d", "D")), ""},
      {kRate, kSet, FrameRate(15), {}, ""},
      {kRate, kGet, {}, FrameRate(30), ""},
      {kRate, kSet, kNull, {}, "ZeltoMesh: Null pointer"},
      {kConfig, kGet, {}, Config({0}, {4}), ""},
      {kConfig, kSet, Config({2}, {0}), {}, ""},  // period 0 keeps 4
      {kConfig, kGet, {}, Config({2}, {4}), ""},
      {kConfig, kSet, Cat({{0x81}, Key("meshReductionLevel"), {1}}), {}, ""},
      {kConfig, kSet, Config({0xFF}, {5}), {},
       "ZeltoMesh: mesh reduction level must be equal or greater than zero."},
      {kConfig, kSet, Config({3}, {0xFF}), {},
       "ZeltoMesh: resetTrianglePeriod must be equal or greater than zero."},
      {kConfig, kGet, {}, Config({1}, {4}), ""},  // values unchanged
      {kConfig, kSet, kNull, {}, "ZeltoMesh: property is null."},
      {kMask, kGet, {}, Masks(0xC2, {0x90}, 55), ""},
      {kMask, kSet, Masks(0xC2, kPerson, 100), {}, ""},
      {kMask, kGet, {}, Masks(0xC2, kPerson, 100), ""},
      {kMask, kSet, kNull, {}, "ZeltoMesh: property is null."},
      // clang-format on
  };
  weftcore::host::HostCore host(ZeltoSim::BuildHostConfiguration(Device("log_level", "5")));
  weftcore::Stream* mesh = nullptr;
  ASSERT_TRUE(host.OpenStream("mesh", &mesh).ok());
  for (const Case& row : cases) {
    SCOPED_TRACE(std::string(row.set ? "Set " : "Get ") + row.key + " " + Hex(row.in));
    weftcore::Status status;
    void* reply = nullptr;
    size_t size = 0;
    if (row.set) {
      status = mesh->SetSerializedProperty(row.key, row.in.empty() ? nullptr : row.in.data(),
                                           row.in.size());
    } else {
      status = mesh->GetSerializedProperty(row.key, row.in.data(), row.in.size(), &reply, &size);
    }
    EXPECT_EQ(row.error, status.ok() ? "" : status.block() + ": " + status.message());
    if (status.ok() && !row.set) {
      const auto* bytes = static_cast<const uint8_t*>(reply);
      EXPECT_EQ(Hex(row.out), Hex(Bytes(bytes, bytes + size)));
      EXPECT_TRUE(mesh->ReleaseSerializedProperty(row.key, reply, size).ok());
    }
  }
}

using MeshPropertyHandlers = MeshSourceTest;

TEST_F(MeshPropertyHandlers, LogOneLineOnEntry) {
  ASSERT_TRUE(OpenHost().ok());
  Zelto::ZeltoLogLevelProperty_ level{ZeltoLogger::Debug};
  ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_ config;
  ZeltoMesh::ZeltoMeshMaskSettingsProperty_ mask;
  logs.Clear();
  // Only the algorithm configuration logs the key it was called with.
  source->Get("any", &level);
  source->Set("any", &level);
  source->Get("any", &config);
  source->Set("any", &config);
  source->Get("any", &mask);
  source->Set("any", &mask);
  auto line = [](const char* call, const char* key, const void* record) {
    return MeshDebug(Printf("[ZeltoMesh] %s by key=%s prop=%p\n", call, key, record));
  };
  EXPECT_EQ((std::vector<LogRecord>{
                line("Get ZeltoLogLevelProperty", kLog, &level),
                line("Set ZeltoLogLevelProperty", kLog, &level),
                line("Get ZeltoMeshAlgorithmConfigProperty", "any", &config),
                line("Set ZeltoMeshAlgorithmConfigProperty", "any", &config),
                line("Get ZeltoMeshMaskSettingsProperty", kMask, &mask),
                line("Set ZeltoMeshMaskSettingsProperty", kMask, &mask),
            }),
            logs.records());
}

}  // namespace
}  // namespace zelto_test
