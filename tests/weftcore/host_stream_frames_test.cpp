// HostStream frames: GetFrame's timeout semantics, release, frame memory.
#include <chrono>
#include <memory>

#include <gtest/gtest.h>

#include "weftcore/host/host_core.h"
#include "weftcore/host/host_stream.h"
#include "weftcore/osal.h"
#include "weftcore/recording_component.h"
#include "weftcore/recording_core.h"

namespace {

using weftcore::Frame;
using weftcore::Status;
using weftcore::Stream;
using weftcore::host::HostConfiguration;
using weftcore::host::HostCore;
using weftcore::host::HostStream;
using weftcore_test::TheRecorder;
using Clock = std::chrono::steady_clock;

constexpr int kNever = 1 << 30;

class HostStreamFramesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    TheRecorder().Reset();
    core_ = weftcore_test::MakeRecordingCore();
    ASSERT_NE(nullptr, core_);
  }
  void TearDown() override { weftcore::osal::SetSleepHook(nullptr); }

  HostStream* Open() {
    Stream* stream = nullptr;
    EXPECT_TRUE(core_->OpenStream("recording", &stream).ok());
    return static_cast<HostStream*>(stream);
  }

  std::unique_ptr<HostCore> core_;
};

TEST_F(HostStreamFramesTest, ZeroTimeoutAsksTheSourceOnceAndReturnsOkWithNullWhenNone) {
  TheRecorder().deliver_from_request = kNever;
  HostStream* stream = Open();
  Frame* frame = reinterpret_cast<Frame*>(stream);  // must be reset to null
  const Status status = stream->GetFrame(&frame, 0);
  EXPECT_TRUE(status.ok());
  EXPECT_EQ(frame, nullptr);
  EXPECT_EQ(TheRecorder().get_frames_calls, 1);
}

TEST_F(HostStreamFramesTest, ZeroTimeoutReturnsAReadyFrame) {
  HostStream* stream = Open();
  Frame* frame = nullptr;
  ASSERT_TRUE(stream->GetFrame(&frame, 0).ok());
  ASSERT_NE(frame, nullptr);
  EXPECT_EQ(frame->GetSequenceNumber(), 1u);
  EXPECT_EQ(frame->GetChannelCount(), 2u);
  EXPECT_EQ(stream->OutstandingFrames(), 1u);
  EXPECT_TRUE(stream->ReleaseFrame(frame).ok());
  EXPECT_EQ(stream->OutstandingFrames(), 0u);
}

