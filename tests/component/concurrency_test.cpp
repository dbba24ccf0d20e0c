// Clients setting every property of the mesh stream while the frame thread
// takes frames; run under ThreadSanitizer. The clients' last Sets must be
// what the stream answers and builds with once they are done.
#include <atomic>
#include <thread>
#include <vector>

#include "tests/component/mesh_source_fixture.h"

namespace zelto_test {
namespace {

template <typename T>
void SetAll(weftcore::Stream* mesh, const char* key, const std::vector<T>& values, size_t i) {
  EXPECT_TRUE(mesh->SetProperty(key, &values[i % values.size()]).ok());
}

TEST(MeshStreamConcurrency, PropertySetsRacingFramesSettleOnTheLastSet) {
  weftcore::host::HostCore host(ZeltoSim::BuildHostConfiguration(Device()));
  weftcore::Stream* mesh = nullptr;
  ASSERT_TRUE(host.OpenStream("mesh", &mesh).ok());
  ASSERT_TRUE(mesh->Start().ok());

  // Each client cycles through its values and ends on the first one.
  std::vector<weftcore::FrameRateProperty> rates(3);
  rates[0].num = 30;
  rates[1].num = 15;
  rates[2].num = 60;
  std::vector<Zelto::ZeltoLogLevelProperty_> levels(2);
  levels[0].logLevel = ZeltoLogger::Debug;
  levels[1].logLevel = ZeltoLogger::Silent;
  std::vector<ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_> configs(2);
  configs[0].resetTrianglePeriod = 5;
  configs[1].meshReductionLevel = 1;
  std::vector<ZeltoMesh::ZeltoMeshMaskSettingsProperty_> masks(2);
  masks[0] = {true, {{"person", false, false}}, 77};
  masks[1] = {false, {{"floor", true, false}}, 200};

  std::atomic<int> clientsRunning{0};
  std::atomic<bool> done{false};
  auto client = [&](auto set) {
    return std::thread([&, set] {
      for (size_t i = 1;; ++i) {
        set(i);
        if (i == 1) ++clientsRunning;
        if (done.load()) break;
      }
      set(0);
    });
  };
  std::vector<std::thread> clients;
  clients.push_back(client([&](size_t i) { SetAll(mesh, "frame_rate_property", rates, i); }));
  clients.push_back(client([&](size_t i) { SetAll(mesh, "kZeltoLogLevelKey", levels, i); }));
  clients.push_back(
      client([&](size_t i) { SetAll(mesh, "kZeltoMeshAlgorithmConfigKey", configs, i); }));
  clients.push_back(client([&](size_t i) { SetAll(mesh, "kZeltoMeshMaskSettingsKey", masks, i); }));
  while (clientsRunning.load() < 4) std::this_thread::yield();  // every client has set once

  for (int frames = 0; frames < 100;) {
    weftcore::Frame* frame = nullptr;
    ASSERT_TRUE(mesh->GetFrame(&frame, 0).ok());
    if (frame == nullptr) {  // the recording has ended: rewind
      ASSERT_TRUE(mesh->Stop().ok() && mesh->Start().ok());
      continue;
    }
    ASSERT_TRUE(mesh->ReleaseFrame(frame).ok());
    ++frames;
  }
  done = true;
  for (std::thread& thread : clients) thread.join();

  Zelto::ZeltoLogLevelProperty_ level;
  ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_ config;
  ZeltoMesh::ZeltoMeshMaskSettingsProperty_ mask;
  ASSERT_TRUE(mesh->GetProperty("kZeltoLogLevelKey", &level).ok());
  ASSERT_TRUE(mesh->GetProperty("kZeltoMeshAlgorithmConfigKey", &config).ok());
  ASSERT_TRUE(mesh->GetProperty("kZeltoMeshMaskSettingsKey", &mask).ok());
  EXPECT_EQ(ZeltoLogger::Debug, level.logLevel);
  EXPECT_EQ(0, config.meshReductionLevel);
  EXPECT_EQ(5, config.resetTrianglePeriod);
  EXPECT_TRUE(mask.enabled && mask.maskInfo.size() == 1 && mask.maskThreshold == 77);

  // The next frame: flat layout (30 fps), every pixel, the person masked.
  weftcore::Frame* frame = nullptr;
  ASSERT_TRUE(mesh->GetFrame(&frame, 0).ok());
  if (frame == nullptr) {
    ASSERT_TRUE(mesh->Stop().ok() && mesh->SetProperty("frame_rate_property", &rates[0]).ok());
    ASSERT_TRUE(mesh->Start().ok() && mesh->GetFrame(&frame, 0).ok() && frame);
  }
  weftcore::Channel* channel = nullptr;
  weftcore::Channel::RawData raw;
  ASSERT_TRUE(frame->GetChannel(0, &channel).ok() && channel->GetRawData(&raw).ok());
  EXPECT_EQ(297u, raw.size);
  const std::vector<float> depths = DepthsOf(raw.address, raw.size);
  ASSERT_EQ(12u, depths.size());
  EXPECT_EQ(kMasked, depths[5]);
  EXPECT_EQ(kMasked, depths[6]);
  EXPECT_NE(kMasked, depths[4]);
  ASSERT_TRUE(mesh->ReleaseFrame(frame).ok());
  ASSERT_TRUE(host.CloseStream(mesh).ok());
  EXPECT_EQ(0, host.allocator().LiveCount());
}

}  // namespace
}  // namespace zelto_test
