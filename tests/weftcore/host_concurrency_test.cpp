// Several client threads on one host stream, under ThreadSanitizer: the
// function lock lets one call of a kind in at a time but never holds up
// another kind, and frames and properties from many threads settle with all
// frame memory returned.
#include <gtest/gtest.h>

#include <condition_variable>
#include <thread>
#include <vector>

#include "properties/zelto_tof_properties.h"
#include "weftcore/host/host_core.h"

namespace {

using weftcore::StreamFunctionLock;
using weftcore::StreamFunctionType;

TEST(StreamFunctionLock, ExcludesCallsOfOneKindButNotOfAnother) {
  weftcore::StreamFunctionLockManager locks;
  int unguarded = 0;  // TSan reports a race here if two frame calls overlap
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 1000; ++i) {
        StreamFunctionLock lock(&locks, StreamFunctionType::kFrame);
        ++unguarded;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(unguarded, 4000);

  // A property call gets in while a frame call holds its lock (it would
  // deadlock here otherwise: the frame call waits for it).
  std::mutex mutex;
  std::condition_variable changed;
  bool propertyDone = false;
  StreamFunctionLock frameCall(&locks, StreamFunctionType::kFrame);
  std::thread property([&] {
    StreamFunctionLock lock(&locks, StreamFunctionType::kProperty);
    std::lock_guard<std::mutex> guard(mutex);
    propertyDone = lock.GetStatus().ok();
    changed.notify_one();
  });
  std::unique_lock<std::mutex> guard(mutex);
  changed.wait(guard, [&] { return propertyDone; });
  property.join();
}

TEST(HostStream, FramesAndPropertiesFromSeveralThreadsSettle) {
  weftcore::host::HostConfiguration configuration;
  configuration.components["sim"] = {"component_zelto_sim", {}};
  configuration.streams["camera"] = {"sim", "tof_camera"};
  weftcore::host::HostCore core(configuration, {ZELTO_LIBRARY_DIR});
  weftcore::Stream* camera = nullptr;
  ASSERT_TRUE(core.OpenStream("camera", &camera).ok());
  ASSERT_TRUE(camera->Start().ok());
  std::vector<std::thread> threads;
  for (int t = 0; t < 2; ++t) {
    threads.emplace_back([camera] {
      for (int i = 0; i < 8; ++i) {
        weftcore::Frame* frame = nullptr;
        ASSERT_TRUE(camera->GetFrame(&frame, 5000).ok());
        ASSERT_NE(frame, nullptr);
        ASSERT_TRUE(camera->ReleaseFrame(frame).ok());
      }
    });
  }
  threads.emplace_back([camera] {
    for (int i = 0; i < 50; ++i) {
      ZeltoTof::ZeltoTofProcessTargetsProperty_ targets{true, i % 2 == 0, true};
      ASSERT_TRUE(camera->SetProperty(ZeltoTof::kZeltoTofProcessTargetsKey, &targets).ok());
      weftcore::FrameRateProperty rate;
      ASSERT_TRUE(camera->GetProperty(weftcore::kFrameRatePropertyKey, &rate).ok());
      EXPECT_EQ(rate.num, 30u);
    }
  });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(core.allocator().LiveCount(), 0);
  EXPECT_TRUE(core.CloseStream(camera).ok());
}

}  // namespace
