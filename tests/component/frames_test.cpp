// Part 1.4: Start, Stop, GetFrames and ReleaseFrame.
#include <chrono>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "properties/zelto_runtime_settings_property.h"
#include "properties/zelto_tof_properties.h"
#include "tests/component/mesh_source_test.h"
#include "weftcore/host/host_stream.h"

namespace zelto_test {
namespace {

using Records = std::vector<PlatformLogRecord>;
using Sleeps = std::vector<uint64_t>;

constexpr uint64_t kOneMillisecond = 1000000;

FakeProperty<Zelto::ZeltoRuntimeSettingsProperty_>& RuntimeSettings(FakeUpstream& upstream) {
  return upstream.ZeltoStream().Property<Zelto::ZeltoRuntimeSettingsProperty_>(
      Zelto::kZeltoRuntimeSettingsKey);
}

FakeProperty<ZeltoTof::ZeltoTofCamera2ConfigurationProperty_>& CameraConfiguration(
    FakeStream& stream) {
  return stream.Property<ZeltoTof::ZeltoTofCamera2ConfigurationProperty_>(
      ZeltoTof::kZeltoTofCamera2CurrentConfigurationKey);
}

weftcore::Status SetFrameRate(ZeltoMeshStreamSource& source, uint32_t num) {
  weftcore::FrameRateProperty rate;
  rate.num = num;
  rate.denom = 1;
  return source.Set(weftcore::kFrameRatePropertyKey, &rate);
}

// Channel 0 of a delivered frame, as the mesh builder appends it.
void ExpectMeshChannel(const weftcore::FrameInfo& frame, uint64_t size, uint64_t timestamp) {
  ASSERT_EQ(1u, frame.channels.size());
  const weftcore::ChannelRawData& channel = frame.channels[0];
  EXPECT_EQ(0u, channel.channelId);
  EXPECT_NE(nullptr, channel.memory);
  EXPECT_EQ(size, channel.size);
  EXPECT_EQ(0u, channel.offset);
  EXPECT_EQ("kRawDataTypeMesh", channel.type);
  EXPECT_EQ(timestamp, channel.capturedTimestamp);
}

constexpr uint64_t kReferenceLayoutSize = 28;
// 4 x 3 image, level 0: 12 vertices, 2 x 3 x 2 = 12 triangles.
constexpr uint64_t kFlatLayoutSize = 12 * 12 + 12 * 12 + 9;

class FramesTest : public MeshSourceTest {
 protected:
  void OpenAndStart() {
    ASSERT_NO_FATAL_FAILURE(OpenMesh());
    const weftcore::Status status = source().Start();
    ASSERT_TRUE(status.ok()) << status.message();
    logs.Clear();
  }
  weftcore::host::HostStream* Camera() {
    return static_cast<weftcore::host::HostStream*>(peer().camera2Stream());
  }
};

// --- Start and Stop ---------------------------------------------------------

TEST_F(FramesTest, StartCopiesFlatRawDataChoosesTheCameraAndLogsBoth) {
  RuntimeSettings(upstream).value.isRemoteServer = true;
  ASSERT_NO_FATAL_FAILURE(OpenMesh());
  logs.Clear();
  ASSERT_TRUE(source().Start().ok());
  EXPECT_TRUE(peer().flatRawData());
  EXPECT_EQ(peer().camera2Stream(), peer().inputStream());
  EXPECT_EQ(1, upstream.Camera().counts.starts);
  EXPECT_EQ(0, upstream.Player().counts.starts);
  EXPECT_EQ((Records{MeshDebugRecord("[ZeltoMesh] Flat Raw Data = true\n"),
                     MeshDebugRecord("Using playback: 0")}),
            logs.Records());
  // The read sends a record whose three fields are 0.
  const auto& inputs = RuntimeSettings(upstream).readInputs;
  ASSERT_EQ(1u, inputs.size());
  EXPECT_EQ(0, static_cast<int>(inputs[0].runMode));
  EXPECT_FALSE(inputs[0].isRemoteServer);
  EXPECT_FALSE(inputs[0].isUsingArFoundation);
}

TEST_F(FramesTest, StartLogsFlatRawDataFalse) {
  ASSERT_NO_FATAL_FAILURE(OpenMesh());
  logs.Clear();
  ASSERT_TRUE(source().Start().ok());
  EXPECT_FALSE(peer().flatRawData());
  EXPECT_EQ((Records{MeshDebugRecord("[ZeltoMesh] Flat Raw Data = false\n"),
                     MeshDebugRecord("Using playback: 0")}),
            logs.Records());
}

TEST_F(FramesTest, StartFailsWhenTheRuntimeSettingsCannotBeReadAndChangesNothing) {
  upstream.Camera().SetSteadyFrame(FlatPointCloudFrame(1000, 5));
  ASSERT_NO_FATAL_FAILURE(OpenAndStart());
  GetFrames();
  ASSERT_EQ(1u, peer().frameCount());
  RuntimeSettings(upstream).readable = false;
  ASSERT_TRUE(SetFrameRate(source(), 15).ok());
  logs.Clear();

  const weftcore::Status status = source().Start();
  ASSERT_TRUE(status.IsError());
  EXPECT_EQ(weftcore::kCauseInvalidState, status.cause());
  EXPECT_EQ("fake property kZeltoRuntimeSettingsKey is unreadable", status.message());
  ASSERT_FALSE(status.trace().empty());
  EXPECT_EQ("", status.trace().back().file);
  EXPECT_EQ(0, status.trace().back().line);
  EXPECT_EQ(peer().camera2Stream(), peer().inputStream());  // not switched to the player
  EXPECT_EQ(1u, peer().frameCount());
  EXPECT_EQ(2.0f, peer().fx());
  EXPECT_EQ(1, upstream.Camera().counts.starts);
  EXPECT_EQ(0, upstream.Player().counts.starts);
  EXPECT_TRUE(logs.Records().empty());
}

TEST_F(FramesTest, StartAgainResetsFrameCountAndFocalLengths) {
  upstream.Camera().SetSteadyFrame(FlatPointCloudFrame(1000, 5));
  ASSERT_NO_FATAL_FAILURE(OpenAndStart());
  GetFrames();
  GetFrames();
  ASSERT_EQ(2u, peer().frameCount());
  ASSERT_EQ(2.0f, peer().fx());
  ASSERT_TRUE(source().Start().ok());
  EXPECT_EQ(0u, peer().frameCount());
  EXPECT_EQ(0.0f, peer().fx());
  EXPECT_EQ(0.0f, peer().fy());
  EXPECT_EQ(1.5f, peer().cx());  // only fx and fy are cleared
  EXPECT_EQ(0u, GetFrames().at(0).sequenceNumber);
}

TEST_F(FramesTest, FrameRateSetTo15BeforeStartFramesComeFromPlayerTofStream) {
  upstream.Player().QueueFrame(FlatPointCloudFrame(1500, 777));
  upstream.Camera().SetSteadyFrame(FlatPointCloudFrame(1000, 111));
  ASSERT_NO_FATAL_FAILURE(OpenMesh());
  ASSERT_TRUE(SetFrameRate(source(), 15).ok());
  logs.Clear();
  ASSERT_TRUE(source().Start().ok());
  EXPECT_EQ(MeshDebugRecord("Using playback: 1"), logs.Records().at(1));
  EXPECT_EQ(peer().playerStream(), peer().inputStream());
  EXPECT_EQ(1, upstream.Player().counts.starts);
  EXPECT_EQ(0, upstream.Camera().counts.starts);

  const std::vector<weftcore::FrameInfo> frames = GetFrames();
  ASSERT_EQ(1u, frames.size());
  ExpectMeshChannel(frames[0], kReferenceLayoutSize, 777);
  EXPECT_EQ(1, upstream.Player().counts.frameRequests);
  EXPECT_EQ(0, upstream.Camera().counts.frameRequests);
  EXPECT_EQ(1, CameraConfiguration(upstream.Player()).reads);  // intrinsics from the player
}

TEST_F(FramesTest, FrameRateSetTo15WithoutPlayerStreamStartSucceedsWithNoInput) {
  upstream.Remove(ZeltoTof::kCamera2StreamPlaybackKey);
  upstream.Camera().SetSteadyFrame(FlatPointCloudFrame(1000, 111));
  ASSERT_NO_FATAL_FAILURE(OpenMesh());
  ASSERT_TRUE(SetFrameRate(source(), 15).ok());
  EXPECT_TRUE(source().Start().ok());
  EXPECT_EQ(nullptr, peer().inputStream());
  EXPECT_EQ(0, upstream.Camera().counts.starts);
  // Deviation: frames are then asked for in vain instead of through null.
  logs.Clear();
  EXPECT_TRUE(GetFrames().empty());
  EXPECT_EQ(0, upstream.Camera().counts.frameRequests);
  EXPECT_TRUE(logs.Records().empty());
}

TEST_F(FramesTest, StopStopsTheInputClearsBothFlagsAndKeepsTheInput) {
  ASSERT_NO_FATAL_FAILURE(OpenMesh());
  ASSERT_TRUE(SetFrameRate(source(), 15).ok());
  ASSERT_TRUE(source().Start().ok());
  ASSERT_TRUE(SetFrameRate(source(), 30).ok());
  ASSERT_TRUE(peer().frameRate30());
  EXPECT_TRUE(source().Stop().ok());
  EXPECT_FALSE(peer().frameRate30());
  EXPECT_FALSE(peer().usePlayback());
  EXPECT_EQ(1, upstream.Player().counts.stops);
  EXPECT_EQ(0, upstream.Camera().counts.stops);
  EXPECT_EQ(peer().playerStream(), peer().inputStream());
}

TEST_F(FramesTest, StartAfterStopReadsTheLiveStreamUnlessTheFrameRateIsSetAgain) {
  ASSERT_NO_FATAL_FAILURE(OpenMesh());
  ASSERT_TRUE(SetFrameRate(source(), 15).ok());
  ASSERT_TRUE(source().Start().ok());
  ASSERT_TRUE(source().Stop().ok());
  ASSERT_TRUE(source().Start().ok());
  EXPECT_EQ(peer().camera2Stream(), peer().inputStream());
}

TEST_F(FramesTest, StopBeforeStartStopsNothing) {
  ASSERT_NO_FATAL_FAILURE(OpenMesh());
  EXPECT_TRUE(source().Stop().ok());
  EXPECT_EQ(0, upstream.Camera().counts.stops);
  EXPECT_EQ(0, upstream.Player().counts.stops);
}

// --- GetFrames --------------------------------------------------------------

TEST_F(FramesTest, FirstGetFramesAfterStartDoesNotSleepAndDeliversSequenceNumberZero) {
  upstream.Camera().QueueFrame(FlatPointCloudFrame(1000, 4242));
  ASSERT_NO_FATAL_FAILURE(OpenAndStart());
  const std::vector<weftcore::FrameInfo> frames = GetFrames();
  EXPECT_TRUE(sleeps.Sleeps().empty());
  ASSERT_EQ(1u, frames.size());
  EXPECT_EQ(0u, frames[0].sequenceNumber);
  EXPECT_EQ(0u, frames[0].reserved);
  ExpectMeshChannel(frames[0], kReferenceLayoutSize, 4242);
  EXPECT_EQ(1u, peer().frameCount());
}

TEST_F(FramesTest, TwoGetFramesCallsWithinOneMillisecondTheSecondSleepsOneMillisecondBeforeReading) {
  upstream.Camera().SetSteadyFrame(FlatPointCloudFrame(1000, 1));
  ASSERT_NO_FATAL_FAILURE(OpenAndStart());
  std::vector<int> requestsAtSleep;
  SleepRecorder watched([&](uint64_t) {
    requestsAtSleep.push_back(upstream.Camera().counts.frameRequests);
  });
  GetFrames();
  ManualClock::Advance(std::chrono::microseconds(300));
  GetFrames();
  EXPECT_EQ((Sleeps{kOneMillisecond}), watched.Sleeps());
  EXPECT_EQ((std::vector<int>{1}), requestsAtSleep);  // before the second read
  EXPECT_EQ(2, upstream.Camera().counts.frameRequests);
}

TEST_F(FramesTest, GetFramesJustBelowOneMillisecondApartStillSleepsAWholeMillisecond) {
  upstream.Camera().SetSteadyFrame(FlatPointCloudFrame(1000, 1));
  ASSERT_NO_FATAL_FAILURE(OpenAndStart());
  GetFrames();
  ManualClock::Advance(std::chrono::nanoseconds(999999));
  GetFrames();
  EXPECT_EQ((Sleeps{kOneMillisecond}), sleeps.Sleeps());
}

TEST_F(FramesTest, GetFramesOneMillisecondApartDoNotSleep) {
  upstream.Camera().SetSteadyFrame(FlatPointCloudFrame(1000, 1));
  ASSERT_NO_FATAL_FAILURE(OpenAndStart());
  GetFrames();
  ManualClock::Advance(std::chrono::milliseconds(1));
  GetFrames();
  ManualClock::Advance(std::chrono::milliseconds(5));
  GetFrames();
  EXPECT_TRUE(sleeps.Sleeps().empty());
  EXPECT_EQ(3u, peer().frameCount());
}

TEST_F(FramesTest, LastFrameTimeIsReadAfterTheSleep) {
  upstream.Camera().SetSteadyFrame(FlatPointCloudFrame(1000, 1));
  ASSERT_NO_FATAL_FAILURE(OpenAndStart());
  SleepRecorder advancing(
      [](uint64_t nanoseconds) { ManualClock::Advance(std::chrono::nanoseconds(nanoseconds)); });
  GetFrames();
  EXPECT_EQ(kStartTime, peer().lastFrameTime());
  GetFrames();
  EXPECT_EQ(kStartTime + std::chrono::milliseconds(1), peer().lastFrameTime());
}

TEST_F(FramesTest, NoPacingWhileNoFrameHasBeenDeliveredSinceStart) {
  upstream.Camera().QueueNoFrame();
  upstream.Camera().QueueNoFrame();
  ASSERT_NO_FATAL_FAILURE(OpenAndStart());
  GetFrames();
  GetFrames();
  EXPECT_TRUE(sleeps.Sleeps().empty());
}

TEST_F(FramesTest, UpstreamHasNoFrameFramesUnchangedAndNoLogLine) {
  ASSERT_NO_FATAL_FAILURE(OpenAndStart());
  std::vector<weftcore::FrameInfo> frames(1);
  frames[0].sequenceNumber = 99;
  source().GetFrames(&frames);
  ASSERT_EQ(1u, frames.size());
  EXPECT_EQ(99u, frames[0].sequenceNumber);
  EXPECT_TRUE(frames[0].channels.empty());
  EXPECT_TRUE(logs.Records().empty());
  EXPECT_EQ(1, upstream.Camera().counts.frameRequests);
  EXPECT_EQ(0, CameraConfiguration(upstream.Camera()).reads);
  EXPECT_EQ(0u, peer().frameCount());
}

TEST_F(FramesTest, UpstreamFrameWithoutChannel2IsReleasedAndFramesUnchanged) {
  upstream.Camera().QueueFrame(FrameWithoutPointCloud(9));
  ASSERT_NO_FATAL_FAILURE(OpenAndStart());
  std::vector<weftcore::FrameInfo> frames(1);
  frames[0].sequenceNumber = 99;
  source().GetFrames(&frames);
  ASSERT_EQ(1u, frames.size());
  EXPECT_EQ(99u, frames[0].sequenceNumber);
  EXPECT_EQ(1, upstream.Camera().counts.framesDelivered);
  EXPECT_EQ(1, upstream.Camera().counts.framesReleased);
  EXPECT_EQ(0u, Camera()->OutstandingFrames());
  EXPECT_EQ(0u, peer().frameCount());
  EXPECT_EQ(0, allocator().LiveCount());
  // Step 4 ran before the channel test: the intrinsics were read and logged.
  EXPECT_EQ((Records{MeshDebugRecord(
                "mesh loaded height:3 width:4 fx:2.000000 fy:2.000000 cx:1.500000 cy:1.000000")}),
            logs.Records());
}

TEST_F(FramesTest, CameraConfigurationUnreadableFrameBuiltWithZeroIntrinsicsAndReadRetried) {
  upstream.Camera().SetSteadyFrame(FlatPointCloudFrame(1000, 1));
  auto& configuration = CameraConfiguration(upstream.Camera());
  configuration.readable = false;
  ASSERT_NO_FATAL_FAILURE(OpenAndStart());

  std::vector<weftcore::FrameInfo> frames = GetFrames();
  ASSERT_EQ(1u, frames.size());
  ExpectMeshChannel(frames[0], kReferenceLayoutSize, 1);
  EXPECT_EQ(0, ReadMeshRecord(frames[0].channels[0]).vertexCount);  // width and height 0
  EXPECT_EQ(0.0f, peer().fx());
  EXPECT_EQ(1, configuration.reads);
  EXPECT_TRUE(logs.Records().empty());

  configuration.readable = true;
  frames = GetFrames();
  ASSERT_EQ(1u, frames.size());
  EXPECT_EQ(2, configuration.reads);
  EXPECT_EQ(12, ReadMeshRecord(frames[0].channels[0]).vertexCount);
  EXPECT_EQ(2.0f, peer().fx());
  EXPECT_EQ(2.0f, peer().fy());
  EXPECT_EQ(1.5f, peer().cx());
  EXPECT_EQ(1.0f, peer().cy());
  EXPECT_EQ(4, peer().width());
  EXPECT_EQ(3, peer().height());
  EXPECT_EQ((Records{MeshDebugRecord(
                "mesh loaded height:3 width:4 fx:2.000000 fy:2.000000 cx:1.500000 cy:1.000000")}),
            logs.Records());

  GetFrames();
  EXPECT_EQ(2, configuration.reads);  // cached from now on
}

TEST_F(FramesTest, FillFrameDataFailsOneLogLineFrameCountUnchangedAndTheNumberReused) {
  upstream.Camera().QueueFrame(FlatPointCloudFrame(1000, 1));
  upstream.Camera().QueueFrame(FrameWithNullPointCloud(2));
  upstream.Camera().QueueFrame(FlatPointCloudFrame(1000, 3));
  ASSERT_NO_FATAL_FAILURE(OpenAndStart());
  ASSERT_EQ(0u, GetFrames().at(0).sequenceNumber);
  logs.Clear();

  EXPECT_TRUE(GetFrames().empty());
  EXPECT_EQ((Records{MeshDebugRecord("[ZeltoMesh] fill frame error: point cloud is null.")}),
            logs.Records());
  EXPECT_EQ(1u, peer().frameCount());
  EXPECT_EQ(2, upstream.Camera().counts.framesReleased);

  const std::vector<weftcore::FrameInfo> next = GetFrames();
  ASSERT_EQ(1u, next.size());
  EXPECT_EQ(1u, next[0].sequenceNumber);
  ExpectMeshChannel(next[0], kReferenceLayoutSize, 3);
}

// Deviation: a point cloud smaller than the configured image is not read past
// its end; the frame is dropped like a failed fillFrameData.
TEST_F(FramesTest, PointCloudSmallerThanTheConfiguredImageIsLoggedAndNotBuilt) {
  upstream.Camera().QueueFrame(PointCloudFrame({1, 2, 1000, 3, 4, 1000}, 7));
  upstream.Camera().QueueFrame(FlatPointCloudFrame(1000, 8));
  ASSERT_NO_FATAL_FAILURE(OpenAndStart());

  EXPECT_TRUE(GetFrames().empty());
  EXPECT_EQ((Records{MeshDebugRecord("mesh loaded height:3 width:4 fx:2.000000 fy:2.000000 "
                                     "cx:1.500000 cy:1.000000"),
                     MeshDebugRecord("[ZeltoMesh] fill frame error: point cloud is too small: "
                                     "size=12, expected=72")}),
            logs.Records());
  EXPECT_EQ(0u, peer().frameCount());
  EXPECT_EQ(1, upstream.Camera().counts.framesReleased);

  const std::vector<weftcore::FrameInfo> next = GetFrames();
  ASSERT_EQ(1u, next.size());
  EXPECT_EQ(0u, next[0].sequenceNumber);
}

TEST_F(FramesTest, DeliveredFramesCarryTheCaptureTimestampAndConsecutiveNumbers) {
  for (uint64_t timestamp : {1000u, 2000u, 3000u}) {
    upstream.Camera().QueueFrame(FlatPointCloudFrame(1000, timestamp));
  }
  ASSERT_NO_FATAL_FAILURE(OpenAndStart());
  for (uint64_t index = 0; index < 3; ++index) {
    const std::vector<weftcore::FrameInfo> frames = GetFrames();
    ASSERT_EQ(1u, frames.size());
    EXPECT_EQ(index, frames[0].sequenceNumber);
    ExpectMeshChannel(frames[0], kReferenceLayoutSize, 1000 * (index + 1));
  }
  EXPECT_EQ(3, upstream.Camera().counts.framesReleased);
  EXPECT_EQ(0u, Camera()->OutstandingFrames());
}

TEST_F(FramesTest, FillFrameDataGetsTheFlatRawDataFlag) {
  RuntimeSettings(upstream).value.isRemoteServer = true;
  upstream.Camera().SetSteadyFrame(FlatPointCloudFrame(1000, 1));
  ASSERT_NO_FATAL_FAILURE(OpenAndStart());
  ExpectMeshChannel(GetFrames().at(0), kFlatLayoutSize, 1);
}

TEST_F(FramesTest, FillFrameDataGetsTheFrameRate30Flag) {
  upstream.Camera().SetSteadyFrame(FlatPointCloudFrame(1000, 1));
  ASSERT_NO_FATAL_FAILURE(OpenAndStart());
  ExpectMeshChannel(GetFrames().at(0), kReferenceLayoutSize, 1);
  ASSERT_TRUE(SetFrameRate(source(), 30).ok());
  ExpectMeshChannel(GetFrames().at(0), kFlatLayoutSize, 1);
}

TEST_F(FramesTest, FramesAreBuiltFromTheUpstreamPointCloudInMetres) {
  upstream.Camera().QueueFrame(FlatPointCloudFrame(1500, 1));
  ASSERT_NO_FATAL_FAILURE(OpenAndStart());
  const ZeltoMesh::MeshFrameData record = ReadMeshRecord(GetFrames().at(0).channels[0]);
  ASSERT_EQ(12, record.vertexCount);
  ASSERT_EQ(12, record.triangleCount);
  // Vertex (u 0, v 0): x = (0 - 1.5) * (1500 / 2) / 1000, y = (0 - 1) * 750 / 1000.
  EXPECT_EQ(-1.125f, VerticesOf(record)[0]);
  EXPECT_EQ(-0.75f, VerticesOf(record)[1]);
  EXPECT_EQ(1.5f, VerticesOf(record)[2]);
}

// Deviation: an exception reaching GetFrames is logged like a failed
// fillFrameData, nothing is delivered and the upstream frame is released.
TEST_F(FramesTest, AnExceptionFromTheUpstreamFrameRequestIsLoggedAndNothingDelivered) {
  ASSERT_NO_FATAL_FAILURE(OpenAndStart());
  upstream.Camera().throwOnGetFrames = true;
  EXPECT_TRUE(GetFrames().empty());
  EXPECT_EQ((Records{MeshDebugRecord(
                "[ZeltoMesh] fill frame error: fake stream zelto_tof_camera2_stream throws")}),
            logs.Records());
}

TEST_F(FramesTest, AnExceptionAfterTheUpstreamFrameReleasesItAndKeepsTheFrameCount) {
  upstream.Camera().QueueFrame(FlatPointCloudFrame(1000, 1));
  CameraConfiguration(upstream.Camera()).throwOnRead = true;
  ASSERT_NO_FATAL_FAILURE(OpenAndStart());
  EXPECT_TRUE(GetFrames().empty());
  EXPECT_EQ((Records{MeshDebugRecord("[ZeltoMesh] fill frame error: fake property "
                                     "kZeltoTofCamera2CurrentConfigurationKey throws")}),
            logs.Records());
  EXPECT_EQ(1, upstream.Camera().counts.framesReleased);
  EXPECT_EQ(0u, Camera()->OutstandingFrames());
  EXPECT_EQ(0u, peer().frameCount());
  EXPECT_EQ(0, allocator().LiveCount());
}

TEST_F(FramesTest, GetFramesWithANullListAsksNothing) {
  upstream.Camera().SetSteadyFrame(FlatPointCloudFrame(1000, 1));
  ASSERT_NO_FATAL_FAILURE(OpenAndStart());
  source().GetFrames(nullptr);
  EXPECT_EQ(0, upstream.Camera().counts.frameRequests);
}

// --- ReleaseFrame -----------------------------------------------------------

TEST_F(DirectOpenTest, ReleaseFrameOnAFrameWhoseChannelsHaveNoMemoryObjectFreesNothing) {
  ASSERT_TRUE(Open().ok());
  weftcore::FrameInfo frame;
  frame.channels.resize(2);
  frame.channels[1].channelId = 3;
  EXPECT_TRUE(source.ReleaseFrame(frame, nullptr).ok());
  EXPECT_EQ(0, allocator.frees);
  source.Close();
}

TEST_F(DirectOpenTest, ReleaseFrameFreesEveryChannelMemoryAndLeavesTheCallersFrame) {
  ASSERT_TRUE(Open().ok());
  weftcore::FrameInfo frame;
  frame.channels.resize(3);
  ASSERT_TRUE(allocator.Allocate(8, &frame.channels[0].memory).ok());
  ASSERT_TRUE(allocator.Allocate(8, &frame.channels[2].memory).ok());
  const weftcore::FrameInfo copy = frame;
  const std::vector<uint32_t> referenced{0};
  EXPECT_TRUE(source.ReleaseFrame(frame, &referenced).ok());
  EXPECT_EQ(2, allocator.frees);
  EXPECT_EQ(0, allocator.LiveCount());
  ASSERT_EQ(3u, frame.channels.size());
  EXPECT_EQ(copy.channels[0].memory, frame.channels[0].memory);
  EXPECT_EQ(copy.channels[2].memory, frame.channels[2].memory);
  source.Close();
}

TEST(MeshSourceReleaseFrame, BeforeOpenReleasesNothingAndReturnsOk) {
  ZeltoMeshStreamSource source;
  weftcore::FrameInfo frame;
  frame.channels.resize(1);
  EXPECT_TRUE(source.ReleaseFrame(frame, nullptr).ok());
}

// Deviation: Start before a successful Open fails instead of crashing.
TEST(MeshSourceStart, StartBeforeOpenFails) {
  ZeltoMeshStreamSource source;
  const weftcore::Status status = source.Start();
  ASSERT_TRUE(status.IsError());
  EXPECT_EQ(weftcore::kCauseInvalidArgument, status.cause());
  EXPECT_EQ("Null pointer", status.message());
  EXPECT_EQ("ZeltoMesh", status.block());
}

}  // namespace
}  // namespace zelto_test
