// Several client threads on one host stream, under ThreadSanitizer: the
// function lock lets one call of a kind in at a time, and frames, properties
// and restarts from many threads settle with all frame memory returned.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "properties/zelto_tof_properties.h"
#include "weftcore/host/host_core.h"

namespace {

void InThreads(int count, const std::function<void()>& work) {
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) threads.emplace_back(work);
  for (std::thread& thread : threads) thread.join();
}

TEST(StreamFunctionLock, LetsOneCallOfAKindInAtATime) {
  weftcore::StreamFunctionLockManager locks;
  int unguarded = 0;  // TSan reports a race here if two frame calls overlap
  InThreads(4, [&] {
    for (int i = 0; i < 1000; ++i) {
      weftcore::StreamFunctionLock lock(&locks, weftcore::StreamFunctionType::kFrame);
      ++unguarded;
    }
  });
  EXPECT_EQ(unguarded, 4000);
}

TEST(HostStream, FramesAndPropertiesFromSeveralThreadsSettle) {
  weftcore::host::HostConfiguration configuration;
  configuration.components["sim"] = {"component_zelto_sim", {}};
  configuration.streams["camera"] = {"sim", "tof_camera"};
  weftcore::host::HostCore core(configuration, {ZELTO_LIBRARY_DIR});
  weftcore::Stream* camera = nullptr;
  ASSERT_TRUE(core.OpenStream("camera", &camera).ok() && camera->Start().ok());
  std::thread restarts([camera] {  // each Start a new decoding thread, each Stop joins it
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(camera->Stop().ok() && camera->Start().ok());
  });
  InThreads(3, [camera] {
    for (int i = 0; i < 6; ++i) {
      weftcore::Frame* frame = nullptr;
      ASSERT_TRUE(camera->GetFrame(&frame, 5000).ok() && frame != nullptr);
      ASSERT_TRUE(camera->ReleaseFrame(frame).ok());
      ZeltoTof::ZeltoTofProcessTargetsProperty_ targets{true, i % 2 == 0, true};
      ASSERT_TRUE(camera->SetProperty(ZeltoTof::kZeltoTofProcessTargetsKey, &targets).ok());
      ASSERT_TRUE(camera->GetProperty(ZeltoTof::kZeltoTofProcessTargetsKey, &targets).ok());
    }
  });
  restarts.join();
  EXPECT_EQ(core.allocator().LiveCount(), 0);
  EXPECT_TRUE(core.CloseStream(camera).ok());
}

}  // namespace
