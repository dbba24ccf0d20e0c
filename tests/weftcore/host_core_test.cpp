// HostCore over the in-process recording component: the order of the host's
// calls, failures of OpenStream, re-entrant opening, Initialize/Finalize.
#include "weftcore/host/host_core.h"

#include <memory>

#include <gtest/gtest.h>

#include "weftcore/host/host_stream.h"
#include "weftcore/recording_component.h"

namespace {

using weftcore::Status;
using weftcore::Stream;
using weftcore::host::HostConfiguration;
using weftcore::host::HostCore;
using weftcore_test::TheRecorder;
using Events = std::vector<std::string>;

HostConfiguration RecordingConfiguration() {
  HostConfiguration configuration;
  configuration.components[weftcore_test::kRecordingComponent] = {"unused", {{{"mode", "fast"}}}};
  for (const char* type : {"recording", "failing", "mesh_like", "null"}) {
    configuration.streams[type] = {weftcore_test::kRecordingComponent, type};
  }
  configuration.streams["upstream"] = {weftcore_test::kRecordingComponent, "recording"};
  configuration.streams["loop"] = {weftcore_test::kRecordingComponent, "self_opening"};
  configuration.streams["unsupported"] = {weftcore_test::kRecordingComponent, "lidar"};
  configuration.streams["ghostly"] = {"ghost", "recording"};
  return configuration;
}

class HostCoreTest : public ::testing::Test {
 protected:
  void SetUp() override {
    TheRecorder().Reset();
    core_ = std::make_unique<HostCore>(RecordingConfiguration(), std::vector<std::string>{});
    ASSERT_TRUE(core_
                    ->RegisterComponent(weftcore_test::kRecordingComponent,
                                        weftcore_test::CreateRecordingComponent,
                                        weftcore_test::DestroyRecordingComponent)
                    .ok());
  }

