#include "weftcore/osal.h"

#include <chrono>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "weftcore/serialize.h"

namespace {

namespace osal = weftcore::osal;

TEST(OSMemcpy, CopiesCountBytesIntoALargeEnoughBlock) {
  const char source[4] = {'a', 'b', 'c', 'd'};
  char target[6] = {'x', 'x', 'x', 'x', 'x', 'x'};
  EXPECT_TRUE(osal::OSMemcpy(target, sizeof(target), source, 3));
  EXPECT_EQ(std::string(target, 6), "abcxxx");
}

TEST(OSMemcpy, CopiesNothingAndFailsWhenTheBlockIsTooSmall) {
  const char source[4] = {'a', 'b', 'c', 'd'};
  char target[3] = {'x', 'x', 'x'};
  EXPECT_FALSE(osal::OSMemcpy(target, sizeof(target), source, 4));
  EXPECT_EQ(std::string(target, 3), "xxx");
}

TEST(OSMemcpy, FailsOnNullPointers) {
  char target[2] = {};
  EXPECT_FALSE(osal::OSMemcpy(nullptr, 2, "ab", 2));
  EXPECT_FALSE(osal::OSMemcpy(target, 2, nullptr, 2));
}

TEST(OSMemcpy, ZeroCountSucceedsWithoutTouchingAnything) {
  EXPECT_TRUE(osal::OSMemcpy(nullptr, 0, nullptr, 0));
}

TEST(SerializeMemcpy, BehavesLikeOSMemcpy) {
  char target[2] = {'x', 'x'};
  EXPECT_TRUE(weftcore::serialize::Memcpy(target, 2, "ab", 2));
  EXPECT_EQ(std::string(target, 2), "ab");
  EXPECT_FALSE(weftcore::serialize::Memcpy(target, 1, "ab", 2));
}

class SleepHookTest : public ::testing::Test {
 protected:
  void TearDown() override { osal::SetSleepHook(nullptr); }
};

TEST_F(SleepHookTest, HookReceivesTheNanosecondsInsteadOfSleeping) {
  std::vector<uint64_t> sleeps;
  osal::SetSleepHook([&sleeps](uint64_t nanoseconds) { sleeps.push_back(nanoseconds); });
  const auto before = std::chrono::steady_clock::now();
  osal::OSSleep(5'000'000'000ull);
  osal::OSSleep(1'000'000);
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(1));
  EXPECT_EQ(sleeps, (std::vector<uint64_t>{5'000'000'000ull, 1'000'000}));
}

TEST_F(SleepHookTest, SetSleepHookReturnsThePreviousHook) {
  int first_calls = 0;
  osal::SetSleepHook([&first_calls](uint64_t) { ++first_calls; });
  osal::SleepHook previous = osal::SetSleepHook([](uint64_t) {});
  ASSERT_TRUE(previous);
  previous(1);
  EXPECT_EQ(first_calls, 1);
}

TEST_F(SleepHookTest, EmptyHookRestoresTheRealSleep) {
  int calls = 0;
  osal::SetSleepHook([&calls](uint64_t) { ++calls; });
  osal::SetSleepHook(nullptr);
  const auto before = std::chrono::steady_clock::now();
  osal::OSSleep(2'000'000);
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(2));
  EXPECT_EQ(calls, 0);
}

struct LogRecord {
  int type;
  std::string tag;
  std::string message;
  bool operator==(const LogRecord& other) const {
    return type == other.type && tag == other.tag && message == other.message;
  }
};

class LogSinkTest : public ::testing::Test {
 protected:
  void TearDown() override { osal::SetLogSink(nullptr); }
};

TEST_F(LogSinkTest, WithoutSinkDeliveryReportsFalse) {
  osal::SetLogSink(nullptr);
  EXPECT_FALSE(osal::DeliverToLogSink(2, "ZeltoMesh", "dropped"));
}

TEST_F(LogSinkTest, SinkReceivesTypeTagAndMessage) {
  std::vector<LogRecord> records;
  osal::SetLogSink([&records](int type, const char* tag, const char* message) {
    records.push_back(LogRecord{type, tag, message});
  });
  EXPECT_TRUE(osal::DeliverToLogSink(2, "ZeltoMesh", "[ZeltoMesh] hello"));
  EXPECT_TRUE(osal::DeliverToLogSink(16, "Zelto", "bad"));
  EXPECT_EQ(records, (std::vector<LogRecord>{{2, "ZeltoMesh", "[ZeltoMesh] hello"},
                                             {16, "Zelto", "bad"}}));
}

TEST_F(LogSinkTest, SetLogSinkReturnsThePreviousSink) {
  int calls = 0;
  osal::SetLogSink([&calls](int, const char*, const char*) { ++calls; });
  osal::LogSink previous = osal::SetLogSink(nullptr);
  ASSERT_TRUE(previous);
  previous(0, "t", "m");
  EXPECT_EQ(calls, 1);
  EXPECT_FALSE(osal::DeliverToLogSink(0, "t", "m"));
}

}  // namespace
