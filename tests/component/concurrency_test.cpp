// Clients setting every property of the mesh stream while frames are taken (run under
// ThreadSanitizer); afterwards their last Sets are what the stream answers and builds with.
#include <atomic>
#include <thread>
#include <vector>

#include "tests/component/mesh_source_fixture.h"

namespace zelto_test {
namespace {

TEST(MeshStreamConcurrency, PropertySetsRacingFramesSettleOnTheLastSet) {
  weftcore::host::HostCore host(ZeltoSim::BuildHostConfiguration(Device()));
  weftcore::Stream* mesh = nullptr;
  ASSERT_TRUE(host.OpenStream("mesh", &mesh).ok());
  ASSERT_TRUE(mesh->Start().ok());

  // Each client cycles through its values and ends on the first one.
  std::vector<weftcore::FrameRateProperty> rates{{30, 1}, {15, 1}, {60, 1}};
  std::vector<Zelto::ZeltoLogLevelProperty_> levels{{ZeltoLogger::Debug}, {ZeltoLogger::Silent}};
  std::vector<ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_> configs{{0, 5}, {1, 3}};
  std::vector<ZeltoMesh::ZeltoMeshMaskSettingsProperty_> masks{
      {true, {{"person", false, false}}, 77}, {false, {{"floor", true, false}}, 200}};
  std::atomic<int> clientsRunning{0};
  std::atomic<bool> done{false};
  std::vector<std::thread> clients;
  auto client = [&](const char* key, const auto& values) {
    clients.emplace_back([&, key] {
      for (size_t i = 1; !done.load(); ++i) {
        EXPECT_TRUE(mesh->SetProperty(key, &values[i % values.size()]).ok());
        if (i == 1) ++clientsRunning;
      }
      EXPECT_TRUE(mesh->SetProperty(key, &values[0]).ok());
    });
  };
  client("frame_rate_property", rates);
  client("kZeltoLogLevelKey", levels);
  client("kZeltoMeshAlgorithmConfigKey", configs);
  client("kZeltoMeshMaskSettingsKey", masks);
  while (clientsRunning.load() < 4) std::this_thread::yield();  // every client has set once

  std::thread releaser;
  for (int frames = 0, requests = 0; frames < 100; ++requests) {
    ASSERT_LT(requests, 1000) << "the stream stopped delivering frames";
    weftcore::Frame* frame = nullptr;
    ASSERT_TRUE(mesh->GetFrame(&frame, 0).ok());
    if (frame == nullptr) {  // the recording has ended: rewind
      ASSERT_TRUE(mesh->Stop().ok() && mesh->Start().ok());
      continue;
    }
    if (releaser.joinable()) releaser.join();  // released while the next frame is built
    releaser = std::thread([mesh, frame] { EXPECT_TRUE(mesh->ReleaseFrame(frame).ok()); });
    ++frames;
  }
  releaser.join();
  done = true;
  for (std::thread& thread : clients) thread.join();

  Zelto::ZeltoLogLevelProperty_ level;
  ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_ config;
  ZeltoMesh::ZeltoMeshMaskSettingsProperty_ mask;
  ASSERT_TRUE(mesh->GetProperty("kZeltoLogLevelKey", &level).ok());
  ASSERT_TRUE(mesh->GetProperty("kZeltoMeshAlgorithmConfigKey", &config).ok());
  ASSERT_TRUE(mesh->GetProperty("kZeltoMeshMaskSettingsKey", &mask).ok());
  EXPECT_EQ(ZeltoLogger::Debug, level.logLevel);
  EXPECT_TRUE(config.meshReductionLevel == 0 && config.resetTrianglePeriod == 5);
  EXPECT_TRUE(mask.enabled && mask.maskInfo.size() == 1 && mask.maskThreshold == 77);

  // A fresh start (Stop clears the rate): every pixel, the person masked.
  ASSERT_TRUE(mesh->Stop().ok() && mesh->Start().ok());
  weftcore::Frame* frame = nullptr;
  weftcore::Channel* channel = nullptr;
  weftcore::Channel::RawData raw;
  ASSERT_TRUE(mesh->GetFrame(&frame, 0).ok() && frame);
  ASSERT_TRUE(frame->GetChannel(0, &channel).ok() && channel->GetRawData(&raw).ok());
  std::vector<float> expected(12, 1.0f);
  expected[5] = expected[6] = kMasked;
  EXPECT_EQ(expected, DepthsOf(raw.address, raw.size));
  ASSERT_TRUE(mesh->ReleaseFrame(frame).ok());
  ASSERT_TRUE(host.CloseStream(mesh).ok());
  EXPECT_EQ(0, host.allocator().LiveCount());
}

}  // namespace
}  // namespace zelto_test
