// Serialized properties through a stream, and the stream utility's look-ups.
#include <cstring>
#include <memory>

#include <gtest/gtest.h>

#include "weftcore/host/host_core.h"
#include "weftcore/host/host_stream.h"
#include "weftcore/recording_component.h"
#include "weftcore/recording_core.h"

namespace {

using weftcore::ChannelInfoProperty;
using weftcore::FrameRateProperty;
using weftcore::Status;
using weftcore::Stream;
using weftcore::host::HostConfiguration;
using weftcore::host::HostCore;
using weftcore::host::HostStream;
using weftcore_test::TheRecorder;
using Bytes = std::vector<uint8_t>;

class HostStreamPropertiesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    TheRecorder().Reset();
    core_ = weftcore_test::MakeRecordingCore();
    ASSERT_NE(nullptr, core_);
    Stream* stream = nullptr;
    ASSERT_TRUE(core_->OpenStream("recording", &stream).ok());
    stream_ = static_cast<HostStream*>(stream);
  }

  std::unique_ptr<HostCore> core_;
  HostStream* stream_ = nullptr;
};

TEST_F(HostStreamPropertiesTest, MandatoryPropertiesAreRegistered) {
  EXPECT_EQ(stream_->utility()->PropertyKeys(),
            (std::vector<std::string>{"channel_info_property", "frame_rate_property"}));
}

TEST_F(HostStreamPropertiesTest, SerializedGetReturnsTheRecordsMessagePackBytes) {
  void* reply = nullptr;
  size_t size = 0;
  ASSERT_TRUE(
      stream_->GetSerializedProperty(weftcore::kFrameRatePropertyKey, nullptr, 0, &reply, &size)
          .ok());
  ASSERT_NE(reply, nullptr);
  const Bytes bytes(static_cast<uint8_t*>(reply), static_cast<uint8_t*>(reply) + size);
  EXPECT_EQ(bytes, (Bytes{0x82, 0xA3, 'n', 'u', 'm', 0x1E, 0xA5, 'd', 'e', 'n', 'o', 'm', 0x01}));
  EXPECT_TRUE(stream_->ReleaseSerializedProperty(weftcore::kFrameRatePropertyKey, reply, size).ok());
}

TEST_F(HostStreamPropertiesTest, SerializedSetReachesTheSourceHandler) {
  const Bytes bytes{0x82, 0xA3, 'n', 'u', 'm', 0x0F, 0xA5, 'd', 'e', 'n', 'o', 'm', 0x02};
  ASSERT_TRUE(stream_
                  ->SetSerializedProperty(weftcore::kFrameRatePropertyKey, bytes.data(),
                                          bytes.size())
                  .ok());
  EXPECT_EQ(TheRecorder().frame_rate.num, 15u);
  EXPECT_EQ(TheRecorder().frame_rate.denom, 2u);
}

TEST_F(HostStreamPropertiesTest, TypedGetPropertyRoundTripsThroughTheAccessor) {
  TheRecorder().frame_rate = FrameRateProperty{60, 1};
  FrameRateProperty rate;
  ASSERT_TRUE(stream_->GetProperty(weftcore::kFrameRatePropertyKey, &rate).ok());
  EXPECT_EQ(rate.num, 60u);
  EXPECT_EQ(rate.denom, 1u);
}

TEST_F(HostStreamPropertiesTest, TypedSetPropertyThenGetPropertyReadsTheNewValue) {
  const FrameRateProperty wanted{24, 5};
  ASSERT_TRUE(stream_->SetProperty(weftcore::kFrameRatePropertyKey, &wanted).ok());
  FrameRateProperty rate;
  ASSERT_TRUE(stream_->GetProperty(weftcore::kFrameRatePropertyKey, &rate).ok());
  EXPECT_EQ(rate.num, 24u);
  EXPECT_EQ(rate.denom, 5u);
}

TEST_F(HostStreamPropertiesTest, ChannelInfoGetReadsTheSourcesChannels) {
  ChannelInfoProperty info;
  ASSERT_TRUE(stream_->GetProperty(weftcore::kChannelInfoPropertyKey, &info).ok());
  ASSERT_EQ(info.channels.size(), 1u);
  EXPECT_EQ(info.channels.at(0).raw_data_type, weftcore_test::kTestRawDataType);
  EXPECT_EQ(info.channels.at(0).description, "test data");
}

TEST_F(HostStreamPropertiesTest, ChannelInfoSetFailsWithTheBaseDefaultCause10) {
  const ChannelInfoProperty info;
  const Status status = stream_->SetProperty(weftcore::kChannelInfoPropertyKey, &info);
  EXPECT_EQ(status.level(), 1);
  EXPECT_EQ(status.cause(), 10);
  EXPECT_EQ(status.message(), "not available to set channel_info_property");
  EXPECT_EQ(status.block(), "core");
  // accessor, stream, Stream::SetProperty
  EXPECT_EQ(status.trace().size(), 3u);
}

TEST_F(HostStreamPropertiesTest, SetPropertyWithNullRecordCallsTheHandlerWithNull) {
  const Status status =
      stream_->SetProperty(weftcore::kFrameRatePropertyKey, static_cast<FrameRateProperty*>(nullptr));
  EXPECT_EQ(status.cause(), 2);
  EXPECT_EQ(status.message(), "Null pointer");
}

