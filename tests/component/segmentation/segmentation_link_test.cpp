// Part 3.3: the segmentation stream link, driven by GetFrames of the "mesh"
// source (Part 1.4 steps 7 and 8), with its edge cases and every log line.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/component/segmentation/segmentation_fixture.h"

namespace zelto_test {
namespace {

using Lines = std::vector<std::string>;
using ZeltoSegmentation::ZeltoSegmentationMaskDataProperty_;

// Logged by the first frame after Start (Part 1.4 step 4, the fake camera).
const char kMeshLoaded[] =
    "mesh loaded height:3 width:4 fx:2.000000 fy:2.000000 cx:1.500000 cy:1.000000";
const char kCannotOpen[] =
    "Zelto Segmentation Stream cannot open cause:4 message:segmentation camera not found";
const char kCannotStart[] =
    "Zelto Segmentation Stream cannot start cause:3 message:segmentation camera busy";
const char kCannotStop[] =
    "Zelto Segmentation Stream cannot stop cause:7 message:segmentation stop timed out";
const char kCannotClose[] =
    "Zelto Segmentation Stream cannot close cause:6 message:segmentation close out of memory";
const char kCannotGetMasks[] = "Mask data cannot get cause:3 message:no segmentation result";

class SegmentationLinkTest : public SegmentationTest {
 protected:
  // Opens and starts "mesh" and produces one unmasked frame, so that later
  // frames log nothing of their own.
  void SetUp() override {
    ASSERT_NO_FATAL_FAILURE(OpenAndStartMesh());
    EXPECT_EQ(ProduceFrameDepths(), DepthsMaskedAt({}));
    EXPECT_EQ(TakeLogLines(), Lines{kMeshLoaded});
  }

