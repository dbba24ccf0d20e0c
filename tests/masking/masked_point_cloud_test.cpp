// MaskedPointCloud::Apply (Part 3.2) and the mask fit of its pass 1.
#include <cstdint>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include "masking/mask_fit.h"
#include "masking/masked_point_cloud.h"
#include "masking_fixtures.h"

namespace {

using masking_test::AtColorPixel;
using masking_test::kInvalidDepth;
using masking_test::ListOf;
using masking_test::Mask;
using masking_test::Point;
using masking_test::PointCloud;
using masking_test::StandardCloud;

constexpr bool kColor = true;
constexpr bool kDepth = false;
constexpr bool kInverted = true;

TEST(MaskFit, MaskOf192x256OnA640x480ColourImage) {
  const Zelto::MaskFit fit = Zelto::FitMaskToReference(192, 256, 640.0f, 480.0f);
  // sx = 0.3 <= sy = 0.5333: scale = sy, offsetX = (sy * 640 - 192) * 0.5.
  EXPECT_EQ(fit.scale, 0x1.111112p-1f);  // 0.533333361
  EXPECT_EQ(fit.offsetX, 0x1.2aaaacp+6f);  // 74.6666718
  EXPECT_EQ(fit.offsetY, 0.0f);
}

TEST(Apply, MaskOf192x256OnA640x480ColourImage) {
  MaskedPointCloud cloud = StandardCloud();
  // Colour pixel (400, 100): col = trunc(213.33 - 74.67) = 138, row = 53.
  Mask hit(192, 256);
  hit.At(138 + 192 * 53) = 255;
  Mask neighbour(192, 256);
  neighbour.At(137 + 192 * 53) = 255;
  neighbour.At(139 + 192 * 53) = 255;
  neighbour.At(138 + 192 * 52) = 255;
  PointCloud points({AtColorPixel(400, 100)});
  auto list = ListOf({neighbour.Record(kColor)});
  ASSERT_TRUE(cloud.Apply(points.Raw(), &list).ok());
  EXPECT_EQ(points.Z(0), 1000);
  list = ListOf({hit.Record(kColor)});
  ASSERT_TRUE(cloud.Apply(points.Raw(), &list).ok());
  EXPECT_EQ(points.Z(0), kInvalidDepth);
}

TEST(MaskFit, MaskOfExactlyTheReferenceSize) {
  const Zelto::MaskFit fit = Zelto::FitMaskToReference(640, 480, 640.0f, 480.0f);
  EXPECT_EQ(fit.scale, 1.0f);
  EXPECT_EQ(fit.offsetX, 0.0f);
  EXPECT_EQ(fit.offsetY, 0.0f);
}

TEST(MaskFit, TieOfTheTwoRatiosGoesToTheFirstBranch) {
  // 84 / 640 == 63 / 480 in float. The first branch gives offsetX = 0 and
  // offsetY = 0; the second would give offsetY = (sx * 480 - 63) * 0.5 = -2^-19.
  const Zelto::MaskFit fit = Zelto::FitMaskToReference(84, 63, 640.0f, 480.0f);
  EXPECT_EQ(fit.scale, 63.0f / 480.0f);
  EXPECT_EQ(fit.offsetX, 0.0f);
  EXPECT_EQ(fit.offsetY, 0.0f);
}

TEST(Apply, MaskOfExactlyTheReferenceSizeReadsByteUPlusWidthTimesV) {
  MaskedPointCloud cloud = StandardCloud();
  Mask mask(640, 480);
  mask.At(100 + 640 * 50) = 200;
  PointCloud points({AtColorPixel(100, 50), AtColorPixel(101, 50), AtColorPixel(100, 51),
                     AtColorPixel(99, 50)});
  auto list = ListOf({mask.Record(kColor)});
  ASSERT_TRUE(cloud.Apply(points.Raw(), &list).ok());
  EXPECT_EQ(points.Z(0), kInvalidDepth);
  EXPECT_EQ(points.Z(1), 1000);
  EXPECT_EQ(points.Z(2), 1000);
  EXPECT_EQ(points.Z(3), 1000);
}

TEST(Apply, DepthMaskIsLookedUpThroughTheDepthMapping) {
  MaskedPointCloud cloud = StandardCloud();
  // Colour pixel (100, 50) is depth pixel (50, 25) in the standard calibration.
  Mask mask(320, 240);
  mask.At(50 + 320 * 25) = 200;
  PointCloud points({AtColorPixel(100, 50), AtColorPixel(102, 50)});
  auto list = ListOf({mask.Record(kDepth)});
  ASSERT_TRUE(cloud.Apply(points.Raw(), &list).ok());
  EXPECT_EQ(points.Z(0), kInvalidDepth);
  EXPECT_EQ(points.Z(1), 1000);
}

// One point on colour pixel (10, 20) against one byte of `value`.
int16_t DepthAfterThreshold(uint8_t value, bool isInvertMask) {
  MaskedPointCloud cloud = StandardCloud();
  EXPECT_EQ(cloud.maskThreshold, 55);
  Mask mask(640, 480);
  mask.At(10 + 640 * 20) = value;
  PointCloud points({AtColorPixel(10, 20)});
  auto list = ListOf({mask.Record(kColor, isInvertMask)});
  EXPECT_TRUE(cloud.Apply(points.Raw(), &list).ok());
  return points.Z(0);
}

TEST(Apply, Threshold55Byte55LeavesThePointAnd56RemovesIt) {
  EXPECT_EQ(DepthAfterThreshold(55, false), 1000);
  EXPECT_EQ(DepthAfterThreshold(56, false), kInvalidDepth);
}

TEST(Apply, Threshold55InvertedByte55RemovesThePointAnd56LeavesIt) {
  EXPECT_EQ(DepthAfterThreshold(55, kInverted), kInvalidDepth);
  EXPECT_EQ(DepthAfterThreshold(56, kInverted), 1000);
}

TEST(Apply, ThresholdIsReadFromTheMember) {
  MaskedPointCloud cloud = StandardCloud();
  cloud.maskThreshold = 200;
  Mask mask(640, 480, 200);
  PointCloud points({AtColorPixel(10, 20)});
  auto list = ListOf({mask.Record(kColor)});
  ASSERT_TRUE(cloud.Apply(points.Raw(), &list).ok());
  EXPECT_EQ(points.Z(0), 1000);
  cloud.maskThreshold = 199;
  ASSERT_TRUE(cloud.Apply(points.Raw(), &list).ok());
  EXPECT_EQ(points.Z(0), kInvalidDepth);
}

TEST(Apply, TwoMasksWhereTheFirstLeavesThePointAndTheSecondRemovesIt) {
  MaskedPointCloud cloud = StandardCloud();
  Mask leaves(640, 480, 0);
  Mask removes(320, 240, 255);
  PointCloud points({AtColorPixel(10, 20)});
  auto list = ListOf({leaves.Record(kColor), removes.Record(kDepth)});
  ASSERT_TRUE(cloud.Apply(points.Raw(), &list).ok());
  EXPECT_EQ(points.Z(0), kInvalidDepth);
}

TEST(Apply, SecondEntryWithWidthZeroStopsAllMasking) {
  MaskedPointCloud cloud = StandardCloud();
  Mask valid(640, 480, 255);
  ZeltoSegmentation::ZeltoSegmentationMaskDataProperty_ invalid;
  invalid.name = "person";
  invalid.maskDataAddress = 0x123456789ABCDEF0u;
  invalid.maskDataSize = 4096;
  invalid.maskDataWidth = 0;
  invalid.maskDataHeight = 77;
  invalid.maskDataTimestamp = 999;
  PointCloud points({AtColorPixel(10, 20), AtColorPixel(500, 400)});
  auto list = ListOf({valid.Record(kColor), invalid});
  const weftcore::Status status = cloud.Apply(points.Raw(), &list);
  ASSERT_TRUE(status.IsError());
  EXPECT_EQ(status.level(), 1);
  EXPECT_EQ(status.cause(), 2);
  EXPECT_EQ(status.block(), "ZeltoMesh");
  // Five conversions for six values: "timestamp:" shows the height.
  EXPECT_EQ(status.message(),
            "Invalid mask data mask name:person address:9abcdef0 size:4096 width:0 "
            "height timestamp:77");
  EXPECT_EQ(points.Z(0), 1000);
  EXPECT_EQ(points.Z(1), 1000);
}

TEST(Apply, ZeroAddressOrZeroSizeIsInvalid) {
  MaskedPointCloud cloud = StandardCloud();
  Mask mask(640, 480, 255);
  PointCloud points({AtColorPixel(10, 20)});
  auto noAddress = mask.Record(kColor);
  noAddress.name = "a";
  noAddress.maskDataAddress = 0;
  auto list = ListOf({noAddress});
  weftcore::Status status = cloud.Apply(points.Raw(), &list);
  EXPECT_EQ(status.message(),
            "Invalid mask data mask name:a address:0 size:307200 width:640 height timestamp:480");
  auto noSize = mask.Record(kDepth);
  noSize.name = "b";
  noSize.maskDataAddress = 0xFFFFFFFFFFFFFFFFu;
  noSize.maskDataSize = 0;
  list = ListOf({noSize});
  status = cloud.Apply(points.Raw(), &list);
  EXPECT_EQ(status.message(),
            "Invalid mask data mask name:b address:ffffffff size:0 width:640 height timestamp:480");
  EXPECT_EQ(status.cause(), 2);
  EXPECT_EQ(points.Z(0), 1000);
}

TEST(MaskFit, EntryWithHeightZero) {
  const Zelto::MaskFit fit = Zelto::FitMaskToReference(64, 0, 640.0f, 480.0f);
  // sy = 0 < sx: scale = sx, offsetY = sx * 480 * 0.5.
  EXPECT_EQ(fit.scale, 0x1.99999ap-4f);  // 0.100000001
  EXPECT_EQ(fit.offsetX, 0.0f);
  EXPECT_EQ(fit.offsetY, 24.0f);
}

TEST(Apply, EntryWithHeightZeroIsAcceptedAndSkipsTheUpperHalf) {
  MaskedPointCloud cloud = StandardCloud();
  Mask mask(64, 0, 64 * 64, 255);
  // Row = trunc(v * 0.1 - 24): v = 100 gives -13 (skipped), v = 400 gives 16.
  PointCloud points({AtColorPixel(320, 100), AtColorPixel(320, 400)});
  auto list = ListOf({mask.Record(kColor)});
  ASSERT_TRUE(cloud.Apply(points.Raw(), &list).ok());
  EXPECT_EQ(points.Z(0), 1000);
  EXPECT_EQ(points.Z(1), kInvalidDepth);
}

TEST(Apply, RawDataOf13BytesProcessesTwoPointsAndIgnoresTheLastByte) {
  MaskedPointCloud cloud = StandardCloud();
  Mask mask(640, 480, 255);
  const Point p = AtColorPixel(10, 20);
  std::vector<unsigned char> bytes(13, 0xAB);
  for (int i = 0; i < 2; ++i) std::memcpy(bytes.data() + 6 * i, &p, sizeof p);
  PointCloud raw13(13);
  weftcore::Channel::RawData* raw = raw13.Raw();
  std::memcpy(raw->address, bytes.data(), bytes.size());
  auto list = ListOf({mask.Record(kColor)});
  ASSERT_TRUE(cloud.Apply(raw, &list).ok());
  EXPECT_EQ(raw13.Z(0), kInvalidDepth);
  EXPECT_EQ(raw13.Z(1), kInvalidDepth);
  EXPECT_EQ(raw13.Bytes()[12], 0xAB);
  // x and y are never written.
  EXPECT_EQ(std::memcmp(raw13.Bytes().data(), &p, 4), 0);
  EXPECT_EQ(std::memcmp(raw13.Bytes().data() + 6, &p, 4), 0);
}

TEST(Apply, FewerThanSixBytesOrEmptyDoNothing) {
  MaskedPointCloud cloud = StandardCloud();
  Mask mask(640, 480, 255);
  auto list = ListOf({mask.Record(kColor)});
  PointCloud five(5, 0x11);
  ASSERT_TRUE(cloud.Apply(five.Raw(), &list).ok());
  EXPECT_EQ(five.Bytes(), std::vector<unsigned char>(5, 0x11));
  weftcore::Channel::RawData empty;
  EXPECT_TRUE(cloud.Apply(&empty, &list).ok());
}

TEST(Apply, EmptyMaskListLeavesEveryPoint) {
  MaskedPointCloud cloud = StandardCloud();
  PointCloud points({AtColorPixel(10, 20), {0, 0, 0}});
  const auto list = ListOf({});
  ASSERT_TRUE(cloud.Apply(points.Raw(), &list).ok());
  EXPECT_EQ(points.Z(0), 1000);
  EXPECT_EQ(points.Z(1), 0);
}

TEST(Apply, RowBeyondMaskHeightWithByteIndexBelowSizeReadsThatByte) {
  MaskedPointCloud cloud = StandardCloud();
  // 640 x 240 on 640 x 480: scale 1, offsetY 120; v = 400 is row 280 >= 240.
  Mask mask(640, 240, 640 * 480, 0);
  mask.At(100 + 640 * 280) = 255;
  PointCloud points({AtColorPixel(100, 400), AtColorPixel(101, 400)});
  auto list = ListOf({mask.Record(kColor)});
  ASSERT_TRUE(cloud.Apply(points.Raw(), &list).ok());
  EXPECT_EQ(points.Z(0), kInvalidDepth);
  EXPECT_EQ(points.Z(1), 1000);
}

TEST(Apply, ByteIndexAtMaskSizeIsSkipped) {
  MaskedPointCloud cloud = StandardCloud();
  // Same fit, but only 640 * 240 bytes: row 280 is beyond the byte count.
  Mask mask(640, 240, 255);
  PointCloud points({AtColorPixel(100, 400), AtColorPixel(100, 200)});
  auto list = ListOf({mask.Record(kColor)});
  ASSERT_TRUE(cloud.Apply(points.Raw(), &list).ok());
  EXPECT_EQ(points.Z(0), 1000);
  EXPECT_EQ(points.Z(1), kInvalidDepth);
}

TEST(Apply, ColumnAtOrBeyondMaskWidthIsSkippedEvenWithinSize) {
  MaskedPointCloud cloud = StandardCloud();
  // 100 x 240 on the 320 x 240 depth image: scale 1, offsetX 110. Depth
  // column 250 is mask column 140 >= 100, though its index is below the size.
  Mask mask(100, 240, 255);
  PointCloud points({AtColorPixel(500, 100), AtColorPixel(300, 100)});
  auto list = ListOf({mask.Record(kDepth)});
  ASSERT_TRUE(cloud.Apply(points.Raw(), &list).ok());
  EXPECT_EQ(points.Z(0), 1000);
  EXPECT_EQ(points.Z(1), kInvalidDepth);
}

TEST(Apply, NanPointZeroZeroZeroReadsMaskPixelZeroOfRowZero) {
  MaskedPointCloud cloud = StandardCloud();
  Mask depthMask(320, 240);
  depthMask.At(0) = 255;
  PointCloud points({{0, 0, 0}, AtColorPixel(2, 0)});
  auto list = ListOf({depthMask.Record(kDepth)});
  ASSERT_TRUE(cloud.Apply(points.Raw(), &list).ok());
  EXPECT_EQ(points.Z(0), kInvalidDepth);
  EXPECT_EQ(points.Z(1), 1000);

  Mask colorMask(640, 480);
  colorMask.At(0) = 255;
  PointCloud again({{0, 0, 0}});
  list = ListOf({colorMask.Record(kColor)});
  ASSERT_TRUE(cloud.Apply(again.Raw(), &list).ok());
  EXPECT_EQ(again.Z(0), kInvalidDepth);
}

TEST(Apply, OffImagePointIsJudgedByTheFirstMaskByteWhenScaleIsBelowOne) {
  MaskedPointCloud cloud = StandardCloud();
  // 320 x 240 on 640 x 480: scale 0.5, offsets 0; (-1, -1) becomes (0, 0).
  Mask mask(320, 240);
  mask.At(0) = 255;
  PointCloud points({{2000, 0, 1000}});
  auto list = ListOf({mask.Record(kColor)});
  ASSERT_TRUE(cloud.Apply(points.Raw(), &list).ok());
  EXPECT_EQ(points.Z(0), kInvalidDepth);
}

TEST(Apply, OffImagePointIsSkippedWhenScaleIsOne) {
  MaskedPointCloud cloud = StandardCloud();
  Mask mask(640, 480, 255);
  PointCloud points({{2000, 0, 1000}});
  auto list = ListOf({mask.Record(kColor)});
  ASSERT_TRUE(cloud.Apply(points.Raw(), &list).ok());
  EXPECT_EQ(points.Z(0), 1000);
}

TEST(Apply, AllZeroCalibrationMasksNoPoint) {
  MaskedPointCloud cloud;  // as constructed: calibration and inverse zero
  Mask colorMask(64, 48, 255);
  Mask depthMask(64, 48, 255);
  PointCloud points({{0, 0, 0}, {0, 0, 1000}, {100, -50, 1000}, {-3, 7, -20}});
  auto list = ListOf({colorMask.Record(kColor), depthMask.Record(kDepth)});
  ASSERT_TRUE(cloud.Apply(points.Raw(), &list).ok());
  EXPECT_EQ(points.Z(0), 0);
  EXPECT_EQ(points.Z(1), 1000);
  EXPECT_EQ(points.Z(2), 1000);
  EXPECT_EQ(points.Z(3), -20);
}

TEST(Apply, ByteIndexWrapsAroundIn32Bits) {
  MaskedPointCloud cloud = StandardCloud();
  // Depth image and mask 65536 x 65537: scale 1, offsets 0. Depth row 65536
  // gives 5 + 65536 * 65536 = 2^32 + 5, which wraps to byte 5.
  cloud.calibration.depthWidth = 65536;
  cloud.calibration.depthHeight = 65537;
  cloud.calibration.d = {1.0f, 1.0f, 0.0f, 40000.0f};
  Mask mask(65536, 65537, 16, 0);
  mask.At(5) = 255;
  PointCloud points({{5, 25536, 1}, {6, 25536, 1}});
  auto list = ListOf({mask.Record(kDepth)});
  ASSERT_TRUE(cloud.Apply(points.Raw(), &list).ok());
  EXPECT_EQ(points.Z(0), kInvalidDepth);
  EXPECT_EQ(points.Z(1), 1);
}

TEST(Apply, NullArgumentsFailWithCause2) {
  MaskedPointCloud cloud = StandardCloud();
  PointCloud points({AtColorPixel(10, 20)});
  const auto list = ListOf({});
  const weftcore::Status noCloud = cloud.Apply(nullptr, &list);
  EXPECT_EQ(noCloud.cause(), 2);
  EXPECT_EQ(noCloud.message(), "point cloud is null.");
  EXPECT_EQ(noCloud.block(), "ZeltoMesh");
  const weftcore::Status noList = cloud.Apply(points.Raw(), nullptr);
  EXPECT_EQ(noList.cause(), 2);
  EXPECT_EQ(noList.message(), "Null pointer");

  Mask mask(640, 480, 255);
  const auto one = ListOf({mask.Record(kColor)});
  weftcore::Channel::RawData noAddress;
  noAddress.size = 12;
  const weftcore::Status nullData = cloud.Apply(&noAddress, &one);
  EXPECT_EQ(nullData.cause(), 2);
  EXPECT_EQ(nullData.message(), "point cloud is null.");
}

}  // namespace
