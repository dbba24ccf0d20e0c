// Parts 3.3 and 3.4 end to end: the "mesh" stream of the host substitute,
// steered by serialized property sets, reading frames with GetFrame and
// ReleaseFrame, with "zelto_segmentation_camera2_stream" served by the fake.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "mesh/mesh_algorithm_config_property.h"
#include "tests/component/segmentation/segmentation_fixture.h"

namespace zelto_test {
namespace {

using Lines = std::vector<std::string>;

const char kCannotOpen[] =
    "Zelto Segmentation Stream cannot open cause:4 message:segmentation camera not found";

class SegmentationEndToEndTest : public SegmentationTest {
 protected:
  void SetUp() override {
    ASSERT_NO_FATAL_FAILURE(OpenAndStartMeshThroughHost());
    segmentation.SetMasks({DepthMask("person", {5, 6}), ColorMask("floor", {8, 9, 10, 11})});
  }

  void Set(const ZeltoMesh::ZeltoMeshMaskSettingsProperty_& settings) {
    const weftcore::Status status = SetThroughHost(ZeltoMesh::kZeltoMeshMaskSettingsKey, settings);
    ASSERT_TRUE(status.ok()) << status.message();
  }

  // The log lines other than the handlers' own entry lines (whose record
  // pointer is the accessor's); the log is cleared.
  Lines FrameLogLines() {
    Lines lines;
    for (const std::string& line : TakeLogLines()) {
      if (line.rfind("[ZeltoMesh] Set ZeltoMeshMaskSettingsProperty by key=", 0) != 0 &&
          line.rfind("[ZeltoMesh] Get ZeltoMeshMaskSettingsProperty by key=", 0) != 0 &&
          line.rfind("mesh loaded ", 0) != 0) {
        lines.push_back(line);
      }
    }
    return lines;
  }
};

TEST_F(SegmentationEndToEndTest, MaskSettingsReadThroughTheHostAfterOpenAreTheDefaults) {
  ZeltoMesh::ZeltoMeshMaskSettingsProperty_ settings =
      MaskSettings(true, {MaskInfo("sent by the client", true, true)}, 1);

  const weftcore::Status status = mesh->GetProperty(ZeltoMesh::kZeltoMeshMaskSettingsKey, &settings);

  ASSERT_TRUE(status.ok()) << status.message();
  EXPECT_FALSE(settings.enabled);
  EXPECT_TRUE(settings.maskInfo.empty());
  EXPECT_EQ(settings.maskThreshold, 55);
}

TEST_F(SegmentationEndToEndTest,
       EnablingMaskingOpensAndStartsTheStreamOnTheNextFrameAndMaskedPointsBecomeVerticesAt32001m) {
  EXPECT_EQ(HostFrameDepths(), DepthsMaskedAt({}));
  Set(MaskSettings(true, {MaskInfo("person", false, false), MaskInfo("floor", true, false)}));
  EXPECT_FALSE(SegmentationStreamIsOpen());  // not before the next frame

  EXPECT_EQ(HostFrameDepths(), DepthsMaskedAt({5, 6, 8, 9, 10, 11}));

  EXPECT_TRUE(SegmentationStreamIsOpen());
  EXPECT_EQ(segmentation.Counts().opens, 1);
  EXPECT_EQ(segmentation.Counts().starts, 1);
  EXPECT_EQ(segmentation.Counts().reads, 1);
  ZeltoMesh::ZeltoMeshMaskSettingsProperty_ read;
  ASSERT_TRUE(mesh->GetProperty(ZeltoMesh::kZeltoMeshMaskSettingsKey, &read).ok());
  EXPECT_TRUE(read.enabled);
  ASSERT_EQ(read.maskInfo.size(), 2u);
  EXPECT_EQ(read.maskInfo[0].name, "person");
  EXPECT_EQ(read.maskInfo[1].name, "floor");
  EXPECT_TRUE(read.maskInfo[1].isColorSource);
  EXPECT_EQ(read.maskThreshold, 55);

  // Each later frame reads the masks again; the stream is not reopened.
  EXPECT_EQ(HostFrameDepths(), DepthsMaskedAt({5, 6, 8, 9, 10, 11}));
  EXPECT_EQ(segmentation.Counts().opens, 1);
  EXPECT_EQ(segmentation.Counts().reads, 2);
  EXPECT_EQ(FrameLogLines(), Lines{});
}

TEST_F(SegmentationEndToEndTest, AMaskedRegionFollowsTheGridOfTheReductionLevel) {
  ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_ config;
  config.meshReductionLevel = 1;  // every second pixel: u 0, 2 and v 0, 2
  config.resetTrianglePeriod = 4;
  ASSERT_TRUE(SetThroughHost(ZeltoMesh::kZeltoMeshAlgorithmConfigKey, config).ok());
  segmentation.SetMasks({DepthMask("person", {2, 10})});
  Set(MaskSettings(true, {MaskInfo("person", false, false)}));

  // Grid vertices (0,0) (2,0) / (0,2) (2,2) sample pixels 0, 2, 8, 10.
  EXPECT_EQ(HostFrameDepths(),
            (std::vector<float>{Metres(kSceneDepthMm), Metres(32001), Metres(kSceneDepthMm),
                                Metres(32001)}));
}

TEST_F(SegmentationEndToEndTest, DisablingStopsAndClosesTheStreamOnTheNextFrameAndUnmasks) {
  Set(MaskSettings(true, {MaskInfo("person", false, false)}));
  EXPECT_EQ(HostFrameDepths(), DepthsMaskedAt({5, 6}));

  Set(MaskSettings(false, {MaskInfo("person", false, false)}));
  EXPECT_TRUE(SegmentationStreamIsOpen());  // not before the next frame
  EXPECT_EQ(segmentation.Counts().stops, 0);

  EXPECT_EQ(HostFrameDepths(), DepthsMaskedAt({}));

  EXPECT_FALSE(SegmentationStreamIsOpen());
  const FakeSegmentationCounts counts = segmentation.Counts();
  EXPECT_EQ(counts.stops, 1);
  EXPECT_EQ(counts.closes, 1);
  EXPECT_EQ(counts.reads, 1);
  EXPECT_EQ(FrameLogLines(), Lines{});

  // Enabling again opens a new stream on the next frame.
  Set(MaskSettings(true, {MaskInfo("floor", true, false)}));
  EXPECT_EQ(HostFrameDepths(), DepthsMaskedAt({8, 9, 10, 11}));
  EXPECT_EQ(segmentation.Counts().opens, 2);
  EXPECT_EQ(segmentation.Counts().starts, 2);
}

TEST_F(SegmentationEndToEndTest, AnOpenThatFailsIsRetriedAndLoggedOnEveryFrame) {
  segmentation.FailOpen(true);
  Set(MaskSettings(true, {MaskInfo("person", false, false)}));

  for (int frame = 0; frame < 4; ++frame) {
    EXPECT_EQ(HostFrameDepths(), DepthsMaskedAt({})) << "frame " << frame;
  }

  EXPECT_EQ(FrameLogLines(), (Lines{kCannotOpen, kCannotOpen, kCannotOpen, kCannotOpen}));
  EXPECT_EQ(segmentation.Counts().failedOpens, 4);
  EXPECT_FALSE(SegmentationStreamIsOpen());

  segmentation.FailOpen(false);
  EXPECT_EQ(HostFrameDepths(), DepthsMaskedAt({5, 6}));
  EXPECT_TRUE(SegmentationStreamIsOpen());
  EXPECT_EQ(FrameLogLines(), Lines{});
}

TEST_F(SegmentationEndToEndTest, CloseOfTheMeshStreamClosesTheSegmentationStreamWithoutStopping) {
  Set(MaskSettings(true, {MaskInfo("person", false, false)}));
  EXPECT_EQ(HostFrameDepths(), DepthsMaskedAt({5, 6}));

  const weftcore::Status status = host->core().CloseStream(mesh);
  mesh = nullptr;
  meshSource = nullptr;

  ASSERT_TRUE(status.ok()) << status.message();
  EXPECT_EQ(segmentation.Counts().stops, 0);
  EXPECT_EQ(segmentation.Counts().closes, 1);
  EXPECT_FALSE(SegmentationStreamIsOpen());
  EXPECT_EQ(host->core().allocator().LiveCount(), 0);
}

}  // namespace
}  // namespace zelto_test
