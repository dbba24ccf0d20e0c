// The mesh source against a misbehaving device: Open and Start, pacing, the choice of
// input and layout, frames that cannot be built, and where every block of frame memory goes.
#include <string>
#include <vector>

#include "component/zelto_mesh_sourcefactory.h"
#include "component/zelto_time.h"
#include "tests/component/mesh_source_fixture.h"

namespace zelto_test {
namespace {

using Lines = std::vector<std::string>;

TEST(MeshSourceFactory, CreatesASourceForExactlyTheMeshType) {
  ZeltoMeshSourceFactory factory;
  for (const char* type : {"mesh", "Mesh", "meshes", ""}) {
    SCOPED_TRACE(type);
    weftcore::StreamSource* untouched = reinterpret_cast<weftcore::StreamSource*>(&factory);
    weftcore::StreamSource* source = untouched;
    EXPECT_TRUE(factory.CreateSource({type, 0}, &source).ok());
    EXPECT_EQ(std::string(type) == "mesh", source != untouched);
    if (source != untouched) factory.ReleaseSource(source);
  }
}

using MeshSourceLife = MeshSourceTest;

TEST_F(MeshSourceLife, OpenAndStartFailOnlyForTheStreamsTheyCannotDoWithout) {
  struct Case {
    const char* knob;
    const char* value;
    const char* openError;   // "" when Open succeeds
    const char* startError;  // "" when Start succeeds
  } const cases[] = {
      {"fail_open", "zelto_settings", "zelto_settings: open refused (fail_open)", ""},
      {"fail_get", "kZeltoLogLevelKey", "kZeltoLogLevelKey: get refused (fail_get)", ""},
      {"fail_open", "tof_camera", "tof_camera: open refused (fail_open)", ""},
      {"fail_open", "tof_player", "", ""},  // live frames need no player
      {"fail_get", "kZeltoTofProcessTargetsKey", "", ""},
      {"fail_start", "tof_camera", "", ""},
      {"fail_get", "kZeltoRuntimeSettingsKey", "",
       "kZeltoRuntimeSettingsKey: get refused (fail_get)"},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(std::string(row.knob) + "=" + row.value);
    const weftcore::Status opened = OpenHost(Device(row.knob, row.value));
    EXPECT_EQ(row.openError, opened.message());
    if (opened.ok()) {
      EXPECT_EQ(row.startError, source->Start().message());
    }
    // Whatever Open managed to open, Close closes; a second Close frees nothing
    // again.
    EXPECT_TRUE(source->Close().ok());
    CloseSource();
  }
  const weftcore::Status early = ZeltoMeshStreamSource().Start();
  EXPECT_EQ("ZeltoMesh: Null pointer", early.block() + ": " + early.message());
}

TEST_F(MeshSourceLife, PacesFrameRequestsToOnePerMillisecond) {
  struct Case {
    const char* name;
    std::vector<int64_t> advances;  // clock advance (ns) before each request
    std::vector<uint64_t> sleeps;   // each sleep also advances the clock
  } const cases[] = {
      {"at once, thrice: a whole millisecond each", {0, 0, 0}, {1000000, 1000000}},
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
    uint32_t rate;  // set before Start; 0: none
    bool player;
    bool stopFirst;  // Start and Stop first: Stop forgets the rate
    bool flatLogged;
    bool playbackLogged;
    std::vector<uint64_t> sizes;  // of each frame's mesh channel
  } const cases[] = {
      {"live, reference layout", false, 0, true, false, false, false, {28}},
      {"remote server: flat layout", true, 0, true, false, true, false, {297}},
      {"30 fps: flat layout", false, 30, true, false, false, false, {297}},
      {"15 fps: playback", false, 15, true, false, false, true, {28}},
      {"15 fps without a player: no input", false, 15, false, false, false, true, {}},
      {"Stop forgets 15 fps", false, 15, false, true, false, false, {28}},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    ZeltoSim::HostOptions device = Device();
    device.sim.remote = row.remote;
    device.player = row.player;
    ASSERT_TRUE(OpenHost(device).ok());
    const weftcore::FrameRateProperty rate{row.rate, 1};
    if (row.rate != 0) {
      ASSERT_TRUE(source->Set(weftcore::kFrameRatePropertyKey, &rate).ok());
    }
    if (row.stopFirst) {
      ASSERT_TRUE(source->Start().ok() && source->Stop().ok());
    }
    logs.Clear();
    ASSERT_TRUE(source->Start().ok());
    EXPECT_EQ((Lines{row.flatLogged ? "[ZeltoMesh] Flat Raw Data = true\n"
                                    : "[ZeltoMesh] Flat Raw Data = false\n",
                     row.playbackLogged ? "Using playback: 1" : "Using playback: 0"}),
              Messages());
    std::vector<uint64_t> sizes;
    for (const weftcore::FrameInfo& frame : GetFrames()) sizes.push_back(frame.channels[0].size);
    EXPECT_EQ(row.sizes, sizes);
    CloseSource();
    EXPECT_EQ(0, meshMemory.heap.LiveCount());
  }
}

TEST_F(MeshSourceLife, DropsFramesItCannotBuildAndHandsTheUpstreamFrameBack) {
  const std::string loaded =
      "mesh loaded height:3 width:4 fx:2.000000 fy:2.000000 cx:1.500000 cy:1.000000";
  const std::string fill = "[ZeltoMesh] fill frame error: ";
  const std::string thrown =
      fill + "kZeltoTofCamera2CurrentConfigurationKey: get throws (throw_get)";
  const std::string small = fill + "point cloud is too small: size=66, expected=72";
  const std::string null = fill + "point cloud is null.";
  struct Case {
    const char* knob;  // "": the first frame finds no frame memory
    const char* value;
    Lines lines;  // over two requests
    std::vector<uint64_t> sequence;
  } const cases[] = {
      {"fail_set", "kZeltoTofProcessTargetsKey", {loaded}, {}},  // no point-cloud channel
      {"point_cloud", "null", {loaded, null, null}, {}},
      {"point_cloud", "short", {loaded, small, small}, {}},
      {"fail_get", "kZeltoTofCamera2CurrentConfigurationKey", {}, {0, 1}},  // empty meshes
      {"throw_get", "kZeltoTofCamera2CurrentConfigurationKey", {thrown, thrown}, {}},
      {"", "", {loaded, fill + "no memory"}, {0}},  // the number goes to the next frame
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(std::string(row.knob) + "=" + row.value);
    ASSERT_TRUE(OpenHost(Device(row.knob, row.value)).ok());
    ASSERT_TRUE(source->Start().ok());
    logs.Clear();
    std::vector<uint64_t> sequence;
    for (bool refuse : {*row.knob == '\0', false}) {
      meshMemory.refuse = refuse;
      for (const weftcore::FrameInfo& frame : GetFrames()) sequence.push_back(frame.sequenceNumber);
      EXPECT_EQ(0, host->allocator().LiveCount());  // the upstream frame is back
    }
    EXPECT_EQ(row.lines, Messages());
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
    if (i == 1) { EXPECT_EQ(std::vector<float>(12, 1.0f), DepthsOf(records[0].data(), 28)); }
  }
  // The third frame reuses the first one's arrays; the second's are intact.
  EXPECT_EQ(std::vector<float>(12, 3.0f), DepthsOf(records[0].data(), 28));
  EXPECT_EQ(std::vector<float>(12, 2.0f), DepthsOf(records[1].data(), 28));
  EXPECT_EQ(0, meshMemory.heap.LiveCount());
}

TEST_F(MeshSourceLife, EveryFrameMemoryBlockGoesBackThroughTheHost) {
  ASSERT_TRUE(OpenHost(Device(), false).ok());
  weftcore::Stream* mesh = nullptr;
  ASSERT_TRUE(host->OpenStream("mesh", &mesh).ok());
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

// The component's time helpers: a comparison relative to the larger value,
// and a wait for what remains of a period, in whole milliseconds.
TEST_F(MeshSourceLife, TimeHelpersCompareRelativelyAndWaitOutTheRemainder) {
  EXPECT_TRUE(Zelto::CompareFloat(100.0f, 100.00001f));
  EXPECT_FALSE(Zelto::CompareFloat(1.0f, 1.00000024f));
  Zelto::WaitRemainingTime(std::chrono::steady_clock::now() - std::chrono::seconds(3), 10000);
  const std::vector<uint64_t> waited = TakeSleeps();
  ASSERT_EQ(1u, waited.size());
  EXPECT_TRUE(waited[0] % 1000000 == 0 && waited[0] <= 7000000000u && waited[0] > 6000000000u);
}

}  // namespace
}  // namespace zelto_test
