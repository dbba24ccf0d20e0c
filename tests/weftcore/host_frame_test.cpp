// HostFrame: channel views over a FrameInfo.
#include <gtest/gtest.h>

#include "weftcore/host/heap_allocator.h"
#include "weftcore/host/host_stream.h"

namespace {

using weftcore::Channel;
using weftcore::ChannelRawData;
using weftcore::FrameInfo;
using weftcore::Status;
using weftcore::host::HeapAllocator;
using weftcore::host::HostFrame;

class HostFrameTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(allocator_.Allocate(32, &memory_).ok()); }
  void TearDown() override { EXPECT_TRUE(allocator_.Free(memory_).ok()); }

  ChannelRawData Data(uint32_t id, uint64_t offset, uint64_t size) {
    ChannelRawData data;
    data.channelId = id;
    data.memory = memory_;
    data.offset = offset;
    data.size = size;
    data.type = "kRawDataTypeMesh";
    data.capturedTimestamp = 123456789;
    return data;
  }

  HeapAllocator allocator_;
  weftcore::Memory* memory_ = nullptr;
};

TEST_F(HostFrameTest, RawDataAddressIsMemoryAddressPlusOffset) {
  FrameInfo info;
  info.sequenceNumber = 42;
  info.channels.push_back(Data(0, 12, 20));
  HostFrame frame(info);
  Channel* channel = nullptr;
  ASSERT_TRUE(frame.GetChannel(0, &channel).ok());
  EXPECT_EQ(channel->GetChannelId(), 0u);
  Channel::RawData raw;
  ASSERT_TRUE(channel->GetRawData(&raw).ok());
  EXPECT_EQ(raw.address, static_cast<uint8_t*>(memory_->GetAddress()) + 12);
  EXPECT_EQ(raw.size, 20u);
  EXPECT_EQ(raw.type, "kRawDataTypeMesh");
  EXPECT_EQ(raw.timestamp, 123456789u);
  EXPECT_EQ(frame.GetSequenceNumber(), 42u);
}

TEST_F(HostFrameTest, ChannelListMapsEveryChannelIdToItsView) {
  FrameInfo info;
  info.channels.push_back(Data(2, 0, 8));
  info.channels.push_back(Data(0, 8, 8));
  HostFrame frame(info);
  EXPECT_EQ(frame.GetChannelCount(), 2u);
  std::map<uint32_t, Channel*> channels{{99, nullptr}};
  ASSERT_TRUE(frame.GetChannelList(&channels).ok());
  ASSERT_EQ(channels.size(), 2u);
  EXPECT_EQ(channels.at(0)->GetChannelId(), 0u);
  EXPECT_EQ(channels.at(2)->GetChannelId(), 2u);
  Channel::RawData raw;
  ASSERT_TRUE(channels.at(0)->GetRawData(&raw).ok());
  EXPECT_EQ(raw.address, static_cast<uint8_t*>(memory_->GetAddress()) + 8);
}

TEST_F(HostFrameTest, RepeatedChannelIdKeepsTheFirstChannel) {
  FrameInfo info;
  info.channels.push_back(Data(1, 0, 4));
  info.channels.push_back(Data(1, 4, 4));
  HostFrame frame(info);
  EXPECT_EQ(frame.GetChannelCount(), 1u);
  Channel* channel = nullptr;
  ASSERT_TRUE(frame.GetChannel(1, &channel).ok());
  Channel::RawData raw;
  ASSERT_TRUE(channel->GetRawData(&raw).ok());
  EXPECT_EQ(raw.address, memory_->GetAddress());
}

TEST_F(HostFrameTest, ChannelWithoutMemoryHasANullAddress) {
  FrameInfo info;
  ChannelRawData data;
  data.channelId = 5;
  data.type = "none";
  info.channels.push_back(data);
  HostFrame frame(info);
  Channel* channel = nullptr;
  ASSERT_TRUE(frame.GetChannel(5, &channel).ok());
  Channel::RawData raw;
  raw.address = &raw;
  ASSERT_TRUE(channel->GetRawData(&raw).ok());
  EXPECT_EQ(raw.address, nullptr);
  EXPECT_EQ(raw.size, 0u);
  EXPECT_EQ(raw.type, "none");
}

TEST_F(HostFrameTest, DataRunningPastItsMemoryFailsWithCause2) {
  FrameInfo info;
  info.channels.push_back(Data(3, 30, 4));
  HostFrame frame(info);
  Channel* channel = nullptr;
  ASSERT_TRUE(frame.GetChannel(3, &channel).ok());
  Channel::RawData raw;
  const Status status = channel->GetRawData(&raw);
  EXPECT_EQ(status.cause(), 2);
  EXPECT_EQ(status.message(), "channel 3 (offset 30, size 4) exceeds its memory of 32 bytes");
  EXPECT_EQ(status.block(), "core");
}

TEST_F(HostFrameTest, UnknownChannelFailsWithCause4) {
  HostFrame frame(FrameInfo{});
  Channel* channel = reinterpret_cast<Channel*>(&frame);
  const Status status = frame.GetChannel(9, &channel);
  EXPECT_EQ(status.cause(), 4);
  EXPECT_EQ(status.message(), "channel 9 is not in the frame");
  EXPECT_EQ(channel, nullptr);
}

TEST_F(HostFrameTest, NullOutParametersFailWithCause2) {
  FrameInfo info;
  info.channels.push_back(Data(0, 0, 4));
  HostFrame frame(info);
  EXPECT_EQ(frame.GetChannel(0, nullptr).message(), "channel is null");
  EXPECT_EQ(frame.GetChannelList(nullptr).message(), "channels is null");
  Channel* channel = nullptr;
  ASSERT_TRUE(frame.GetChannel(0, &channel).ok());
  EXPECT_EQ(channel->GetRawData(nullptr).message(), "raw is null");
}

}  // namespace
