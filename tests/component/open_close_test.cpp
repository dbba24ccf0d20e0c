// Part 1.3: Open and Close of the mesh source.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "properties/zelto_log_level_property.h"
#include "properties/zelto_runtime_settings_property.h"
#include "properties/zelto_tof_properties.h"
#include "tests/component/mesh_source_test.h"

namespace zelto_test {
namespace {

using Keys = std::vector<std::string>;
using Calls = std::vector<std::string>;

const Keys kOwnPropertyKeys{"kZeltoLogLevelKey", "kZeltoMeshAlgorithmConfigKey",
                            "kZeltoMeshMaskSettingsKey"};

// A status handed up by Open: the callee's status with one more trace entry
// (no file, line 0).
void ExpectPassedUp(const weftcore::Status& callee, const weftcore::Status& status) {
  ASSERT_TRUE(status.IsError());
  EXPECT_EQ(callee.level(), status.level());
  EXPECT_EQ(callee.cause(), status.cause());
  EXPECT_EQ(callee.message(), status.message());
  EXPECT_EQ(callee.block(), status.block());
  ASSERT_EQ(callee.trace().size() + 1, status.trace().size());
  EXPECT_EQ("", status.trace().back().file);
  EXPECT_EQ(0, status.trace().back().line);
}

FakeProperty<ZeltoTof::ZeltoTofProcessTargetsProperty_>& ProcessTargets(FakeUpstream& upstream) {
  return upstream.Camera().Property<ZeltoTof::ZeltoTofProcessTargetsProperty_>(
      ZeltoTof::kZeltoTofProcessTargetsKey);
}

FakeProperty<Zelto::ZeltoLogLevelProperty_>& UpstreamLogLevel(FakeUpstream& upstream) {
  return upstream.ZeltoStream().Property<Zelto::ZeltoLogLevelProperty_>(Zelto::kZeltoLogLevelKey);
}

// --- Open -------------------------------------------------------------------

TEST_F(DirectOpenTest, OpenTakesAllocatorRegistersPropertiesAndOpensStreamsInOrder) {
  const weftcore::Status status = Open();
  ASSERT_TRUE(status.ok()) << status.message();
  EXPECT_EQ((Keys{""}), utility.allocatorKeys);
  EXPECT_EQ(kOwnPropertyKeys, utility.registeredKeys);
  EXPECT_EQ((Calls{"Initialize", "OpenStream zelto_stream", "OpenStream player_tof_stream",
                   "OpenStream zelto_tof_camera2_stream"}),
            core.calls);
  EXPECT_EQ(&allocator, peer().allocator());
  EXPECT_EQ(&core, peer().core());
  EXPECT_NE(nullptr, peer().zeltoStream());
  EXPECT_NE(nullptr, peer().playerStream());
  EXPECT_NE(nullptr, peer().camera2Stream());
  EXPECT_EQ(nullptr, peer().inputStream());
  EXPECT_EQ(1, host.core().InitializeCount());
  source.Close();
}

TEST_F(DirectOpenTest, OpenAdoptsTheLogLevelOfZeltoStream) {
  StreamSourceLogger().SetLogLevel(ZeltoLogger::Error);
  UpstreamLogLevel(upstream).value.logLevel = ZeltoLogger::Info;
  ASSERT_TRUE(Open().ok());
  EXPECT_EQ(ZeltoLogger::Info, StreamSourceLogger().GetLogLevel());
  // The record sent with the read holds Silent (8).
  ASSERT_EQ(1u, UpstreamLogLevel(upstream).readInputs.size());
  EXPECT_EQ(ZeltoLogger::Silent, UpstreamLogLevel(upstream).readInputs[0].logLevel);
  source.Close();
}

TEST_F(DirectOpenTest, OpenWithAnOutOfRangeUpstreamLogLevelKeepsTheLoggerAndSucceeds) {
  StreamSourceLogger().SetLogLevel(ZeltoLogger::Warn);
  UpstreamLogLevel(upstream).value.logLevel = static_cast<ZeltoLogger::LogLevel>(9);
  EXPECT_TRUE(Open().ok());
  EXPECT_EQ(ZeltoLogger::Warn, StreamSourceLogger().GetLogLevel());
  source.Close();
}

TEST_F(MeshSourceTest, PlayerStreamAbsentOpenReturnsOkAndPlayerStreamIsNull) {
  upstream.Remove(ZeltoTof::kCamera2StreamPlaybackKey);
  ASSERT_NO_FATAL_FAILURE(OpenMesh());
  EXPECT_EQ(nullptr, peer().playerStream());
  EXPECT_NE(nullptr, peer().camera2Stream());
  EXPECT_EQ((Keys{"zelto_stream", "zelto_tof_camera2_stream", "mesh"}),
            host->core().OpenStreamKeys());
}

TEST_F(DirectOpenTest, Camera2StreamAbsentOpenFailsWhileZeltoAndPlayerStreamsStayOpenUntilClose) {
  upstream.Remove(ZeltoTof::kCamera2StreamKey);
  const weftcore::Status status = Open();
  ExpectPassedUp(core.openResults.at("zelto_tof_camera2_stream"), status);
  EXPECT_EQ(weftcore::kCauseNotFound, status.cause());
  EXPECT_EQ("fake stream zelto_tof_camera2_stream is absent", status.message());
  EXPECT_EQ((Keys{"zelto_stream", "player_tof_stream"}), host.core().OpenStreamKeys());
  EXPECT_EQ(nullptr, peer().camera2Stream());

  const size_t beforeClose = core.calls.size();
  EXPECT_TRUE(source.Close().ok());
  EXPECT_TRUE(host.core().OpenStreamKeys().empty());
  // The camera pointer is closed without a null test, as specified.
  EXPECT_EQ((Calls{"CloseStream zelto_stream", "CloseStream null", "CloseStream player_tof_stream",
                   "Finalize"}),
            CallsSince(beforeClose));
}

TEST_F(DirectOpenTest, ProcessTargetsUnreadableOpenStillReturnsOkAndWritesNothing) {
  ProcessTargets(upstream).readable = false;
  EXPECT_TRUE(Open().ok());
  EXPECT_EQ(1, ProcessTargets(upstream).reads);
  EXPECT_TRUE(ProcessTargets(upstream).writes.empty());
  EXPECT_EQ(0, ProcessTargets(upstream).refusedWrites);
  source.Close();
}

TEST_F(DirectOpenTest, ProcessTargetsReadableGetThePointCloudSwitchedOn) {
  ASSERT_TRUE(Open().ok());
  FakeProperty<ZeltoTof::ZeltoTofProcessTargetsProperty_>& targets = ProcessTargets(upstream);
  // Read with a zeroed record, written back with the third field set and
  // the upstream's other fields kept.
  ASSERT_EQ(1u, targets.readInputs.size());
  EXPECT_FALSE(targets.readInputs[0].processDepth);
  EXPECT_FALSE(targets.readInputs[0].processConfidence);
  EXPECT_FALSE(targets.readInputs[0].processPointCloud);
  ASSERT_EQ(1u, targets.writes.size());
  EXPECT_TRUE(targets.writes[0].processDepth);
  EXPECT_FALSE(targets.writes[0].processConfidence);
  EXPECT_TRUE(targets.writes[0].processPointCloud);
  source.Close();
}

TEST_F(DirectOpenTest, ProcessTargetsWriteRefusedOpenStillReturnsOk) {
  ProcessTargets(upstream).writable = false;
  EXPECT_TRUE(Open().ok());
  EXPECT_EQ(1, ProcessTargets(upstream).refusedWrites);
  source.Close();
}

TEST_F(DirectOpenTest, NoAllocatorOpenFailsBeforeAnythingElse) {
  FakeUtility noAllocator(nullptr);
  const weftcore::Status status = source.Open(&core, &noAllocator);
  ExpectPassedUp(FakeUtility::AllocatorFailure(), status);
  EXPECT_TRUE(noAllocator.registeredKeys.empty());
  EXPECT_TRUE(core.calls.empty());
  EXPECT_EQ(nullptr, peer().core());
}

TEST_F(DirectOpenTest, CoreInitializeFailureFailsOpenAfterTheProperties) {
  core.failInitialize = true;
  const weftcore::Status status = Open();
  ExpectPassedUp(RecordingCore::InitializeFailure(), status);
  EXPECT_EQ(kOwnPropertyKeys, utility.registeredKeys);
  EXPECT_EQ((Calls{"Initialize"}), core.calls);
  EXPECT_EQ(&core, peer().core());
}

TEST_F(DirectOpenTest, ZeltoStreamNotOpenableFailsOpen) {
  upstream.Remove(Zelto::kStreamKey);
  const weftcore::Status status = Open();
  ExpectPassedUp(core.openResults.at("zelto_stream"), status);
  EXPECT_EQ("fake stream zelto_stream is absent", status.message());
  EXPECT_EQ((Calls{"Initialize", "OpenStream zelto_stream"}), core.calls);
  source.Close();
}

TEST_F(DirectOpenTest, LogLevelUnreadableFailsOpenBeforeTheCameraStreams) {
  StreamSourceLogger().SetLogLevel(ZeltoLogger::Error);
  UpstreamLogLevel(upstream).readable = false;
  const weftcore::Status status = Open();
  ASSERT_TRUE(status.IsError());
  EXPECT_EQ(weftcore::kCauseInvalidState, status.cause());
  EXPECT_EQ("fake property kZeltoLogLevelKey is unreadable", status.message());
  EXPECT_EQ("fake", status.block());
  ASSERT_FALSE(status.trace().empty());
  EXPECT_EQ("", status.trace().back().file);
  EXPECT_EQ(0, status.trace().back().line);
  EXPECT_EQ((Calls{"Initialize", "OpenStream zelto_stream"}), core.calls);
  EXPECT_EQ(ZeltoLogger::Error, StreamSourceLogger().GetLogLevel());
  source.Close();
}

TEST_F(DirectOpenTest, PropertyRegistrationFailuresAreIgnored) {
  utility.refuseProperties = true;
  EXPECT_TRUE(Open().ok());
  EXPECT_EQ(kOwnPropertyKeys, utility.refusedKeys);
  source.Close();
}

// Deviation: null arguments fail instead of crashing.
TEST_F(DirectOpenTest, OpenWithNullArgumentsFails) {
  for (const weftcore::Status& status :
       {source.Open(nullptr, &utility), source.Open(&core, nullptr)}) {
    ASSERT_TRUE(status.IsError());
    EXPECT_EQ(weftcore::kCauseInvalidArgument, status.cause());
    EXPECT_EQ("Null pointer", status.message());
    EXPECT_EQ("ZeltoMesh", status.block());
  }
  EXPECT_TRUE(core.calls.empty());
}

// --- Close ------------------------------------------------------------------

TEST_F(DirectOpenTest, CloseClosesEveryStreamThenFinalizesAndKeepsTheCore) {
  ASSERT_TRUE(Open().ok());
  const size_t beforeClose = core.calls.size();
  EXPECT_TRUE(source.Close().ok());
  EXPECT_EQ((Calls{"CloseStream zelto_stream", "CloseStream zelto_tof_camera2_stream",
                   "CloseStream player_tof_stream", "Finalize"}),
            CallsSince(beforeClose));
  EXPECT_EQ(nullptr, peer().zeltoStream());
  EXPECT_EQ(nullptr, peer().camera2Stream());
  EXPECT_EQ(nullptr, peer().playerStream());
  EXPECT_EQ(nullptr, peer().segmentationStream());
  EXPECT_EQ(nullptr, peer().inputStream());
  EXPECT_EQ(&core, peer().core());
  EXPECT_TRUE(host.core().OpenStreamKeys().empty());
  EXPECT_EQ(0, host.core().InitializeCount());
  EXPECT_EQ(1, upstream.Camera().counts.closes);
  EXPECT_EQ(1, upstream.Player().counts.closes);
  EXPECT_EQ(1, upstream.ZeltoStream().counts.closes);
}

// Deviation: the arrays are freed once and all four pointers nulled, so the
// second Close frees nothing (the original freed two arrays again).
TEST_F(DirectOpenTest, CloseTwiceFreesTheBuilderArraysOnceAndNullsAllFour) {
  ASSERT_TRUE(Open().ok());
  upstream.Camera().SetSteadyFrame(FlatPointCloudFrame(1000, 1));
  ASSERT_TRUE(source.Start().ok());
  std::vector<weftcore::FrameInfo> frames;
  source.GetFrames(&frames);
  source.GetFrames(&frames);
  ASSERT_EQ(2u, frames.size());
  for (const weftcore::FrameInfo& frame : frames) source.ReleaseFrame(frame, nullptr);
  const ZeltoMesh::MeshBuilder& builder = peer().meshBuilder();
  ASSERT_NE(nullptr, VerticesOf(builder.first()));
  ASSERT_NE(nullptr, TrianglesOf(builder.second()));

  EXPECT_TRUE(source.Close().ok());
  EXPECT_EQ(nullptr, VerticesOf(builder.first()));
  EXPECT_EQ(nullptr, TrianglesOf(builder.first()));
  EXPECT_EQ(nullptr, VerticesOf(builder.second()));
  EXPECT_EQ(nullptr, TrianglesOf(builder.second()));

  const size_t beforeSecondClose = core.calls.size();
  EXPECT_TRUE(source.Close().ok());
  EXPECT_EQ(nullptr, VerticesOf(builder.first()));
  EXPECT_EQ(nullptr, VerticesOf(builder.second()));
  // The core is still stored: the camera and player pointers (now null) are
  // closed without a null test, then the core is finalized.
  EXPECT_EQ((Calls{"CloseStream null", "CloseStream null", "Finalize"}),
            CallsSince(beforeSecondClose));
  EXPECT_EQ(0, allocator.LiveCount());
}

TEST(MeshSourceClose, CloseWithoutOpenCallsNothingAndReturnsOk) {
  ZeltoMeshStreamSource source;
  EXPECT_TRUE(source.Close().ok());
  const ZeltoMeshStreamSourceTestPeer peer(&source);
  EXPECT_EQ(nullptr, peer.core());
  EXPECT_EQ(nullptr, peer.zeltoStream());
  EXPECT_EQ(nullptr, peer.camera2Stream());
  EXPECT_EQ(nullptr, peer.playerStream());
  EXPECT_EQ(nullptr, peer.segmentationStream());
  EXPECT_EQ(nullptr, VerticesOf(peer.meshBuilder().first()));
  EXPECT_EQ(nullptr, VerticesOf(peer.meshBuilder().second()));
}

TEST_F(DirectOpenTest, CloseWithoutOpenCallsNothingOnACoreNeverStored) {
  FakeUtility noAllocator(nullptr);
  ASSERT_TRUE(source.Open(&core, &noAllocator).IsError());
  EXPECT_TRUE(source.Close().ok());
  EXPECT_TRUE(core.calls.empty());
}

TEST_F(DirectOpenTest, DestructionWithoutCloseClosesNoStream) {
  auto owned = std::make_unique<ZeltoMeshStreamSource>();
  ASSERT_TRUE(owned->Open(&core, &utility).ok());
  const size_t afterOpen = core.calls.size();
  owned.reset();
  EXPECT_TRUE(CallsSince(afterOpen).empty());
  EXPECT_EQ((Keys{"zelto_stream", "player_tof_stream", "zelto_tof_camera2_stream"}),
            host.core().OpenStreamKeys());
}

}  // namespace
}  // namespace zelto_test
