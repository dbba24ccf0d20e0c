// Part 4.1, Stream::GetProperty and Stream::SetProperty over an upstream
// stream whose serialized operations the test scripts.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "properties/decode_expectations.h"
#include "properties/golden.h"
#include "properties/scripted_stream.h"

namespace {

using zelto_test::Bytes;
using zelto_test::Cat;
using zelto_test::ExpectFailure;
using zelto_test::Hex;
using zelto_test::Key;
using zelto_test::ScriptedStream;
using zelto_test::TypeMismatchMessage;

using Targets = ZeltoTof::ZeltoTofProcessTargetsProperty_;
constexpr char kKey[] = "kZeltoTofProcessTargetsKey";

Targets MakeTargets(bool depth, bool confidence, bool pointCloud) {
  Targets targets;
  targets.processDepth = depth;
  targets.processConfidence = confidence;
  targets.processPointCloud = pointCloud;
  return targets;
}

Bytes TargetsBytes(uint8_t depth, uint8_t confidence, uint8_t pointCloud) {
  return Cat({{0x83}, Key("processDepth"), {depth}, Key("processConfidence"), {confidence},
              Key("processPointCloud"), {pointCloud}});
}

weftcore::Status Failure(weftcore::Cause cause, const char* message) {
  return weftcore::Status(weftcore::kLevelError, cause, "%s", message).SetBlock("upstream");
}

TEST(StreamGetProperty, NullPropertyIsPropertyIsNullAndNothingIsCalled) {
  ScriptedStream stream;
  stream.locks.Shutdown();  // the null test comes before the lock
  const weftcore::Status status = stream.GetProperty<Targets>(kKey, nullptr);
  ExpectFailure(status, 2, "property is null");
  EXPECT_EQ(status.trace().size(), 0u);
  EXPECT_EQ(stream.getCalls, 0);
}

TEST(StreamGetProperty, TheCallersRecordIsSentAsTheInputOfTheRead) {
  ScriptedStream stream;
  stream.reply = TargetsBytes(0xC2, 0xC2, 0xC3);
  Targets targets = MakeTargets(true, false, true);
  ASSERT_TRUE(stream.GetProperty(kKey, &targets).ok());
  EXPECT_EQ(stream.getKey, kKey);
  EXPECT_EQ(Hex(stream.getInput), Hex(TargetsBytes(0xC3, 0xC2, 0xC3)));
  EXPECT_TRUE(targets == MakeTargets(false, false, true));
}

TEST(StreamGetProperty, FieldsMissingFromTheReplyKeepTheCallersValues) {
  ScriptedStream stream;
  stream.reply = Cat({{0x81}, Key("processConfidence"), {0xC3}});
  Targets targets = MakeTargets(true, false, true);
  ASSERT_TRUE(stream.GetProperty(kKey, &targets).ok());
  EXPECT_TRUE(targets == MakeTargets(true, true, true));
}

TEST(StreamGetProperty, TheReplyIsReleasedWithTheSameKeyPointerAndSize) {
  ScriptedStream stream;
  stream.reply = TargetsBytes(0xC3, 0xC3, 0xC3);
  Targets targets;
  ASSERT_TRUE(stream.GetProperty(kKey, &targets).ok());
  EXPECT_EQ(stream.releaseCalls, 1);
  EXPECT_EQ(stream.releaseKey, kKey);
  EXPECT_EQ(stream.releasedPointer, stream.handedOut);
  EXPECT_EQ(stream.releasedSize, stream.reply->size());
  EXPECT_EQ(stream.outstanding, nullptr);
}

TEST(StreamGetProperty, FailedOperationWithAReplyStillReleasesAndTheOperationFailureWins) {
  ScriptedStream stream;
  stream.reply = TargetsBytes(0xC3, 0xC3, 0xC3);
  stream.getStatus = Failure(weftcore::kCauseNotFound, "no such property");
  stream.releaseStatus = Failure(weftcore::kCauseUnknown, "release failed");
  Targets targets = MakeTargets(false, true, false);
  const weftcore::Status status = stream.GetProperty(kKey, &targets);
  ASSERT_TRUE(status.IsError());
  EXPECT_EQ(status.cause(), 4);
  EXPECT_EQ(status.message(), "no such property");
  EXPECT_EQ(status.block(), "upstream");
  EXPECT_EQ(status.trace().size(), 1u);
  EXPECT_EQ(stream.releaseCalls, 1);
  EXPECT_TRUE(targets == MakeTargets(false, true, false));  // not decoded
}

TEST(StreamGetProperty, FailedOperationWithoutAReplyReleasesNothing) {
  ScriptedStream stream;
  stream.getStatus = Failure(weftcore::kCauseNotFound, "no such property");
  Targets targets;
  const weftcore::Status status = stream.GetProperty(kKey, &targets);
  EXPECT_EQ(status.message(), "no such property");
  EXPECT_EQ(status.trace().size(), 1u);
  EXPECT_EQ(stream.releaseCalls, 0);
}

TEST(StreamGetProperty, DecodingFailureWinsOverAReleaseFailure) {
  ScriptedStream stream;
  stream.reply = Bytes{0x92, 0x01, 0x02};
  stream.releaseStatus = Failure(weftcore::kCauseUnknown, "release failed");
  Targets targets;
  const weftcore::Status status = stream.GetProperty(kKey, &targets);
  ExpectFailure(status, 8, TypeMismatchMessage(3));
  EXPECT_EQ(status.trace().size(), 1u);
  EXPECT_EQ(stream.releaseCalls, 1);
}

TEST(StreamGetProperty, ReleaseFailureIsTheResultWhenNothingFailedBefore) {
  ScriptedStream stream;
  stream.reply = TargetsBytes(0xC3, 0xC3, 0xC3);
  stream.releaseStatus = Failure(weftcore::kCauseUnknown, "release failed");
  Targets targets;
  const weftcore::Status status = stream.GetProperty(kKey, &targets);
  ASSERT_TRUE(status.IsError());
  EXPECT_EQ(status.message(), "release failed");
  EXPECT_EQ(status.trace().size(), 1u);
  EXPECT_TRUE(targets == MakeTargets(true, true, true));  // decoded all the same
}

TEST(StreamGetProperty, PartlyConvertedReplyLeavesTheConvertedFields) {
  ScriptedStream stream;
  stream.reply = Cat({{0x82}, Key("processDepth"), {0xC3}, Key("processConfidence"), {0x01}});
  Targets targets = MakeTargets(false, false, true);
  const weftcore::Status status = stream.GetProperty(kKey, &targets);
  EXPECT_EQ(status.cause(), 8);
  EXPECT_TRUE(targets == MakeTargets(true, false, true));
}

TEST(StreamGetProperty, SucceededOperationWithoutAReplyFailsAsBufferIsNull) {
  ScriptedStream stream;
  Targets targets;
  const weftcore::Status status = stream.GetProperty(kKey, &targets);
  ExpectFailure(status, 2, "buffer is null");
  EXPECT_EQ(status.trace().size(), 1u);
  EXPECT_EQ(stream.releaseCalls, 0);
}

TEST(StreamGetProperty, LockFailureIsReturnedWithATraceAndNothingIsCalled) {
  ScriptedStream stream;
  stream.locks.Shutdown();
  Targets targets;
  const weftcore::Status status = stream.GetProperty(kKey, &targets);
  ASSERT_TRUE(status.IsError());
  EXPECT_EQ(status.message(), "stream is closed");
  EXPECT_EQ(status.trace().size(), 1u);
  EXPECT_EQ(stream.getCalls, 0);
}

// Another thread asking for the property lock must wait for the whole round
// trip.
TEST(StreamGetProperty, TheFunctionLockIsHeldDuringTheRoundTrip) {
  ScriptedStream stream;
  stream.reply = TargetsBytes(0xC3, 0xC3, 0xC3);
  std::atomic<bool> otherGotLock{false};
  std::thread other;
  stream.duringOperation = [&] {
    other = std::thread([&] {
      if (stream.locks.Lock(weftcore::StreamFunctionType::kProperty).ok()) {
        otherGotLock.store(true);
        stream.locks.Unlock(weftcore::StreamFunctionType::kProperty);
      }
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(otherGotLock.load());
  };
  Targets targets;
  ASSERT_TRUE(stream.GetProperty(kKey, &targets).ok());
  other.join();
  EXPECT_TRUE(otherGotLock.load());
}

TEST(StreamSetProperty, SendsTheEncodedRecord) {
  ScriptedStream stream;
  const Targets targets = MakeTargets(true, true, false);
  ASSERT_TRUE(stream.SetProperty(kKey, &targets).ok());
  EXPECT_EQ(stream.setCalls, 1);
  EXPECT_EQ(stream.setKey, kKey);
  EXPECT_EQ(Hex(stream.setBytes), Hex(TargetsBytes(0xC3, 0xC3, 0xC2)));
  EXPECT_EQ(stream.setSize, 53u);
}

TEST(StreamSetProperty, NullPropertySendsANullPointerAndSize0) {
  ScriptedStream stream;
  ASSERT_TRUE(stream.SetProperty<Targets>(kKey, nullptr).ok());
  EXPECT_EQ(stream.setCalls, 1);
  EXPECT_TRUE(stream.setPointerWasNull);
  EXPECT_EQ(stream.setSize, 0u);
}

TEST(StreamSetProperty, OperationFailureIsReturnedWithATrace) {
  ScriptedStream stream;
  stream.setStatus = Failure(weftcore::kCauseNotAvailable, "not available to set x");
  const Targets targets;
  const weftcore::Status status = stream.SetProperty(kKey, &targets);
  ASSERT_TRUE(status.IsError());
  EXPECT_EQ(status.cause(), 10);
  EXPECT_EQ(status.message(), "not available to set x");
  EXPECT_EQ(status.trace().size(), 1u);
}

TEST(StreamSetProperty, LockFailureIsReturnedWithATraceAndNothingIsCalled) {
  ScriptedStream stream;
  stream.locks.Shutdown();
  const Targets targets;
  const weftcore::Status status = stream.SetProperty(kKey, &targets);
  ASSERT_TRUE(status.IsError());
  EXPECT_EQ(status.message(), "stream is closed");
  EXPECT_EQ(status.trace().size(), 1u);
  EXPECT_EQ(stream.setCalls, 0);
}

TEST(StreamSetProperty, TheFunctionLockIsHeldDuringTheCall) {
  ScriptedStream stream;
  std::atomic<bool> otherGotLock{false};
  std::thread other;
  stream.duringOperation = [&] {
    other = std::thread([&] {
      if (stream.locks.Lock(weftcore::StreamFunctionType::kProperty).ok()) {
        otherGotLock.store(true);
        stream.locks.Unlock(weftcore::StreamFunctionType::kProperty);
      }
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(otherGotLock.load());
  };
  const Targets targets;
  ASSERT_TRUE(stream.SetProperty(kKey, &targets).ok());
  other.join();
  EXPECT_TRUE(otherGotLock.load());
}

}  // namespace
