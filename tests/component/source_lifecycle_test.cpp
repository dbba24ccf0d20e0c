// The mesh source's life against the simulator: Open and Start against a
// misbehaving device, frame pacing, the choice of input and layout, frames
// that cannot be built, and where every block of frame memory goes.
#include <functional>
#include <string>
#include <vector>

#include "component/zelto_mesh_sourcefactory.h"
#include "properties/zelto_runtime_settings_property.h"
#include "properties/zelto_tof_properties.h"
#include "tests/component/mesh_source_fixture.h"

namespace zelto_test {
namespace {

using Faults = std::function<void(ZeltoSim::SimFaults&)>;
using Lines = std::vector<std::string>;

ZeltoSim::HostOptions DeviceWith(const Faults& faults) {
  ZeltoSim::HostOptions device = Device();
  if (faults) faults(device.sim.faults);
  return device;
}

Lines DebugLines(const LogCapture& logs) {
  Lines lines;
  for (const LogRecord& record : logs.records()) {
    EXPECT_EQ(MeshDebug(record.message), record);
    lines.push_back(record.message);
  }
  return lines;
}

TEST(MeshSourceFactory, CreatesASourceForExactlyTheMeshType) {
  struct Case {
    const char* type;
    bool creates;
  } const cases[] = {{"mesh", true}, {"Mesh", false}, {"meshes", false}, {"", false}};
  ZeltoMeshSourceFactory factory;
  for (const Case& row : cases) {
    SCOPED_TRACE(row.type);
    weftcore::StreamSource* untouched = reinterpret_cast<weftcore::StreamSource*>(&factory);
    weftcore::StreamSource* source = untouched;
    EXPECT_TRUE(factory.CreateSource({row.type, 0}, &source).ok());
    EXPECT_EQ(row.creates, source != untouched);
    if (row.creates) factory.ReleaseSource(source);
  }
}

using MeshSourceLife = MeshSourceTest;

TEST_F(MeshSourceLife, OpenAndStartFailOnlyForTheStreamsTheyCannotDoWithout) {
  struct Case {
    const char* name;
    Faults faults;
    const char* openError;   // "" when Open succeeds
    const char* startError;  // "" when Start succeeds
  } const cases[] = {
      {"settings stream refuses to open",
       [](ZeltoSim::SimFaults& f) { f.failOpen = {"zelto_settings"}; },
       "zelto_settings: open refused (fail_open)", ""},
      {"log level unreadable", [](ZeltoSim::SimFaults& f) { f.failGet = {"kZeltoLogLevelKey"}; },
       "kZeltoLogLevelKey: get refused (fail_get)", ""},
      {"camera refuses to open", [](ZeltoSim::SimFaults& f) { f.failOpen = {"tof_camera"}; },
       "tof_camera: open refused (fail_open)", ""},
      {"no player: live frames need none",
       [](ZeltoSim::SimFaults& f) { f.failOpen = {"tof_player"}; }, "", ""},
      {"process targets unreadable",
       [](ZeltoSim::SimFaults& f) { f.failGet = {ZeltoTof::kZeltoTofProcessTargetsKey}; }, "",
       ""},
      {"camera refuses to start", [](ZeltoSim::SimFaults& f) { f.failStart = {"tof_camera"}; },
       "", ""},
      {"runtime settings unreadable",
       [](ZeltoSim::SimFaults& f) { f.failGet = {Zelto::kZeltoRuntimeSettingsKey}; }, "",
       "kZeltoRuntimeSettingsKey: get refused (fail_get)"},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    const weftcore::Status opened = OpenHost(DeviceWith(row.faults));
    EXPECT_EQ(row.openError, opened.message());
    if (opened.ok()) {
      EXPECT_EQ(row.startError, source->Start().message());
    }
    // Whatever Open managed to open, Close closes, and a second Close
    // finds nothing left to free.
    EXPECT_TRUE(source->Close().ok());
    CloseSource();
  }
  const weftcore::Status early = ZeltoMeshStreamSource().Start();
  EXPECT_EQ("Null pointer", early.message());
  EXPECT_EQ("ZeltoMesh", early.block());
}

TEST_F(MeshSourceLife, PacesFrameRequestsToOnePerMillisecond) {
  struct Case {
    const char* name;
    std::vector<int64_t> advances;  // clock advance (ns) before each request
    std::vector<uint64_t> sleeps;
  } const cases[] = {
      {"at once, twice: a whole millisecond each", {0, 0, 0}, {1000000, 1000000}},
      {"the first request after Start is free", {0}, {}},
      {"just under a millisecond still waits a whole one", {0, 999999}, {1000000}},
      {"a millisecond later is not paced", {0, 1000000, 5000000}, {}},
  };
  ASSERT_TRUE(OpenHost().ok());
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    ASSERT_TRUE(source->Start().ok());
    TakeSleeps();
    for (int64_t advance : row.advances) {
      now += std::chrono::nanoseconds(advance);
      EXPECT_EQ(1u, GetFrames().size());
    }
    EXPECT_EQ(row.sleeps, TakeSleeps());
    ASSERT_TRUE(source->Stop().ok());
  }
}

TEST_F(MeshSourceLife, StartChoosesTheInputAndTheLayout) {
  struct Case {
    const char* name;
    bool remote;
    int rate;  // frame rate set before Start; 0: none
    bool player;
    bool stopFirst;  // Start, Stop, Start: the rate is forgotten
    Lines lines;
    std::vector<uint64_t> sizes;  // of the mesh channel, one per frame
  } const cases[] = {
      {"live, reference layout", false, 0, true, false,
       {"[ZeltoMesh] Flat Raw Data = false\n", "Using playback: 0"}, {28}},
      {"remote server: flat layout", true, 0, true, false,
       {"[ZeltoMesh] Flat Raw Data = true\n", "Using playback: 0"}, {297}},
      {"30 fps: flat layout", false, 30, true, false,
       {"[ZeltoMesh] Flat Raw Data = false\n", "Using playback: 0"}, {297}},
      {"15 fps: playback", false, 15, true, false,
       {"[ZeltoMesh] Flat Raw Data = false\n", "Using playback: 1"}, {28}},
      {"15 fps without a player: no input", false, 15, false, false,
       {"[ZeltoMesh] Flat Raw Data = false\n", "Using playback: 1"}, {}},
      {"Stop forgets 15 fps", false, 15, false, true,
       {"[ZeltoMesh] Flat Raw Data = false\n", "Using playback: 0"}, {28}},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    ZeltoSim::HostOptions device = Device();
    device.sim.remote = row.remote;
    device.player = row.player;
    ASSERT_TRUE(OpenHost(device).ok());
    weftcore::FrameRateProperty rate;
    rate.num = row.rate;
    if (row.rate != 0) {
      ASSERT_TRUE(source->Set(weftcore::kFrameRatePropertyKey, &rate).ok());
    }
    if (row.stopFirst) {
      ASSERT_TRUE(source->Start().ok() && source->Stop().ok());
    }
    logs.Clear();
    ASSERT_TRUE(source->Start().ok());
    EXPECT_EQ(row.lines, DebugLines(logs));
    std::vector<uint64_t> sizes;
    for (const weftcore::FrameInfo& frame : GetFrames()) sizes.push_back(frame.channels[0].size);
    EXPECT_EQ(row.sizes, sizes);
    CloseSource();
  }
}

TEST_F(MeshSourceLife, DropsFramesItCannotBuildAndHandsTheUpstreamFrameBack) {
  const std::string loaded =
      "mesh loaded height:3 width:4 fx:2.000000 fy:2.000000 cx:1.500000 cy:1.000000";
  struct Case {
    const char* name;
    Faults faults;
    bool refuseFirstMemory;
    Lines lines;  // over two requests
    std::vector<uint64_t> sequence;
  } const cases[] = {
      {"no point-cloud channel",
       [](ZeltoSim::SimFaults& f) { f.failSet = {ZeltoTof::kZeltoTofProcessTargetsKey}; }, false,
       {loaded}, {}},
      {"point cloud without memory", [](ZeltoSim::SimFaults& f) { f.pointCloud = "null"; }, false,
       {loaded, "[ZeltoMesh] fill frame error: point cloud is null.",
        "[ZeltoMesh] fill frame error: point cloud is null."},
       {}},
      {"point cloud one point short", [](ZeltoSim::SimFaults& f) { f.pointCloud = "short"; },
       false,
       {loaded, "[ZeltoMesh] fill frame error: point cloud is too small: size=66, expected=72",
        "[ZeltoMesh] fill frame error: point cloud is too small: size=66, expected=72"},
       {}},
      {"configuration unreadable: empty meshes, silently",
       [](ZeltoSim::SimFaults& f) {
         f.failGet = {ZeltoTof::kZeltoTofCamera2CurrentConfigurationKey};
       },
       false, {}, {0, 1}},
      {"configuration read throws",
       [](ZeltoSim::SimFaults& f) {
         f.throwGet = {ZeltoTof::kZeltoTofCamera2CurrentConfigurationKey};
       },
       false,
       {"[ZeltoMesh] fill frame error: kZeltoTofCamera2CurrentConfigurationKey: get throws "
        "(throw_get)",
        "[ZeltoMesh] fill frame error: kZeltoTofCamera2CurrentConfigurationKey: get throws "
        "(throw_get)"},
       {}},
      {"no frame memory: the number is used by the next frame", nullptr, true,
       {loaded, "[ZeltoMesh] fill frame error: no memory"}, {0}},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    ASSERT_TRUE(OpenHost(DeviceWith(row.faults)).ok());
    ASSERT_TRUE(source->Start().ok());
    logs.Clear();
    std::vector<uint64_t> sequence;
    for (bool refuse : {row.refuseFirstMemory, false}) {
      meshMemory.refuse = refuse;
      for (const weftcore::FrameInfo& frame : GetFrames()) sequence.push_back(frame.sequenceNumber);
      EXPECT_EQ(0, host->allocator().LiveCount());
    }
    EXPECT_EQ(row.lines, DebugLines(logs));
    EXPECT_EQ(row.sequence, sequence);
    CloseSource();
    EXPECT_EQ(0, meshMemory.heap.LiveCount());
  }
}

TEST_F(MeshSourceLife, ReferenceArraysStayReadableUntilTheCallAfterNext) {
  ASSERT_TRUE(OpenHost().ok());
  ASSERT_TRUE(source->Start().ok());
  std::vector<std::vector<uint8_t>> records;  // the 28 bytes of each frame
  for (uint64_t i = 0; i < 3; ++i) {
    std::vector<weftcore::FrameInfo> frames;
    source->GetFrames(&frames);
    ASSERT_EQ(1u, frames.size());
    EXPECT_EQ(i, frames[0].sequenceNumber);
    const weftcore::ChannelRawData& channel = frames[0].channels[0];
    EXPECT_EQ(i * 33333333, channel.capturedTimestamp);
    const auto* bytes = static_cast<const uint8_t*>(channel.memory->GetAddress());
    records.emplace_back(bytes, bytes + channel.size);
    // The frame's memory goes back at once; the arrays it names are the source's.
    ASSERT_TRUE(source->ReleaseFrame(frames[0], nullptr).ok());
    if (i == 1) {
      EXPECT_EQ(std::vector<float>(12, Metres(1000)), DepthsOf(records[0].data(), 28));
    }
  }
  // The third frame reuses the first one's arrays; the second's are intact.
  EXPECT_EQ(std::vector<float>(12, Metres(3000)), DepthsOf(records[0].data(), 28));
  EXPECT_EQ(std::vector<float>(12, Metres(2000)), DepthsOf(records[1].data(), 28));
  EXPECT_EQ(0, meshMemory.heap.LiveCount());
}

TEST_F(MeshSourceLife, EveryFrameMemoryBlockGoesBackThroughTheHost) {
  for (bool flat : {false, true}) {
    SCOPED_TRACE(flat ? "flat layout" : "reference layout");
    ASSERT_TRUE(OpenHost(Device(), false).ok());
    weftcore::Stream* mesh = nullptr;
    ASSERT_TRUE(host->OpenStream("mesh", &mesh).ok());
    weftcore::FrameRateProperty rate;
    rate.num = flat ? 30 : 0;
    ASSERT_TRUE(mesh->SetProperty(weftcore::kFrameRatePropertyKey, &rate).ok());
    ASSERT_TRUE(mesh->Start().ok());
    weftcore::Frame* frames[3] = {};
    for (weftcore::Frame*& frame : frames) ASSERT_TRUE(mesh->GetFrame(&frame, 0).ok() && frame);
    EXPECT_EQ(3, host->allocator().LiveCount());  // the upstream frames are back
    ASSERT_TRUE(mesh->ReleaseFrame(frames[0]).ok());
    EXPECT_EQ(2, host->allocator().LiveCount());
    ASSERT_TRUE(mesh->Stop().ok());
    ASSERT_TRUE(host->CloseStream(mesh).ok());  // the host hands the other two back
    EXPECT_EQ(0, host->allocator().LiveCount());
  }
}

}  // namespace
}  // namespace zelto_test
