// Part 3.4: the mask settings Get and Set handlers, on a source that is not
// opened (the handlers need no stream).
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "component/zelto_mesh_streamsource.h"
#include "tests/component/log_recorder.h"
#include "tests/component/mesh_source_test.h"
#include "tests/component/segmentation/segmentation_fixture.h"
#include "tests/component/source_test_peer.h"

namespace zelto_test {
namespace {

using ZeltoMesh::ZeltoMeshMaskSettingsProperty_;
using ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_;
using ZeltoSegmentation::ZeltoSegmentationMaskDataProperty_;
using ZeltoSegmentation::ZeltoSegmentationMaskInfo_;

constexpr int16_t kMasked = 32001;

ZeltoSegmentationMaskInfo_ Info(const std::string& name, bool isColorSource, bool isInvertMask) {
  ZeltoSegmentationMaskInfo_ info;
  info.name = name;
  info.isColorSource = isColorSource;
  info.isInvertMask = isInvertMask;
  return info;
}

ZeltoMeshMaskSettingsProperty_ Settings(bool enabled, std::vector<ZeltoSegmentationMaskInfo_> infos,
                                        uint8_t threshold) {
  ZeltoMeshMaskSettingsProperty_ settings;
  settings.enabled = enabled;
  settings.maskInfo = std::move(infos);
  settings.maskThreshold = threshold;
  return settings;
}

PlatformLogRecord GetLine(const void* record) {
  return MeshDebugRecord(Printf(
      "[ZeltoMesh] Get ZeltoMeshMaskSettingsProperty by key=kZeltoMeshMaskSettingsKey prop=%p\n",
      record));
}

PlatformLogRecord SetLine(const void* record) {
  return MeshDebugRecord(Printf(
      "[ZeltoMesh] Set ZeltoMeshMaskSettingsProperty by key=kZeltoMeshMaskSettingsKey prop=%p\n",
      record));
}

// The source is not opened: the handlers need no stream.
class MaskSettingsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    StreamSourceLogger().SetLogLevel(ZeltoLogger::Debug);
    log.Clear();
  }

  // The peer reads; these tests also plant state (the source is not const).
  ZeltoSegmentationMaskDataListProperty_& maskDataList() {
    return const_cast<ZeltoSegmentationMaskDataListProperty_&>(peer.maskDataList());
  }
  MaskedPointCloud& maskedPointCloud() {
    return const_cast<MaskedPointCloud&>(peer.maskedPointCloud());
  }

  ZeltoMeshMaskSettingsProperty_ Current() {
    ZeltoMeshMaskSettingsProperty_ settings;
    EXPECT_TRUE(source.Get(ZeltoMesh::kZeltoMeshMaskSettingsKey, &settings).ok());
    return settings;
  }

  LoggerLevelGuard loggerLevel;
  LogRecorder log;
  ZeltoMeshStreamSource source;
  ZeltoMeshStreamSourceTestPeer peer{&source};
};

TEST_F(MaskSettingsTest, AGetRightAfterConstructionReturnsEnabledFalseNoMaskInfosAndThreshold55) {
  // Stale values in the record prove that Get overwrites every field.
  ZeltoMeshMaskSettingsProperty_ settings = Settings(true, {Info("stale", true, true)}, 7);

  const weftcore::Status status = source.Get("some other key", &settings);

  ASSERT_TRUE(status.ok()) << status.message();
  EXPECT_FALSE(settings.enabled);
  EXPECT_TRUE(settings.maskInfo.empty());
  EXPECT_EQ(settings.maskThreshold, 55);
  EXPECT_EQ(peer.maskSettings().maskThreshold, 55);
  EXPECT_EQ(peer.maskedPointCloud().maskThreshold, 55);
  // The constant key is logged, not the key received.
  EXPECT_EQ(log.Records(), std::vector<PlatformLogRecord>{GetLine(&settings)});
}

