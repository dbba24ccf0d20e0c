// MaskedPointCloud::SetupCoordinate (Part 3.1): calibration read and the
// inverse of its rotation.
#include <cmath>

#include <gtest/gtest.h>

#include "calibration_stream.h"
#include "masking/masked_point_cloud.h"
#include "masking_fixtures.h"

namespace {

using masking_test::CalibrationStream;
using masking_test::StandardCalibration;

void ExpectInverse(const MaskedPointCloud& cloud, const float (&expected)[9]) {
  for (int k = 0; k < 9; ++k) EXPECT_EQ(cloud.inverseRotation[k], expected[k]) << "entry " << k;
}

TEST(SetupCoordinate, NullStreamLeavesCalibrationAndInverse) {
  MaskedPointCloud cloud;
  cloud.calibration.colorWidth = 17;
  cloud.inverseRotation[4] = 3.0f;
  cloud.SetupCoordinate();
  EXPECT_EQ(cloud.calibration.colorWidth, 17);
  const float expected[9] = {0, 0, 0, 0, 3.0f, 0, 0, 0, 0};
  ExpectInverse(cloud, expected);
}

TEST(SetupCoordinate, ReadsEveryFieldOfTheCalibrationRecord) {
  ZeltoTof::ZeltoTofCalibrationSettingsProperty_ reply = StandardCalibration();
  reply.R = {2, 0, 0, 0, 4, 0, 1, 0, 1};
  CalibrationStream stream(reply);
  MaskedPointCloud cloud;
  cloud.stream = &stream;
  cloud.SetupCoordinate();

  EXPECT_EQ(stream.reads, 1);
  EXPECT_EQ(stream.releases, 1);
  EXPECT_EQ(stream.lastKey, "kZeltoTofCalibrationSettingsKey");
  const auto& c = cloud.calibration;
  EXPECT_EQ(c.colorWidth, 640);
  EXPECT_EQ(c.colorHeight, 480);
  EXPECT_EQ(c.depthWidth, 320);
  EXPECT_EQ(c.depthHeight, 240);
  EXPECT_TRUE(c.isCalibrated);
  EXPECT_EQ(c.c.fx, 500.0f);
  EXPECT_EQ(c.c.cy, 240.0f);
  EXPECT_EQ(c.d.fy, 250.0f);
  EXPECT_EQ(c.d.cx, 160.0f);
  EXPECT_EQ(c.R.a, 2.0f);
  EXPECT_EQ(c.R.e, 4.0f);
  EXPECT_EQ(c.R.g, 1.0f);
  EXPECT_EQ(c.T.z, 30.0f);
}

TEST(SetupCoordinate, InverseIsAdjugateOverDeterminant) {
  ZeltoTof::ZeltoTofCalibrationSettingsProperty_ reply = StandardCalibration();
  // det = 8; the inverse is exact in binary.
  reply.R = {2, 0, 0, 0, 4, 0, 1, 0, 1};
  CalibrationStream stream(reply);
  MaskedPointCloud cloud;
  cloud.stream = &stream;
  cloud.SetupCoordinate();
  const float expected[9] = {0.5f, 0, 0, 0, 0.25f, 0, -0.5f, 0, 1.0f};
  ExpectInverse(cloud, expected);
}

TEST(SetupCoordinate, InverseOfAShearWithNegativeEntries) {
  ZeltoTof::ZeltoTofCalibrationSettingsProperty_ reply = StandardCalibration();
  reply.R = {1, 2, 0, 0, 1, 0, 0, 3, 1};
  CalibrationStream stream(reply);
  MaskedPointCloud cloud;
  cloud.stream = &stream;
  cloud.SetupCoordinate();
  const float expected[9] = {1, -2, 0, 0, 1, 0, 0, -3, 1};
  ExpectInverse(cloud, expected);
}

TEST(SetupCoordinate, FailedReadKeepsTheRecordAndStillInverts) {
  CalibrationStream stream(StandardCalibration());
  stream.failReads = true;
  MaskedPointCloud cloud;
  cloud.calibration.colorWidth = 99;
  cloud.calibration.R = {0, -1, 0, 1, 0, 0, 0, 0, 1};
  cloud.stream = &stream;
  cloud.SetupCoordinate();
  EXPECT_EQ(stream.reads, 1);
  EXPECT_EQ(cloud.calibration.colorWidth, 99);
  const float expected[9] = {0, 1, 0, -1, 0, 0, 0, 0, 1};
  ExpectInverse(cloud, expected);
}

TEST(SetupCoordinate, ZeroMatrixGivesNanInverseWithoutError) {
  CalibrationStream stream(ZeltoTof::ZeltoTofCalibrationSettingsProperty_{});
  MaskedPointCloud cloud;
  cloud.stream = &stream;
  cloud.SetupCoordinate();
  for (float entry : cloud.inverseRotation) EXPECT_TRUE(std::isnan(entry));
}

TEST(SetupCoordinate, CalibrationChangeIsPickedUpOnTheNextCall) {
  ZeltoTof::ZeltoTofCalibrationSettingsProperty_ first = StandardCalibration();
  CalibrationStream stream1(first);
  MaskedPointCloud cloud;
  cloud.stream = &stream1;
  cloud.SetupCoordinate();
  ZeltoTof::ZeltoTofCalibrationSettingsProperty_ second = first;
  second.colorWidth = 1280;
  second.R = {4, 0, 0, 0, 4, 0, 0, 0, 4};
  CalibrationStream stream2(second);
  cloud.stream = &stream2;
  cloud.SetupCoordinate();
  EXPECT_EQ(cloud.calibration.colorWidth, 1280);
  const float expected[9] = {0.25f, 0, 0, 0, 0.25f, 0, 0, 0, 0.25f};
  ExpectInverse(cloud, expected);
}

}  // namespace
