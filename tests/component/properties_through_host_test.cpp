// The mesh source's properties as a client sees them: MessagePack bytes into
// the "mesh" stream of the host, bytes or a status back; and the one Debug
// line each handler writes on entry.
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
Bytes Channels(Bytes entries) { return Cat({{0x81}, Key("channels"), entries}); }
Bytes Channel(uint8_t id, const char* type, const char* description) {
  return Cat({{id, 0x82}, Key("raw_data_type"), Key(type), Key("description"), Key(description)});
}
Bytes MaskSettings(uint8_t enabled, Bytes infos, uint8_t threshold) {
  return Cat({{0x83}, Key("enabled"), {enabled}, Key("maskInfo"), infos, Key("maskThreshold"),
              {threshold}});
}
const Bytes kPerson = Cat({{0x91, 0x83}, Key("name"), Key("person"), Key("isColorSource"), {0xC2},
                           Key("isInvertMask"), {0xC3}});
const Bytes kNull;

TEST(MeshProperties, AnswerClientBytesThroughTheHost) {
  struct Case {
    const char* key;
    bool set;
    Bytes in;
    Bytes out;          // Get: the reply
    std::string error;  // "<block>: <message>", "" for OK
  } const cases[] = {
      {"kZeltoLogLevelKey", false, {}, LogLevel(3), ""},  // the device's level, adopted at Open
      {"kZeltoLogLevelKey", true, LogLevel(9), {}, "ZeltoMesh: property log level 9 is out of range."},
      {"kZeltoLogLevelKey", true, kNull, {}, "Zelto: property is null."},
      {"kZeltoLogLevelKey", true, LogLevel(7), {}, ""},
      {"kZeltoLogLevelKey", false, {}, LogLevel(7), ""},
      {"channel_info_property", false, {}, Channels(Cat({{0x81}, Channel(0, "kRawDataTypeMesh", "Mesh Data")})), ""},
      {"channel_info_property", false, Channels(Cat({{0x81}, Channel(3, "color", "Color Data")})),
       Channels(Cat({{0x82}, Channel(0, "kRawDataTypeMesh", "Mesh Data"), Channel(3, "color", "Color Data")})), ""},
      {"channel_info_property", false, Channels(Cat({{0x81}, Channel(0, "depth", "Depth Data")})),
       Channels(Cat({{0x81}, Channel(0, "depth", "Depth Data")})), ""},
      {"frame_rate_property", true, FrameRate(15), {}, ""},
      {"frame_rate_property", false, {}, FrameRate(30), ""},
      {"frame_rate_property", true, kNull, {}, "ZeltoMesh: Null pointer"},
      {"kZeltoMeshAlgorithmConfigKey", false, {}, Config({0}, {4}), ""},
      {"kZeltoMeshAlgorithmConfigKey", true, Config({2}, {0}), {}, ""},  // period 0 keeps 4
      {"kZeltoMeshAlgorithmConfigKey", false, {}, Config({2}, {4}), ""},
      {"kZeltoMeshAlgorithmConfigKey", true, Cat({{0x81}, Key("meshReductionLevel"), {1}}), {}, ""},
      {"kZeltoMeshAlgorithmConfigKey", true, Config({0xFF}, {5}), {},
       "ZeltoMesh: mesh reduction level must be equal or greater than zero."},
      {"kZeltoMeshAlgorithmConfigKey", true, Config({3}, {0xFF}), {},
       "ZeltoMesh: resetTrianglePeriod must be equal or greater than zero."},
      {"kZeltoMeshAlgorithmConfigKey", false, {}, Config({1}, {4}), ""},  // values unchanged
      {"kZeltoMeshAlgorithmConfigKey", true, kNull, {}, "ZeltoMesh: property is null."},
      {"kZeltoMeshMaskSettingsKey", false, {}, MaskSettings(0xC2, {0x90}, 55), ""},
      {"kZeltoMeshMaskSettingsKey", true, MaskSettings(0xC2, kPerson, 100), {}, ""},
      {"kZeltoMeshMaskSettingsKey", false, {}, MaskSettings(0xC2, kPerson, 100), ""},
      {"kZeltoMeshMaskSettingsKey", true, kNull, {}, "ZeltoMesh: property is null."},
  };
  weftcore::host::HostCore host(ZeltoSim::BuildHostConfiguration(Device()));
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
  Zelto::ZeltoLogLevelProperty_ level;
  level.logLevel = ZeltoLogger::Debug;
  ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_ config;
  ZeltoMesh::ZeltoMeshMaskSettingsProperty_ mask;
  logs.Clear();
  // The key passed is "any": only the algorithm configuration logs it.
  source->Get("any", &level);
  source->Set("any", &level);
  source->Get("any", &config);
  source->Set("any", &config);
  source->Get("any", &mask);
  source->Set("any", &mask);
  const std::vector<LogRecord> expected = {
      MeshDebug(Printf("[ZeltoMesh] Get ZeltoLogLevelProperty by key=kZeltoLogLevelKey prop=%p\n",
                       static_cast<void*>(&level))),
      MeshDebug(Printf("[ZeltoMesh] Set ZeltoLogLevelProperty by key=kZeltoLogLevelKey prop=%p\n",
                       static_cast<void*>(&level))),
      MeshDebug(Printf("[ZeltoMesh] Get ZeltoMeshAlgorithmConfigProperty by key=any prop=%p\n",
                       static_cast<void*>(&config))),
      MeshDebug(Printf("[ZeltoMesh] Set ZeltoMeshAlgorithmConfigProperty by key=any prop=%p\n",
                       static_cast<void*>(&config))),
      MeshDebug(Printf("[ZeltoMesh] Get ZeltoMeshMaskSettingsProperty by "
                       "key=kZeltoMeshMaskSettingsKey prop=%p\n",
                       static_cast<void*>(&mask))),
      MeshDebug(Printf("[ZeltoMesh] Set ZeltoMeshMaskSettingsProperty by "
                       "key=kZeltoMeshMaskSettingsKey prop=%p\n",
                       static_cast<void*>(&mask))),
  };
  EXPECT_EQ(expected, logs.records());
}

}  // namespace
}  // namespace zelto_test
