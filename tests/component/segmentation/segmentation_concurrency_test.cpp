// Parts 3.3 and 3.4 under concurrency (docs/deviations.md): a
// client thread keeps setting the mask settings and the algorithm
// configuration through the host while a frame thread produces and releases
// frames. Built into concurrency_tests and run under ThreadSanitizer.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <thread>
#include <vector>

#include "mesh/mesh_algorithm_config_property.h"
#include "tests/component/segmentation/segmentation_fixture.h"

namespace zelto_test {
namespace {

constexpr int kFrames = 300;
// Neither thread runs more than this many steps ahead of the other, so that
// they overlap all the way instead of one finishing within a time slice.
constexpr int kSlack = 2;

// Yields until `ready` holds.
template <typename Condition>
void WaitFor(Condition ready) {
  while (!ready()) std::this_thread::yield();
}

// The client's choices in round `round`, scrambled so that whichever rounds
// the frames happen to meet, they meet every combination: masking on (two
// rounds of three) or off, one or two masks, thresholds 50 to 149, and the
// three grids.
uint32_t Scramble(int round) { return static_cast<uint32_t>(round) * 2654435761u >> 8; }

ZeltoMesh::ZeltoMeshMaskSettingsProperty_ SettingsOfRound(int round) {
  const uint32_t bits = Scramble(round);
  std::vector<ZeltoSegmentation::ZeltoSegmentationMaskInfo_> infos{MaskInfo("person", false, false)};
  if ((bits / 3) % 2 == 1) infos.push_back(MaskInfo("floor", true, false));
  return MaskSettings(bits % 3 != 0, infos, static_cast<uint8_t>(50 + (bits / 6) % 100));
}

ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_ ConfigOfRound(int round) {
  const uint32_t bits = Scramble(round) / 600;
  ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_ config;
  config.meshReductionLevel = static_cast<int32_t>(bits % 3);
  config.resetTrianglePeriod = static_cast<int32_t>(1 + (bits / 3) % 4);
  return config;
}

class SegmentationConcurrencyTest : public SegmentationTest {
 protected:
  void SetUp() override {
    ASSERT_NO_FATAL_FAILURE(OpenAndStartMeshThroughHost());
    segmentation.SetMasks({DepthMask("person", {5, 6}), ColorMask("floor", {8, 9, 10, 11})});
  }
};

TEST_F(SegmentationConcurrencyTest, MaskSettingsAndAlgorithmConfigSetWhileFramesAreProduced) {
  std::atomic<bool> framesDone{false};
  std::atomic<int> framesRequested{0};
  std::atomic<int> failedSets{0};
  std::atomic<int> setRounds{0};
  std::thread client([&] {
    for (int round = 0; !framesDone.load(); ++round) {
      WaitFor([&] { return framesDone.load() || round <= framesRequested.load() + kSlack; });
      if (SetThroughHost(ZeltoMesh::kZeltoMeshMaskSettingsKey, SettingsOfRound(round)).IsError()) {
        ++failedSets;
      }
      if (SetThroughHost(ZeltoMesh::kZeltoMeshAlgorithmConfigKey, ConfigOfRound(round))
              .IsError()) {
        ++failedSets;
      }
      ZeltoMesh::ZeltoMeshMaskSettingsProperty_ read;
      if (mesh->GetProperty(ZeltoMesh::kZeltoMeshMaskSettingsKey, &read).IsError()) ++failedSets;
      setRounds.store(round + 1);
    }
  });

  int delivered = 0;
  int unexpectedDepths = 0;
  std::map<float, int> depthCounts;
  for (int frame = 0; frame < kFrames; ++frame) {
    WaitFor([&] { return frame <= setRounds.load() + kSlack; });
    framesRequested.store(frame + 1);
    const std::vector<float> depths = HostFrameDepths();
    if (!depths.empty()) ++delivered;
    for (float z : depths) {
      if (z == Metres(kSceneDepthMm) || z == Metres(32001)) {
        ++depthCounts[z];
      } else {
        ++unexpectedDepths;
      }
    }
  }
  framesDone.store(true);
  client.join();

  // How much the two threads overlapped, for the XML report.
  RecordProperty("setRounds", setRounds.load());
  RecordProperty("maskedVertices", depthCounts[Metres(32001)]);
  RecordProperty("reads", segmentation.Counts().reads);
  RecordProperty("opens", segmentation.Counts().opens);
  EXPECT_EQ(failedSets.load(), 0);
  EXPECT_GE(setRounds.load(), kFrames - kSlack);
  EXPECT_EQ(delivered, kFrames);  // the camera always has a frame
  EXPECT_EQ(unexpectedDepths, 0);
  EXPECT_GT(depthCounts[Metres(kSceneDepthMm)], 0);

  // After the storm the link settles: disabling closes the stream on the next
  // frame, every open was matched by a start, a stop and a close ...
  ASSERT_TRUE(SetThroughHost(ZeltoMesh::kZeltoMeshMaskSettingsKey, MaskSettings(false, {})).ok());
  ASSERT_TRUE(SetThroughHost(ZeltoMesh::kZeltoMeshAlgorithmConfigKey, ConfigOfRound(0)).ok());
  EXPECT_EQ(HostFrameDepths(), DepthsMaskedAt({}));
  EXPECT_FALSE(SegmentationStreamIsOpen());
  const FakeSegmentationCounts counts = segmentation.Counts();
  EXPECT_EQ(counts.failedOpens, 0);
  EXPECT_EQ(counts.starts, counts.opens);
  EXPECT_EQ(counts.stops, counts.opens);
  EXPECT_EQ(counts.closes, counts.opens);
  EXPECT_LE(counts.reads, kFrames);

  // ... and the next enabled frame masks exactly what the last Set asks for.
  ASSERT_TRUE(SetThroughHost(ZeltoMesh::kZeltoMeshMaskSettingsKey,
                             MaskSettings(true, {MaskInfo("floor", true, false)}, 55))
                  .ok());
  EXPECT_EQ(HostFrameDepths(), DepthsMaskedAt({8, 9, 10, 11}));
  EXPECT_EQ(mesh->Stop().ok(), true);
  EXPECT_EQ(allocator().LiveCount(), 0);
}

}  // namespace
}  // namespace zelto_test