  // Enables masking with the depth mask "person" over pixel 5 and lets one
  // frame open the stream and apply it.
  void OpenSegmentationStream() {
    segmentation.SetMasks({DepthMask("person", {5})});
    SetMaskSettings(MaskSettings(true, {MaskInfo("person", false, false)}));
    ASSERT_EQ(ProduceFrameDepths(), DepthsMaskedAt({5}));
    ASSERT_NE(nullptr, SegmentationStream());
    ASSERT_EQ(TakeLogLines(), Lines{});
  }
};

TEST_F(SegmentationLinkTest,
       EnabledWithAnEmptyMaskInfoOpensAndStartsTheStreamReadsOnEveryFrameAndChangesNothing) {
  // A mask is on offer but none is requested: the request reaches the stream
  // empty, and Apply with the empty reply changes nothing.
  SetMaskSettings(MaskSettings(true, {}));
  EXPECT_EQ(segmentation.Counts().opens, 0);  // a Set opens nothing by itself

  for (int frame = 0; frame < 3; ++frame) {
    EXPECT_EQ(ProduceFrameDepths(), DepthsMaskedAt({})) << "frame " << frame;
  }

  const FakeSegmentationCounts counts = segmentation.Counts();
  EXPECT_EQ(counts.opens, 1);
  EXPECT_EQ(counts.starts, 1);
  EXPECT_EQ(counts.reads, 3);
  EXPECT_EQ(counts.stops, 0);
  EXPECT_EQ(counts.closes, 0);
  const auto requests = segmentation.Requests();
  ASSERT_EQ(requests.size(), 3u);
  for (const auto& request : requests) EXPECT_TRUE(request.data.empty());
  EXPECT_TRUE(SegmentationStreamIsOpen());
  EXPECT_NE(nullptr, SegmentationStream());
  EXPECT_EQ(TakeLogLines(), Lines{});
}

TEST_F(SegmentationLinkTest,
       TheSegmentationStreamCannotBeOpenedOneLogLinePerFrameAndFramesKeepComingUnmasked) {
  segmentation.FailOpen(true);
  segmentation.SetMasks({DepthMask("person", {5})});
  SetMaskSettings(MaskSettings(true, {MaskInfo("person", false, false)}));

  for (int frame = 0; frame < 3; ++frame) {
    EXPECT_EQ(ProduceFrameDepths(), DepthsMaskedAt({})) << "frame " << frame;
  }

  EXPECT_EQ(TakeLogLines(), (Lines{kCannotOpen, kCannotOpen, kCannotOpen}));
  const FakeSegmentationCounts counts = segmentation.Counts();
  EXPECT_EQ(counts.failedOpens, 3);
  EXPECT_EQ(counts.opens, 0);
  EXPECT_EQ(counts.starts, 0);
  EXPECT_EQ(counts.reads, 0);
  EXPECT_EQ(nullptr, SegmentationStream());
  EXPECT_FALSE(SegmentationStreamIsOpen());
  EXPECT_EQ(peer().frameCount(), 4u);  // the baseline frame and these three

  // Once the stream can be opened, the next frame opens it and masks.
  segmentation.FailOpen(false);
  EXPECT_EQ(ProduceFrameDepths(), DepthsMaskedAt({5}));
  EXPECT_EQ(segmentation.Counts().opens, 1);
  EXPECT_EQ(TakeLogLines(), Lines{});
}

TEST_F(SegmentationLinkTest, StartFailsTheStreamIsClosedAtOnceAndTheOpenIsRetriedOnTheNextFrame) {
  segmentation.FailStart(true);
  segmentation.SetMasks({DepthMask("person", {5})});
  SetMaskSettings(MaskSettings(true, {MaskInfo("person", false, false)}));

  EXPECT_EQ(ProduceFrameDepths(), DepthsMaskedAt({}));
  EXPECT_EQ(TakeLogLines(), Lines{kCannotStart});
  FakeSegmentationCounts counts = segmentation.Counts();
  EXPECT_EQ(counts.opens, 1);
  EXPECT_EQ(counts.starts, 1);
  EXPECT_EQ(counts.closes, 1);
  EXPECT_EQ(counts.stops, 0);
  EXPECT_EQ(counts.reads, 0);
  EXPECT_EQ(nullptr, SegmentationStream());
  EXPECT_FALSE(SegmentationStreamIsOpen());

  EXPECT_EQ(ProduceFrameDepths(), DepthsMaskedAt({}));
  EXPECT_EQ(TakeLogLines(), Lines{kCannotStart});
  counts = segmentation.Counts();
  EXPECT_EQ(counts.opens, 2);
  EXPECT_EQ(counts.starts, 2);
  EXPECT_EQ(counts.closes, 2);

  segmentation.FailStart(false);
  EXPECT_EQ(ProduceFrameDepths(), DepthsMaskedAt({5}));
  EXPECT_EQ(TakeLogLines(), Lines{});
  counts = segmentation.Counts();
  EXPECT_EQ(counts.opens, 3);
  EXPECT_EQ(counts.starts, 3);
  EXPECT_EQ(counts.closes, 2);
  EXPECT_EQ(counts.reads, 1);
  EXPECT_TRUE(SegmentationStreamIsOpen());
}

TEST_F(SegmentationLinkTest,
       DisablingWhileOpenTheNextFrameStopsAndClosesTheStreamAndClearsTheCalibrationSource) {
  ASSERT_NO_FATAL_FAILURE(OpenSegmentationStream());
  EXPECT_NE(nullptr, Masking().stream);
  EXPECT_EQ(Masking().stream, peer().camera2Stream());
  const int calibrationReads = CalibrationReads();
  EXPECT_EQ(calibrationReads, 1);  // re-read on every masked frame

  SetMaskSettings(MaskSettings(false, {MaskInfo("person", false, false)}));
  // The Set itself neither stops nor closes.
  EXPECT_EQ(segmentation.Counts().stops, 0);
  EXPECT_EQ(segmentation.Counts().closes, 0);
  EXPECT_TRUE(SegmentationStreamIsOpen());

  EXPECT_EQ(ProduceFrameDepths(), DepthsMaskedAt({}));
  FakeSegmentationCounts counts = segmentation.Counts();
  EXPECT_EQ(counts.stops, 1);
  EXPECT_EQ(counts.closes, 1);
  EXPECT_EQ(counts.reads, 1);
  EXPECT_EQ(nullptr, SegmentationStream());
  EXPECT_FALSE(SegmentationStreamIsOpen());
  EXPECT_EQ(nullptr, Masking().stream);
  EXPECT_EQ(CalibrationReads(), calibrationReads);
  EXPECT_EQ(TakeLogLines(), Lines{});

  // Later disabled frames touch neither stream.
  EXPECT_EQ(ProduceFrameDepths(), DepthsMaskedAt({}));
  counts = segmentation.Counts();
  EXPECT_EQ(counts.stops, 1);
  EXPECT_EQ(counts.closes, 1);
  EXPECT_EQ(counts.opens, 1);
  EXPECT_EQ(CalibrationReads(), calibrationReads);
}

TEST_F(SegmentationLinkTest, StopFailsTheCloseIsStillAttemptedAndTheStreamBecomesNull) {
  ASSERT_NO_FATAL_FAILURE(OpenSegmentationStream());
  segmentation.FailStop(true);
  SetMaskSettings(MaskSettings(false, {}));

  EXPECT_EQ(ProduceFrameDepths(), DepthsMaskedAt({}));

  EXPECT_EQ(TakeLogLines(), Lines{kCannotStop});
  const FakeSegmentationCounts counts = segmentation.Counts();
  EXPECT_EQ(counts.stops, 1);
  EXPECT_EQ(counts.closes, 1);
  EXPECT_EQ(nullptr, SegmentationStream());
  EXPECT_FALSE(SegmentationStreamIsOpen());
}

TEST_F(SegmentationLinkTest, CloseFailsTheFailureIsLoggedAndTheStreamBecomesNull) {
  ASSERT_NO_FATAL_FAILURE(OpenSegmentationStream());
  segmentation.FailClose(true);
  SetMaskSettings(MaskSettings(false, {}));

  EXPECT_EQ(ProduceFrameDepths(), DepthsMaskedAt({}));

  EXPECT_EQ(TakeLogLines(), Lines{kCannotClose});
  EXPECT_EQ(segmentation.Counts().stops, 1);
  EXPECT_EQ(segmentation.Counts().closes, 1);
  EXPECT_EQ(nullptr, SegmentationStream());
}

TEST_F(SegmentationLinkTest, StopAndCloseBothFailBothAreLoggedInThatOrder) {
  ASSERT_NO_FATAL_FAILURE(OpenSegmentationStream());
  segmentation.FailStop(true);
  segmentation.FailClose(true);
  SetMaskSettings(MaskSettings(false, {}));

  EXPECT_EQ(ProduceFrameDepths(), DepthsMaskedAt({}));

  EXPECT_EQ(TakeLogLines(), (Lines{kCannotStop, kCannotClose}));
  EXPECT_EQ(nullptr, SegmentationStream());
}

TEST_F(SegmentationLinkTest, TheMaskReadFailsItIsLoggedAndTheFrameIsDeliveredUnmasked) {
  ASSERT_NO_FATAL_FAILURE(OpenSegmentationStream());
  segmentation.FailRead(true);

  EXPECT_EQ(ProduceFrameDepths(), DepthsMaskedAt({}));
  EXPECT_EQ(TakeLogLines(), Lines{kCannotGetMasks});
  EXPECT_NE(nullptr, SegmentationStream());  // a failed read keeps the stream

  segmentation.FailRead(false);
  EXPECT_EQ(ProduceFrameDepths(), DepthsMaskedAt({5}));
  EXPECT_EQ(TakeLogLines(), Lines{});
}

TEST_F(SegmentationLinkTest, ApplyFailsOnAnInvalidMaskItIsLoggedAndNoPointIsMasked) {
  FakeMask broken = DepthMask("broken", {0});
  broken.width = 0;
  segmentation.SetMasks({DepthMask("person", {5}), broken});
  SetMaskSettings(
      MaskSettings(true, {MaskInfo("person", false, false), MaskInfo("broken", false, false)}));

  EXPECT_EQ(ProduceFrameDepths(), DepthsMaskedAt({}));

  // Part 3.2's message: the number after "timestamp:" is the height.
  const uint64_t address = segmentation.MaskAddress(1);
  EXPECT_EQ(TakeLogLines(),
            Lines{Printf("cause:2 message:Invalid mask data mask name:broken address:%x size:12 "
                         "width:0 height timestamp:3",
                         static_cast<unsigned int>(address & 0xFFFFFFFFu))});
}

TEST_F(SegmentationLinkTest, EachReadSendsThePreviousReplyOrTheListThatASetRebuilt) {
  ASSERT_NO_FATAL_FAILURE(OpenSegmentationStream());
  EXPECT_EQ(ProduceFrameDepths(), DepthsMaskedAt({5}));
  SetMaskSettings(
      MaskSettings(true, {MaskInfo("floor", true, true), MaskInfo("person", false, false)}));
  EXPECT_EQ(ProduceFrameDepths(), DepthsMaskedAt({5}));

  const auto requests = segmentation.Requests();
  ASSERT_EQ(requests.size(), 3u);
  // 1: the list that StartSegmentationStream built.
  ASSERT_EQ(requests[0].data.size(), 1u);
  ExpectRequest(requests[0].data[0], "person", false, false);
  // 2: the first read's reply.
  ASSERT_EQ(requests[1].data.size(), 1u);
  EXPECT_EQ(requests[1].data[0].name, "person");
  EXPECT_EQ(requests[1].data[0].maskDataAddress, segmentation.MaskAddress(0));
  EXPECT_EQ(requests[1].data[0].maskDataSize, 12u);
  EXPECT_EQ(requests[1].data[0].maskDataWidth, 4u);
  EXPECT_EQ(requests[1].data[0].maskDataHeight, 3u);
  EXPECT_EQ(requests[1].data[0].maskDataTimestamp, 1001u);
  // 3: the Set rebuilt the list while the stream stayed open.
  ASSERT_EQ(requests[2].data.size(), 2u);
  ExpectRequest(requests[2].data[0], "floor", true, true);
  ExpectRequest(requests[2].data[1], "person", false, false);
  EXPECT_EQ(segmentation.Counts().opens, 1);
  EXPECT_EQ(segmentation.Counts().starts, 1);
}

TEST_F(SegmentationLinkTest, AThresholdSetWhileOpenTakesEffectOnTheNextFrame) {
  ASSERT_NO_FATAL_FAILURE(OpenSegmentationStream());  // mask byte 200 at pixel 5

  SetMaskSettings(MaskSettings(true, {MaskInfo("person", false, false)}, 200));
  EXPECT_EQ(ProduceFrameDepths(), DepthsMaskedAt({}));
  SetMaskSettings(MaskSettings(true, {MaskInfo("person", false, false)}, 199));
  EXPECT_EQ(ProduceFrameDepths(), DepthsMaskedAt({5}));
}

TEST_F(SegmentationLinkTest, ColourAndDepthMasksCombineAndAnInvertedMaskKeepsOnlyItsInside) {
  segmentation.SetMasks({ColorMask("person", {0, 11}), DepthMask("chair", {5})});
  SetMaskSettings(
      MaskSettings(true, {MaskInfo("person", true, false), MaskInfo("chair", false, false)}));
  EXPECT_EQ(ProduceFrameDepths(), DepthsMaskedAt({0, 5, 11}));

  FakeMask inverted = DepthMask("chair", {5});
  inverted.isInvertMask = true;
  segmentation.SetMasks({inverted});
  SetMaskSettings(MaskSettings(true, {MaskInfo("chair", false, true)}));
  EXPECT_EQ(ProduceFrameDepths(), DepthsMaskedAt({0, 1, 2, 3, 4, 6, 7, 8, 9, 10, 11}));
  EXPECT_EQ(TakeLogLines(), Lines{});
}

TEST_F(SegmentationLinkTest, WhileDisabledNeitherTheCalibrationNorTheMasksAreRead) {
  segmentation.SetMasks({DepthMask("person", {5})});

  EXPECT_EQ(ProduceFrameDepths(), DepthsMaskedAt({}));
  EXPECT_EQ(ProduceFrameDepths(), DepthsMaskedAt({}));

  EXPECT_EQ(CalibrationReads(), 0);
  EXPECT_EQ(segmentation.Counts().opens, 0);
  EXPECT_EQ(segmentation.Counts().reads, 0);
  EXPECT_EQ(nullptr, Masking().stream);
  EXPECT_EQ(TakeLogLines(), Lines{});
}

TEST_F(SegmentationLinkTest, CloseOfTheMeshSourceClosesTheStreamWithoutStoppingIt) {
  ASSERT_NO_FATAL_FAILURE(OpenSegmentationStream());

  const weftcore::Status status = CloseMesh();

  ASSERT_TRUE(status.ok()) << status.message();
  EXPECT_EQ(segmentation.Counts().stops, 0);
  EXPECT_EQ(segmentation.Counts().closes, 1);
  EXPECT_FALSE(SegmentationStreamIsOpen());
  EXPECT_EQ(TakeLogLines(), Lines{});
}

}  // namespace
}  // namespace zelto_test