TEST_F(HostStreamFramesTest, PositiveTimeoutKeepsAskingUntilAFrameComes) {
  TheRecorder().deliver_from_request = 4;
  HostStream* stream = Open();
  Frame* frame = nullptr;
  ASSERT_TRUE(stream->GetFrame(&frame, 10'000).ok());
  ASSERT_NE(frame, nullptr);
  EXPECT_EQ(TheRecorder().get_frames_calls, 4);
  EXPECT_TRUE(stream->ReleaseFrame(frame).ok());
}

TEST_F(HostStreamFramesTest, PositiveTimeoutWaitsAtLeastThatLongThenReturnsOkWithNull) {
  TheRecorder().deliver_from_request = kNever;
  HostStream* stream = Open();
  Frame* frame = nullptr;
  const auto before = Clock::now();
  ASSERT_TRUE(stream->GetFrame(&frame, 20).ok());
  EXPECT_GE(Clock::now() - before, std::chrono::milliseconds(20));
  EXPECT_EQ(frame, nullptr);
  EXPECT_GE(TheRecorder().get_frames_calls, 2);
  EXPECT_LE(TheRecorder().get_frames_calls, 21);  // polled at most once per millisecond
}

TEST_F(HostStreamFramesTest, WaitingUsesRealSleepsNotOSSleep) {
  int hooked_sleeps = 0;
  weftcore::osal::SetSleepHook([&hooked_sleeps](uint64_t) { ++hooked_sleeps; });
  TheRecorder().deliver_from_request = kNever;
  HostStream* stream = Open();
  Frame* frame = nullptr;
  ASSERT_TRUE(stream->GetFrame(&frame, 5).ok());
  EXPECT_EQ(hooked_sleeps, 0);
}

TEST_F(HostStreamFramesTest, NegativeTimeoutFailsWithCause2) {
  HostStream* stream = Open();
  Frame* frame = nullptr;
  const Status status = stream->GetFrame(&frame, -1);
  EXPECT_EQ(status.cause(), 2);
  EXPECT_EQ(status.message(), "timeout_msec is negative: -1");
  EXPECT_EQ(TheRecorder().get_frames_calls, 0);
}

TEST_F(HostStreamFramesTest, QueuedFramesAreHandedOutBeforeTheSourceIsAskedAgain) {
  TheRecorder().frames_per_request = 3;
  HostStream* stream = Open();
  for (uint64_t expected = 1; expected <= 3; ++expected) {
    Frame* frame = nullptr;
    ASSERT_TRUE(stream->GetFrame(&frame, 0).ok());
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(frame->GetSequenceNumber(), expected);
    EXPECT_EQ(stream->QueuedFrames(), 3 - expected);
    EXPECT_TRUE(stream->ReleaseFrame(frame).ok());
  }
  EXPECT_EQ(TheRecorder().get_frames_calls, 1);
}

TEST_F(HostStreamFramesTest, FrameViewsShowTheSourcesDataAtMemoryPlusOffset) {
  HostStream* stream = Open();
  Frame* frame = nullptr;
  ASSERT_TRUE(stream->GetFrame(&frame, 0).ok());
  const auto& info = static_cast<weftcore::host::HostFrame*>(frame)->info();
  weftcore::Channel* channel = nullptr;
  ASSERT_TRUE(frame->GetChannel(0, &channel).ok());
  weftcore::Channel::RawData raw;
  ASSERT_TRUE(channel->GetRawData(&raw).ok());
  EXPECT_EQ(raw.address, static_cast<uint8_t*>(info.channels[0].memory->GetAddress()) +
                             weftcore_test::kDataOffset);
  EXPECT_EQ(raw.size, weftcore_test::kDataSize);
  EXPECT_EQ(raw.type, weftcore_test::kTestRawDataType);
  EXPECT_EQ(raw.timestamp, weftcore_test::kTimestampBase + 1);
  EXPECT_EQ(static_cast<const uint8_t*>(raw.address)[0], 1);
  EXPECT_TRUE(stream->ReleaseFrame(frame).ok());
}

TEST_F(HostStreamFramesTest, AllocatorLiveCountReturnsToZeroAfterFramesAreReleased) {
  TheRecorder().frames_per_request = 2;
  HostStream* stream = Open();
  std::vector<Frame*> frames(4, nullptr);
  for (Frame*& frame : frames) ASSERT_TRUE(stream->GetFrame(&frame, 0).ok());
  EXPECT_EQ(core_->allocator().LiveCount(), 4);
  for (Frame* frame : frames) EXPECT_TRUE(stream->ReleaseFrame(frame).ok());
  EXPECT_EQ(core_->allocator().LiveCount(), 0);
  EXPECT_EQ(core_->allocator().TotalAllocations(), 4);
  EXPECT_EQ(TheRecorder().Count("ReleaseFrame 3"), 1);
}

TEST_F(HostStreamFramesTest, ReleasingAFrameTwiceFailsWithCause4) {
  HostStream* stream = Open();
  Frame* frame = nullptr;
  ASSERT_TRUE(stream->GetFrame(&frame, 0).ok());
  ASSERT_TRUE(stream->ReleaseFrame(frame).ok());
  const Status status = stream->ReleaseFrame(frame);  // the pointer is only compared
  EXPECT_EQ(status.cause(), 4);
  EXPECT_EQ(status.message(), "frame is not outstanding on stream recording");
  EXPECT_EQ(stream->ReleaseFrame(nullptr).message(), "frame is null");
  EXPECT_EQ(stream->GetFrame(nullptr, 0).message(), "frame is null");
}

TEST_F(HostStreamFramesTest, StartAndStopReachTheSource) {
  HostStream* stream = Open();
  EXPECT_TRUE(stream->Start().ok());
  EXPECT_TRUE(stream->Stop().ok());
  EXPECT_EQ(TheRecorder().Count("Start recording"), 1);
  EXPECT_EQ(TheRecorder().Count("Stop recording"), 1);
}

// A stream built by hand, so that it can be used after Shutdown.
TEST(HostStreamShutdown, FunctionsAfterShutdownFailWithStreamIsClosed) {
  TheRecorder().Reset();
  std::unique_ptr<weftcore::StandardComponent> component(
      weftcore_test::CreateRecordingComponent());
  weftcore::StreamSourceFactory* factory = component->GetFactory();
  weftcore::StreamSource* source = nullptr;
  ASSERT_TRUE(factory->CreateSource({"recording", 7}, &source).ok());
  weftcore::host::HeapAllocator allocator;
  HostStream stream("manual", factory, source, &allocator);
  ASSERT_TRUE(source->Open(nullptr, stream.utility()).ok());
  ASSERT_TRUE(stream.Shutdown().ok());
  EXPECT_TRUE(stream.Shutdown().ok());  // once only
  EXPECT_EQ(stream.source(), nullptr);

  Frame* frame = nullptr;
  for (const Status& status :
       {stream.Start(), stream.Stop(), stream.GetFrame(&frame, 0),
        stream.SetSerializedProperty("frame_rate_property", nullptr, 0)}) {
    EXPECT_EQ(status.cause(), 3);
    EXPECT_EQ(status.message(), "stream is closed");
    EXPECT_EQ(status.trace().size(), 1u);
  }
  EXPECT_EQ(TheRecorder().Count("Close recording"), 1);
  EXPECT_EQ(TheRecorder().Count("ReleaseSource"), 1);
}

}  // namespace