TEST_F(MaskSettingsTest, SetWithEnabledTrueAndTwoMaskInfosBuildsTwoRequestEntriesInOrder) {
  // A stale entry with non-zero fields proves the list is cleared first.
  ZeltoSegmentationMaskDataProperty_ stale;
  stale.name = "stale";
  stale.maskDataAddress = 0x1000;
  stale.maskDataSize = 16;
  stale.maskDataWidth = 4;
  stale.maskDataHeight = 4;
  stale.maskDataTimestamp = 99;
  maskDataList().data = {stale};
  const ZeltoMeshMaskSettingsProperty_ settings =
      Settings(true, {Info("person", true, false), Info("floor", false, true)}, 80);

  const weftcore::Status status = source.Set("some other key", &settings);

  ASSERT_TRUE(status.ok()) << status.message();
  const std::vector<ZeltoSegmentationMaskDataProperty_>& requests = peer.maskDataList().data;
  ASSERT_EQ(requests.size(), 2u);
  ExpectRequest(requests[0], "person", true, false);
  ExpectRequest(requests[1], "floor", false, true);
  EXPECT_EQ(peer.maskedPointCloud().maskThreshold, 80);
  EXPECT_EQ(log.Records(), std::vector<PlatformLogRecord>{SetLine(&settings)});

  const ZeltoMeshMaskSettingsProperty_ read = Current();
  EXPECT_TRUE(read.enabled);
  ASSERT_EQ(read.maskInfo.size(), 2u);
  EXPECT_EQ(read.maskInfo[0].name, "person");
  EXPECT_TRUE(read.maskInfo[0].isColorSource);
  EXPECT_FALSE(read.maskInfo[0].isInvertMask);
  EXPECT_EQ(read.maskInfo[1].name, "floor");
  EXPECT_FALSE(read.maskInfo[1].isColorSource);
  EXPECT_TRUE(read.maskInfo[1].isInvertMask);
  EXPECT_EQ(read.maskThreshold, 80);
}

TEST_F(MaskSettingsTest, SetAcceptsUnknownAndDuplicateNamesAsTheyAre) {
  const ZeltoMeshMaskSettingsProperty_ settings =
      Settings(true, {Info("", false, false), Info("x", true, true), Info("x", true, true)}, 255);

  ASSERT_TRUE(source.Set(ZeltoMesh::kZeltoMeshMaskSettingsKey, &settings).ok());

  const std::vector<ZeltoSegmentationMaskDataProperty_>& requests = peer.maskDataList().data;
  ASSERT_EQ(requests.size(), 3u);
  ExpectRequest(requests[0], "", false, false);
  ExpectRequest(requests[1], "x", true, true);
  ExpectRequest(requests[2], "x", true, true);
  EXPECT_EQ(Current().maskThreshold, 255);
}

TEST_F(MaskSettingsTest, SetWithEnabledFalseDoesNotClearTheList) {
  const ZeltoMeshMaskSettingsProperty_ on =
      Settings(true, {Info("person", true, false), Info("floor", false, true)}, 55);
  ASSERT_TRUE(source.Set(ZeltoMesh::kZeltoMeshMaskSettingsKey, &on).ok());
  const ZeltoMeshMaskSettingsProperty_ off = Settings(false, {Info("other", false, false)}, 60);

  ASSERT_TRUE(source.Set(ZeltoMesh::kZeltoMeshMaskSettingsKey, &off).ok());

  // The list keeps the requests of the last enabled Set ...
  const std::vector<ZeltoSegmentationMaskDataProperty_>& requests = peer.maskDataList().data;
  ASSERT_EQ(requests.size(), 2u);
  ExpectRequest(requests[0], "person", true, false);
  ExpectRequest(requests[1], "floor", false, true);
  // ... while the settings and the threshold copy take the new record.
  const ZeltoMeshMaskSettingsProperty_ read = Current();
  EXPECT_FALSE(read.enabled);
  ASSERT_EQ(read.maskInfo.size(), 1u);
  EXPECT_EQ(read.maskInfo[0].name, "other");
  EXPECT_EQ(read.maskThreshold, 60);
  EXPECT_EQ(peer.maskedPointCloud().maskThreshold, 60);
}

// Threshold cases on a four-point cloud over a 4 x 1 depth image, one mask
// pixel per point: point i reads mask byte i.
class MaskThresholdTest : public MaskSettingsTest {
 protected:
  void SetUp() override {
    MaskSettingsTest::SetUp();
    ZeltoTof::ZeltoTofCalibrationSettingsProperty_& calibration =
        maskedPointCloud().calibration;
    calibration.depthWidth = 4;
    calibration.depthHeight = 1;
    calibration.d.fx = 1;
    calibration.d.fy = 1;
  }

