// MaskedPointCloud::CameraToColor and CameraToDepth (Part 3.1).
#include <cmath>
#include <utility>

#include <gtest/gtest.h>

#include "calibration_stream.h"
#include "masking/masked_point_cloud.h"
#include "masking_fixtures.h"

namespace {

using masking_test::CalibrationStream;
using masking_test::StandardCalibration;
using masking_test::StandardCloud;
using Pixel = std::pair<float, float>;

const Pixel kOutside{-1.0f, -1.0f};

// Reads `reply` through SetupCoordinate, as the frame loop does.
MaskedPointCloud CloudReading(const ZeltoTof::ZeltoTofCalibrationSettingsProperty_& reply) {
  CalibrationStream stream(reply);
  MaskedPointCloud cloud;
  cloud.stream = &stream;
  cloud.SetupCoordinate();
  cloud.stream = nullptr;
  return cloud;
}

TEST(CameraToColor, ColumnAtWidthMinusHalfIsAcceptedAndAtWidthRejected) {
  const MaskedPointCloud cloud = StandardCloud();
  // uf = 320 + (639 * 500) / 1000 = 639.5 and 320 + (640 * 500) / 1000 = 640.
  EXPECT_EQ(cloud.CameraToColor({639, 0, 1000}), Pixel(639.0f, 240.0f));
  EXPECT_EQ(cloud.CameraToColor({640, 0, 1000}), kOutside);
}

TEST(CameraToColor, RowAtHeightIsRejectedAndNegativeRowToo) {
  const MaskedPointCloud cloud = StandardCloud();
  // vf = 240 + (y * 500) / 1000: 479.5, 480 and -0.5 (truncates to 0).
  EXPECT_EQ(cloud.CameraToColor({0, 479, 1000}), Pixel(320.0f, 479.0f));
  EXPECT_EQ(cloud.CameraToColor({0, 480, 1000}), kOutside);
  EXPECT_EQ(cloud.CameraToColor({0, -481, 1000}), Pixel(320.0f, 0.0f));
  EXPECT_EQ(cloud.CameraToColor({0, -482, 1000}), kOutside);
}

TEST(CameraToColorAndDepth, MinusPointThreeIsAcceptedByColourAndRejectedByDepth) {
  MaskedPointCloud cloud = StandardCloud();
  cloud.calibration.c = {1.0f, 1.0f, 0.7f, 0.5f};
  cloud.calibration.d = {1.0f, 1.0f, 0.7f, 0.5f};
  // uf = 0.7 - 1 = -0.3 in both mappings.
  const Zelto::ZeltoVector3_ p{-1, 0, 1};
  EXPECT_EQ(cloud.CameraToColor(p), Pixel(0.0f, 0.0f));
  EXPECT_EQ(cloud.CameraToDepth(p), kOutside);
}

TEST(CameraToColor, IdentityRotationIsThePinholeProjectionWithoutTranslation) {
  const MaskedPointCloud cloud = CloudReading(StandardCalibration());
  // u = 320 + (-100 * 500) / 1000, v = 240 + (200 * 500) / 1000; T is ignored.
  EXPECT_EQ(cloud.CameraToColor({-100, 200, 1000}), Pixel(270.0f, 340.0f));
  // Whole pixels: 320 + 12.25 truncates to 332.
  EXPECT_EQ(cloud.CameraToColor({49, 0, 2000}), Pixel(332.0f, 240.0f));
}

TEST(CameraToColor, RotationBy90DegreesAboutZSwapsXAndYWithOneSignChange) {
  ZeltoTof::ZeltoTofCalibrationSettingsProperty_ calibration = StandardCalibration();
  calibration.R = {0, -1, 0, 1, 0, 0, 0, 0, 1};
  const MaskedPointCloud cloud = CloudReading(calibration);
  // The inverse maps (x, y, z) to (y, -x, z): u = 320 + 100, v = 240 + 50.
  EXPECT_EQ(cloud.CameraToColor({-100, 200, 1000}), Pixel(420.0f, 290.0f));
  EXPECT_EQ(cloud.CameraToColor({100, 200, 1000}), Pixel(420.0f, 190.0f));
}

TEST(CameraToColorAndDepth, AllZeroCalibrationRejectsEveryPoint) {
  const MaskedPointCloud read = CloudReading(ZeltoTof::ZeltoTofCalibrationSettingsProperty_{});
  const MaskedPointCloud fresh;
  const Zelto::ZeltoVector3_ points[] = {
      {0, 0, 0}, {0, 0, 1000}, {100, -50, 1000}, {-3, 7, -20}, {5, 0, 0}};
  for (const auto& p : points) {
    EXPECT_EQ(read.CameraToColor(p), kOutside);
    EXPECT_EQ(read.CameraToDepth(p), kOutside);
    EXPECT_EQ(fresh.CameraToColor(p), kOutside);
    EXPECT_EQ(fresh.CameraToDepth(p), kOutside);
  }
}

TEST(CameraToDepth, PointExactlyOnTheRightEdgeIsRejected) {
  const MaskedPointCloud cloud = StandardCloud();
  // uf = (640 * 250) / 1000 + 160 = 320 = depthWidth.
  EXPECT_EQ(cloud.CameraToDepth({640, 0, 1000}), kOutside);
  // One step inside keeps its fraction: 319.5.
  EXPECT_EQ(cloud.CameraToDepth({638, 0, 1000}), Pixel(319.5f, 120.0f));
}

TEST(CameraToDepth, BottomEdgeIsRejectedAndPositionIsSubPixel) {
  const MaskedPointCloud cloud = StandardCloud();
  EXPECT_EQ(cloud.CameraToDepth({0, 480, 1000}), kOutside);
  EXPECT_EQ(cloud.CameraToDepth({-3, 5, 1000}), Pixel(159.25f, 121.25f));
}

TEST(CameraToColorAndDepth, NanPointZeroZeroZero) {
  const MaskedPointCloud cloud = StandardCloud();
  EXPECT_EQ(cloud.CameraToColor({0, 0, 0}), Pixel(0.0f, 0.0f));
  const Pixel depth = cloud.CameraToDepth({0, 0, 0});
  EXPECT_TRUE(std::isnan(depth.first));
  EXPECT_TRUE(std::isnan(depth.second));
}

TEST(CameraToColorAndDepth, InfiniteCoordinateFromZeroDepthIsRejected) {
  const MaskedPointCloud cloud = StandardCloud();
  EXPECT_EQ(cloud.CameraToColor({5, 0, 0}), kOutside);
  EXPECT_EQ(cloud.CameraToColor({-5, 0, 0}), kOutside);
  EXPECT_EQ(cloud.CameraToDepth({5, 0, 0}), kOutside);
  EXPECT_EQ(cloud.CameraToDepth({-5, 0, 0}), kOutside);
}

}  // namespace