TEST_F(HostStreamPropertiesTest, UnknownKeyFailsWithCause4NotRegistered) {
  void* reply = nullptr;
  size_t size = 0;
  for (const Status& status :
       {stream_->GetSerializedProperty("no_such", nullptr, 0, &reply, &size),
        stream_->ReleaseSerializedProperty("no_such", nullptr, 0),
        stream_->SetSerializedProperty("no_such", nullptr, 0)}) {
    EXPECT_EQ(status.level(), 1);
    EXPECT_EQ(status.cause(), 4);
    EXPECT_EQ(status.message(), "property no_such is not registered");
    EXPECT_EQ(status.block(), "core");
  }
  EXPECT_EQ(reply, nullptr);
  FrameRateProperty rate;
  EXPECT_EQ(stream_->GetProperty("no_such", &rate).message(), "property no_such is not registered");
}

TEST_F(HostStreamPropertiesTest, MalformedBytesFailWithCause8AndLeaveTheSourceAlone) {
  const Bytes bytes{0x92, 0x01, 0x02};  // an array, not a map
  const Status status = stream_->SetSerializedProperty(weftcore::kFrameRatePropertyKey,
                                                       bytes.data(), bytes.size());
  EXPECT_EQ(status.cause(), 8);
  EXPECT_EQ(TheRecorder().frame_rate.num, 30u);
}

TEST_F(HostStreamPropertiesTest, PropertyFunctionLockIsReentrantWhileHeld) {
  weftcore::StreamFunctionLock held(stream_->GetFunctionLockManager(),
                                    weftcore::StreamFunctionType::kProperty);
  ASSERT_TRUE(held.GetStatus().ok());
  FrameRateProperty rate;
  EXPECT_TRUE(stream_->GetProperty(weftcore::kFrameRatePropertyKey, &rate).ok());
}

// A property accessor that reports its own destruction.
class TrackedAccessor final : public weftcore::PropertyAccessor {
 public:
  TrackedAccessor(const std::string& key, bool* destroyed)
      : PropertyAccessor(key), destroyed_(destroyed) {}
  ~TrackedAccessor() override { *destroyed_ = true; }
  Status Set(const std::string&, const void*, size_t) override { return Status(); }
  Status Get(const std::string&, void**, size_t*, const void*, size_t) override {
    return Status();
  }
  Status Release(const std::string&, void*, size_t) override { return Status(); }

 private:
  bool* destroyed_;
};

TEST_F(HostStreamPropertiesTest, DuplicateRegistrationFailsWithCause5AndCallerKeepsOwnership) {
  bool destroyed = false;
  auto accessor = std::make_unique<TrackedAccessor>(weftcore::kFrameRatePropertyKey, &destroyed);
  const Status status = stream_->utility()->RegisterProperty(accessor.get());
  EXPECT_EQ(status.level(), 1);
  EXPECT_EQ(status.cause(), 5);
  EXPECT_EQ(status.message(), "property frame_rate_property is already registered");
  EXPECT_EQ(status.block(), "core");
  EXPECT_FALSE(destroyed);
  accessor.reset();
  EXPECT_TRUE(destroyed);
}

TEST_F(HostStreamPropertiesTest, RegisteredAccessorIsOwnedAndFoundByKey) {
  bool destroyed = false;
  auto* accessor = new TrackedAccessor("extra", &destroyed);
  ASSERT_TRUE(stream_->utility()->RegisterProperty(accessor).ok());
  EXPECT_EQ(stream_->utility()->FindProperty("extra"), accessor);
  EXPECT_EQ(stream_->utility()->FindProperty("absent"), nullptr);
  ASSERT_TRUE(core_->CloseStream(stream_).ok());
  EXPECT_TRUE(destroyed);
}

TEST_F(HostStreamPropertiesTest, RegisteringNullFailsWithCause2) {
  const Status status = stream_->utility()->RegisterProperty(nullptr);
  EXPECT_EQ(status.cause(), 2);
  EXPECT_EQ(status.message(), "accessor is null");
}

TEST_F(HostStreamPropertiesTest, EmptyAllocatorKeyNamesTheCoresHeapAllocator) {
  weftcore::MemoryAllocator* allocator = nullptr;
  ASSERT_TRUE(stream_->utility()->GetAllocator("", &allocator).ok());
  EXPECT_EQ(allocator, &core_->allocator());
}

TEST_F(HostStreamPropertiesTest, OtherAllocatorKeysFailWithCause4) {
  weftcore::MemoryAllocator* allocator = nullptr;
  const Status status = stream_->utility()->GetAllocator("gpu", &allocator);
  EXPECT_EQ(status.level(), 1);
  EXPECT_EQ(status.cause(), 4);
  EXPECT_EQ(status.message(), "allocator gpu is not registered");
  EXPECT_EQ(status.block(), "core");
  EXPECT_EQ(allocator, nullptr);
  EXPECT_EQ(stream_->utility()->GetAllocator("", nullptr).message(), "allocator is null");
}

}  // namespace