  std::unique_ptr<HostCore> core_;
};

TEST_F(HostCoreTest, StreamLifeCallsTheSourceInContractOrder) {
  Stream* stream = nullptr;
  ASSERT_TRUE(core_->OpenStream("recording", &stream).ok());
  ASSERT_NE(stream, nullptr);
  ASSERT_TRUE(stream->Start().ok());
  weftcore::Frame* frame = nullptr;
  ASSERT_TRUE(stream->GetFrame(&frame, 0).ok());
  ASSERT_TRUE(stream->ReleaseFrame(frame).ok());
  ASSERT_TRUE(stream->Stop().ok());
  ASSERT_TRUE(core_->CloseStream(stream).ok());
  core_.reset();
  EXPECT_EQ(TheRecorder().Events(),
            (Events{"CreateComponent", "GetSupportedList", "CreateSource recording/7",
                    "RegisterMandatoryProperties recording", "Open recording", "Start recording",
                    "GetFrames", "ReleaseFrame 1", "Stop recording", "Close recording",
                    "ReleaseSource", "DestroyComponent"}));
}

TEST_F(HostCoreTest, SupportedListIsAskedOnceWithTheConfiguredArguments) {
  Stream* first = nullptr;
  Stream* second = nullptr;
  ASSERT_TRUE(core_->OpenStream("recording", &first).ok());
  ASSERT_TRUE(core_->OpenStream("upstream", &second).ok());
  EXPECT_NE(first, second);
  EXPECT_EQ(TheRecorder().Count("GetSupportedList"), 1);
  EXPECT_EQ(TheRecorder().last_args.values,
            (std::map<std::string, std::string>{{"mode", "fast"}}));
}

TEST_F(HostCoreTest, OpenFailureClosesAndReleasesTheSourceAndReturnsItsStatusTraced) {
  Stream* stream = nullptr;
  const Status status = core_->OpenStream("failing", &stream);
  EXPECT_EQ(status.level(), 1);
  EXPECT_EQ(status.cause(), weftcore::kCauseInvalidState);
  EXPECT_EQ(status.message(), "open refused");
  EXPECT_EQ(status.trace().size(), 1u);
  EXPECT_EQ(stream, nullptr);
  EXPECT_TRUE(core_->OpenStreamKeys().empty());
  EXPECT_EQ(TheRecorder().Events(),
            (Events{"CreateComponent", "GetSupportedList", "CreateSource failing/7",
                    "RegisterMandatoryProperties failing", "Open failing", "Close failing",
                    "ReleaseSource"}));
}

TEST_F(HostCoreTest, UnknownStreamKeyFailsWithCause4NotConfigured) {
  Stream* stream = nullptr;
  const Status status = core_->OpenStream("nope", &stream);
  EXPECT_EQ(status.level(), 1);
  EXPECT_EQ(status.cause(), 4);
  EXPECT_EQ(status.message(), "stream nope is not configured");
  EXPECT_EQ(status.block(), "core");
  EXPECT_EQ(stream, nullptr);
}

TEST_F(HostCoreTest, TypeMissingFromTheSupportedListFailsWithCause4) {
  Stream* stream = nullptr;
  const Status status = core_->OpenStream("unsupported", &stream);
  EXPECT_EQ(status.cause(), 4);
  EXPECT_EQ(status.message(), "component recording does not support source type lidar");
  EXPECT_EQ(TheRecorder().Count("CreateSource lidar/7"), 0);
}

TEST_F(HostCoreTest, UnknownComponentFailsWithCause4) {
  Stream* stream = nullptr;
  const Status status = core_->OpenStream("ghostly", &stream);
  EXPECT_EQ(status.cause(), 4);
  EXPECT_EQ(status.message(), "component ghost is neither registered nor configured");
  EXPECT_EQ(status.trace().size(), 1u);
}

TEST_F(HostCoreTest, FactoryCreatingNoSourceFailsWithCause3) {
  Stream* stream = nullptr;
  const Status status = core_->OpenStream("null", &stream);
  EXPECT_EQ(status.cause(), 3);
  EXPECT_EQ(status.message(), "component recording created no source of type null for stream null");
  EXPECT_EQ(stream, nullptr);
  EXPECT_EQ(TheRecorder().Count("ReleaseSource"), 0);
}

TEST_F(HostCoreTest, NullOutParameterFailsWithCause2) {
  const Status status = core_->OpenStream("recording", nullptr);
  EXPECT_EQ(status.cause(), 2);
  EXPECT_EQ(status.message(), "stream is null");
}

TEST_F(HostCoreTest, SourceOpensAndClosesUpstreamStreamsReentrantly) {
  Stream* mesh = nullptr;
  ASSERT_TRUE(core_->OpenStream("mesh_like", &mesh).ok());
  EXPECT_EQ(core_->OpenStreamKeys(), (Events{"upstream", "mesh_like"}));
  EXPECT_EQ(core_->InitializeCount(), 1);
  ASSERT_TRUE(core_->CloseStream(mesh).ok());
  EXPECT_TRUE(core_->OpenStreamKeys().empty());
  EXPECT_EQ(core_->InitializeCount(), 0);
  EXPECT_EQ(TheRecorder().Events(),
            (Events{"CreateComponent", "GetSupportedList", "CreateSource mesh_like/7",
                    "RegisterMandatoryProperties mesh_like", "Open mesh_like",
                    "CreateSource recording/7", "RegisterMandatoryProperties recording",
                    "Open recording", "Close mesh_like", "Close recording", "ReleaseSource",
                    "ReleaseSource"}));
}

TEST_F(HostCoreTest, OpeningAStreamFromInsideItsOwnOpenFailsWithCause3) {
  Stream* stream = nullptr;
  const Status status = core_->OpenStream("loop", &stream);
  EXPECT_EQ(status.cause(), 3);
  EXPECT_EQ(status.message(), "stream loop is opened again from inside its own Open");
  EXPECT_EQ(stream, nullptr);
  EXPECT_TRUE(core_->OpenStreamKeys().empty());
}

TEST_F(HostCoreTest, SourceOfReturnsTheSourceOfAnOpenStreamOnly) {
  Stream* stream = nullptr;
  ASSERT_TRUE(core_->OpenStream("recording", &stream).ok());
  EXPECT_EQ(core_->SourceOf(stream), static_cast<weftcore::host::HostStream*>(stream)->source());
  EXPECT_NE(core_->SourceOf(stream), nullptr);
  EXPECT_EQ(core_->SourceOf(nullptr), nullptr);
}

TEST_F(HostCoreTest, CloseStreamOfAStreamNotOpenFailsWithCause4) {
  Stream* stream = nullptr;
  ASSERT_TRUE(core_->OpenStream("recording", &stream).ok());
  ASSERT_TRUE(core_->CloseStream(stream).ok());
  const Status status = core_->CloseStream(stream);  // the pointer is only compared
  EXPECT_EQ(status.cause(), 4);
  EXPECT_EQ(status.message(), "stream is not open in this core");
  EXPECT_EQ(core_->CloseStream(nullptr).message(), "stream is null");
}

TEST_F(HostCoreTest, CloseStreamReleasesQueuedAndHandedOutFramesBeforeClose) {
  TheRecorder().frames_per_request = 2;
  Stream* stream = nullptr;
  ASSERT_TRUE(core_->OpenStream("recording", &stream).ok());
  weftcore::Frame* frame = nullptr;
  ASSERT_TRUE(stream->GetFrame(&frame, 0).ok());  // frame 1 out, frame 2 queued
  EXPECT_EQ(core_->allocator().LiveCount(), 2);
  ASSERT_TRUE(core_->CloseStream(stream).ok());
  EXPECT_EQ(core_->allocator().LiveCount(), 0);
  const Events events = TheRecorder().Events();
  const Events tail(events.end() - 4, events.end());
  EXPECT_EQ(tail, (Events{"ReleaseFrame 1", "ReleaseFrame 2", "Close recording", "ReleaseSource"}));
}

TEST_F(HostCoreTest, DestructorClosesStreamsInReverseOpeningOrderThenUnloads) {
  Stream* stream = nullptr;
  ASSERT_TRUE(core_->OpenStream("recording", &stream).ok());
  ASSERT_TRUE(core_->OpenStream("mesh_like", &stream).ok());
  TheRecorder().Reset();
  core_.reset();
  EXPECT_EQ(TheRecorder().Events(),
            (Events{"Close mesh_like", "Close recording", "ReleaseSource", "ReleaseSource",
                    "Close recording", "ReleaseSource", "DestroyComponent"}));
}

TEST_F(HostCoreTest, InitializeAndFinalizeAreReferenceCounted) {
  EXPECT_FALSE(core_->IsInitialized());
  EXPECT_TRUE(core_->Initialize().ok());
  EXPECT_TRUE(core_->Initialize().ok());
  EXPECT_EQ(core_->InitializeCount(), 2);
  EXPECT_TRUE(core_->Finalize().ok());
  EXPECT_TRUE(core_->IsInitialized());
  EXPECT_TRUE(core_->Finalize().ok());
  EXPECT_FALSE(core_->IsInitialized());
}

TEST_F(HostCoreTest, FinalizeWithoutInitializeIsHarmless) {
  EXPECT_TRUE(core_->Finalize().ok());
  EXPECT_EQ(core_->InitializeCount(), 0);
  EXPECT_TRUE(core_->Initialize().ok());
  EXPECT_EQ(core_->InitializeCount(), 1);
}

TEST_F(HostCoreTest, RegisteringAComponentTwiceFailsWithCause5) {
  const Status status = core_->RegisterComponent(weftcore_test::kRecordingComponent,
                                                 weftcore_test::CreateRecordingComponent,
                                                 weftcore_test::DestroyRecordingComponent);
  EXPECT_EQ(status.cause(), 5);
  EXPECT_EQ(status.message(), "component recording is already loaded");
  EXPECT_EQ(TheRecorder().Count("CreateComponent"), 1);
}

}  // namespace
