// Threads against the function locks, a stream and the heap allocator
// (run under ThreadSanitizer by the tsan preset).
#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "weftcore/host/host_core.h"
#include "weftcore/host/host_stream.h"
#include "weftcore/recording_component.h"

namespace {

using weftcore::StreamFunctionLock;
using weftcore::StreamFunctionLockManager;
using weftcore::StreamFunctionType;
using weftcore_test::TheRecorder;

TEST(StreamFunctionLockConcurrency, OtherThreadWaitsForTheSameFunction) {
  StreamFunctionLockManager manager;
  std::atomic<bool> acquired{false};
  std::thread other;
  {
    StreamFunctionLock held(&manager, StreamFunctionType::kFrame);
    other = std::thread([&] {
      StreamFunctionLock lock(&manager, StreamFunctionType::kFrame);
      acquired = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(acquired.load());
  }
  other.join();
  EXPECT_TRUE(acquired.load());
}

TEST(StreamFunctionLockConcurrency, OtherThreadTakesADifferentFunctionMeanwhile) {
  StreamFunctionLockManager manager;
  StreamFunctionLock held(&manager, StreamFunctionType::kFrame);
  std::atomic<bool> acquired{false};
  std::thread other([&] {
    StreamFunctionLock lock(&manager, StreamFunctionType::kProperty);
    acquired = lock.GetStatus().ok();
  });
  other.join();
  EXPECT_TRUE(acquired.load());
}

TEST(HeapAllocatorConcurrency, CountsStayExactUnderConcurrentAllocateAndFree) {
  weftcore::host::HeapAllocator allocator;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&allocator] {
      for (int i = 0; i < 500; ++i) {
        weftcore::Memory* memory = nullptr;
        ASSERT_TRUE(allocator.Allocate(32, &memory).ok());
        ASSERT_TRUE(allocator.Free(memory).ok());
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(allocator.LiveCount(), 0);
  EXPECT_EQ(allocator.TotalAllocations(), 2000);
}

TEST(HostStreamConcurrency, FramesAndPropertiesFromSeveralThreadsReleaseAllMemory) {
  TheRecorder().Reset();
  weftcore::host::HostConfiguration configuration;
  configuration.streams["recording"] = {weftcore_test::kRecordingComponent, "recording"};
  weftcore::host::HostCore core(configuration, {});
  ASSERT_TRUE(core.RegisterComponent(weftcore_test::kRecordingComponent,
                                     weftcore_test::CreateRecordingComponent,
                                     weftcore_test::DestroyRecordingComponent)
                  .ok());
  weftcore::Stream* stream = nullptr;
  ASSERT_TRUE(core.OpenStream("recording", &stream).ok());

  std::atomic<int> frames{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 3; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 200; ++i) {
        weftcore::Frame* frame = nullptr;
        ASSERT_TRUE(stream->GetFrame(&frame, 5).ok());
        if (frame == nullptr) continue;
        ++frames;
        ASSERT_TRUE(stream->ReleaseFrame(frame).ok());
      }
    });
  }
  threads.emplace_back([&] {
    for (int i = 0; i < 200; ++i) {
      weftcore::FrameRateProperty rate{static_cast<uint32_t>(i + 1), 1};
      ASSERT_TRUE(stream->SetProperty(weftcore::kFrameRatePropertyKey, &rate).ok());
      ASSERT_TRUE(stream->GetProperty(weftcore::kFrameRatePropertyKey, &rate).ok());
    }
  });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(frames.load(), 600);
  EXPECT_EQ(core.allocator().LiveCount(), 0);
  ASSERT_TRUE(core.CloseStream(stream).ok());
}

}  // namespace
