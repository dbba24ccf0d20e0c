// Concurrency of Parts 1.4, 2.2 and 4.2 (run under ThreadSanitizer): property
// handlers on a client thread while the frame thread takes frames.
#include <atomic>
#include <set>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/component/mesh_source_test.h"
#include "tests/component/wire_bytes.h"

namespace zelto_test {
namespace {

constexpr int kFrames = 200;
constexpr uint64_t kReferenceLayoutSize = 28;
constexpr uint64_t kFlatLayoutSize = 12 * 12 + 12 * 12 + 9;  // 4 x 3 image, level 0

class ConcurrencyTest : public MeshSourceTest {
 protected:
  void SetUp() override {
    upstream.Camera().SetSteadyFrame(FlatPointCloudFrame(1000, 1));
    ASSERT_NO_FATAL_FAILURE(OpenMesh());
    ASSERT_TRUE(mesh->Start().ok());
  }

  // Takes kFrames frames on this thread while `client` runs on another;
  // records the size of each frame's mesh channel.
  template <typename Client>
  void TakeFramesWhile(Client client, std::vector<uint64_t>* sizes) {
    std::atomic<bool> done{false};
    std::thread clientThread([&] {
      while (!done.load()) client();
    });
    for (int index = 0; index < kFrames; ++index) {
      weftcore::Frame* frame = nullptr;
      ASSERT_TRUE(mesh->GetFrame(&frame, 0).ok());
      ASSERT_NE(nullptr, frame);
      weftcore::Channel* channel = nullptr;
      ASSERT_TRUE(frame->GetChannel(0, &channel).ok());
      weftcore::Channel::RawData raw;
      ASSERT_TRUE(channel->GetRawData(&raw).ok());
      sizes->push_back(raw.size);
      ASSERT_TRUE(mesh->ReleaseFrame(frame).ok());
    }
    done = true;
    clientThread.join();
  }
};

TEST_F(ConcurrencyTest, FrameRateSetsRacingFramesGiveOneOfTheTwoLayouts) {
  const Bytes rates[] = {Concat({{0x82}, FixStr("num"), {30}, FixStr("denom"), {1}}),
                         Concat({{0x82}, FixStr("num"), {15}, FixStr("denom"), {1}}),
                         Concat({{0x82}, FixStr("num"), {60}, FixStr("denom"), {1}})};
  int next = 0;
  std::vector<uint64_t> sizes;
  TakeFramesWhile(
      [&] {
        const Bytes& rate = rates[next++ % 3];
        EXPECT_TRUE(mesh->SetSerializedProperty("frame_rate_property", rate.data(), rate.size())
                        .ok());
      },
      &sizes);
  ASSERT_EQ(static_cast<size_t>(kFrames), sizes.size());
  for (uint64_t size : sizes) {
    EXPECT_TRUE(size == kReferenceLayoutSize || size == kFlatLayoutSize) << size;
  }
  ASSERT_TRUE(mesh->Stop().ok());
  EXPECT_FALSE(peer().frameRate30());
  EXPECT_FALSE(peer().usePlayback());
  EXPECT_TRUE(CloseMesh().ok());
  EXPECT_EQ(0, allocator().LiveCount());
}

TEST_F(ConcurrencyTest, LogLevelAndAlgorithmConfigSetsRacingFrames) {
  const Bytes levels[] = {Concat({{0x81}, FixStr("logLevel"), {3}}),
                          Concat({{0x81}, FixStr("logLevel"), {8}})};
  const Bytes configs[] = {
      Concat({{0x82}, FixStr("meshReductionLevel"), {0}, FixStr("resetTrianglePeriod"), {1}}),
      Concat({{0x82}, FixStr("meshReductionLevel"), {1}, FixStr("resetTrianglePeriod"), {3}})};
  int next = 0;
  std::vector<uint64_t> sizes;
  TakeFramesWhile(
      [&] {
        const Bytes& level = levels[next % 2];
        const Bytes& config = configs[next % 2];
        ++next;
        EXPECT_TRUE(
            mesh->SetSerializedProperty("kZeltoLogLevelKey", level.data(), level.size()).ok());
        EXPECT_TRUE(mesh->SetSerializedProperty("kZeltoMeshAlgorithmConfigKey", config.data(),
                                                config.size())
                        .ok());
      },
      &sizes);
  EXPECT_EQ(static_cast<size_t>(kFrames), sizes.size());
  EXPECT_TRUE(CloseMesh().ok());
  EXPECT_EQ(0, allocator().LiveCount());
}

}  // namespace
}  // namespace zelto_test