  // The z of the four points after Apply with the mask bytes {0, 1, 254, 255}.
  std::vector<int16_t> ApplyMask(bool isInvertMask) {
    std::vector<int16_t> points;
    for (int16_t i = 0; i < 4; ++i) points.insert(points.end(), {int16_t(i * 1000), 0, 1000});
    ZeltoSegmentationMaskDataProperty_ mask;
    mask.name = "mask";
    mask.maskDataAddress = reinterpret_cast<uint64_t>(maskBytes.data());
    mask.maskDataSize = maskBytes.size();
    mask.maskDataWidth = 4;
    mask.maskDataHeight = 1;
    mask.isInvertMask = isInvertMask;
    ZeltoSegmentationMaskDataListProperty_ list;
    list.data = {mask};
    weftcore::Channel::RawData raw;
    raw.address = points.data();
    raw.size = points.size() * sizeof(int16_t);
    const weftcore::Status status = maskedPointCloud().Apply(&raw, &list);
    EXPECT_TRUE(status.ok()) << status.message();
    return {points[2], points[5], points[8], points[11]};
  }

  void SetThreshold(uint8_t threshold) {
    const ZeltoMeshMaskSettingsProperty_ settings = Settings(true, {}, threshold);
    ASSERT_TRUE(source.Set(ZeltoMesh::kZeltoMeshMaskSettingsKey, &settings).ok());
  }

  const std::vector<uint8_t> maskBytes{0, 1, 254, 255};
};

TEST_F(MaskThresholdTest, SetWithThreshold0CountsEveryMaskByteAbove0AsInside) {
  SetThreshold(0);

  EXPECT_EQ(Current().maskThreshold, 0);
  EXPECT_EQ(ApplyMask(false), (std::vector<int16_t>{1000, kMasked, kMasked, kMasked}));
  EXPECT_EQ(ApplyMask(true), (std::vector<int16_t>{kMasked, 1000, 1000, 1000}));
}

TEST_F(MaskThresholdTest, SetWithThreshold255CountsNoByteAsInsideSoOnlyInvertedMasksRemovePoints) {
  SetThreshold(255);

  EXPECT_EQ(Current().maskThreshold, 255);
  EXPECT_EQ(ApplyMask(false), (std::vector<int16_t>{1000, 1000, 1000, 1000}));
  EXPECT_EQ(ApplyMask(true), (std::vector<int16_t>{kMasked, kMasked, kMasked, kMasked}));
}

TEST_F(MaskSettingsTest, GetAndSetWithANullRecordReturnPropertyIsNullAndChangeNothing) {
  const ZeltoMeshMaskSettingsProperty_ settings = Settings(true, {Info("person", true, false)}, 70);
  ASSERT_TRUE(source.Set(ZeltoMesh::kZeltoMeshMaskSettingsKey, &settings).ok());
  log.Clear();

  const weftcore::Status set = source.Set(ZeltoMesh::kZeltoMeshMaskSettingsKey,
                                          static_cast<const ZeltoMeshMaskSettingsProperty_*>(nullptr));
  const weftcore::Status get = source.Get(ZeltoMesh::kZeltoMeshMaskSettingsKey,
                                          static_cast<ZeltoMeshMaskSettingsProperty_*>(nullptr));

  for (const weftcore::Status& status : {set, get}) {
    ASSERT_TRUE(status.IsError());
    EXPECT_EQ(status.level(), weftcore::kLevelError);
    EXPECT_EQ(status.cause(), weftcore::kCauseInvalidArgument);
    EXPECT_EQ(status.message(), "property is null.");
    EXPECT_EQ(status.block(), "ZeltoMesh");
  }
  EXPECT_EQ(log.Records(), (std::vector<PlatformLogRecord>{SetLine(nullptr), GetLine(nullptr)}));
  const ZeltoMeshMaskSettingsProperty_ read = Current();
  EXPECT_TRUE(read.enabled);
  ASSERT_EQ(read.maskInfo.size(), 1u);
  EXPECT_EQ(read.maskInfo[0].name, "person");
  EXPECT_EQ(read.maskThreshold, 70);
  ASSERT_EQ(peer.maskDataList().data.size(), 1u);
  ExpectRequest(peer.maskDataList().data[0], "person", true, false);
}

TEST_F(MaskSettingsTest, NothingIsLoggedAtTheDefaultSilentLevel) {
  StreamSourceLogger().SetLogLevel(ZeltoLogger::Silent);
  ZeltoMeshMaskSettingsProperty_ settings;

  ASSERT_TRUE(source.Set(ZeltoMesh::kZeltoMeshMaskSettingsKey, &settings).ok());
  ASSERT_TRUE(source.Get(ZeltoMesh::kZeltoMeshMaskSettingsKey, &settings).ok());

  EXPECT_TRUE(log.Records().empty());
}

}  // namespace
}  // namespace zelto_test
