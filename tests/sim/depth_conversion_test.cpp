// The exact depth-to-point rule of recording.h.
#include <gtest/gtest.h>

#include "zelto_sim/recording.h"

namespace {

using ZeltoSim::DepthToPoint;
using ZeltoSim::Intrinsics;
using ZeltoSim::Point16;

Intrinsics Camera(double fx, double fy, double cx, double cy, double depthScale) {
  Intrinsics k;
  k.width = 4;
  k.height = 3;
  k.fx = fx;
  k.fy = fy;
  k.cx = cx;
  k.cy = cy;
  k.depthScale = depthScale;
  return k;
}

void ExpectPoint(const Point16& point, int x, int y, int z) {
  EXPECT_EQ(point.x, x);
  EXPECT_EQ(point.y, y);
  EXPECT_EQ(point.z, z);
}

TEST(DepthConversion, PrincipalPointGivesZOnly) {
  ExpectPoint(DepthToPoint(1000, 2, 1, Camera(4, 4, 2, 1, 1000)), 0, 0, 1000);
}

TEST(DepthConversion, ZeroDepthIsTheOrigin) {
  ExpectPoint(DepthToPoint(0, 0, 0, Camera(4, 4, 2, 1, 1000)), 0, 0, 0);
}

TEST(DepthConversion, XAndYFollowThePinhole) {
  // x = (3 - 1) * 1500 / 500 = 6, y = (0 - 2) * 1500 / 250 = -12
  ExpectPoint(DepthToPoint(1500, 3, 0, Camera(500, 250, 1, 2, 1000)), 6, -12, 1500);
}

TEST(DepthConversion, XYRoundHalfAwayFromZero) {
  // (1 - 0) * 2 / 4 = 0.5 -> 1 and (0 - 1) * 2 / 4 = -0.5 -> -1
  ExpectPoint(DepthToPoint(2, 1, 0, Camera(4, 4, 0, 1, 1000)), 1, -1, 2);
  // 0.25 -> 0, -0.75 -> -1, 1.5 -> 2
  ExpectPoint(DepthToPoint(1, 1, 0, Camera(4, 4, 0, 3, 1000)), 0, -1, 1);
  ExpectPoint(DepthToPoint(3, 3, 2, Camera(6, 2, 0, 1, 1000)), 2, 2, 3);
}

TEST(DepthConversion, ZRoundsHalfAwayFromZero) {
  ExpectPoint(DepthToPoint(1, 0, 0, Camera(1, 1, 0, 0, 2000)), 0, 0, 1);  // 0.5 -> 1
  ExpectPoint(DepthToPoint(3, 0, 0, Camera(1, 1, 0, 0, 2000)), 0, 0, 2);  // 1.5 -> 2
  ExpectPoint(DepthToPoint(5, 0, 0, Camera(1, 1, 0, 0, 4000)), 0, 0, 1);  // 1.25 -> 1
  ExpectPoint(DepthToPoint(7, 0, 0, Camera(1, 1, 0, 0, 4000)), 0, 0, 2);  // 1.75 -> 2
}

TEST(DepthConversion, XUsesTheRoundedZ) {
  // z = round(1.5) = 2, so x = (1 - 0) * 2 / 4 = 0.5 -> 1 (1.5 / 4 would give 0)
  ExpectPoint(DepthToPoint(3, 1, 0, Camera(4, 4, 0, 0, 2000)), 1, 0, 2);
}

TEST(DepthConversion, DepthScaleOtherThanMillimetres) {
  // 5000 units per metre: 0.2 mm per unit; 100 units per metre: 10 mm per unit.
  ExpectPoint(DepthToPoint(12345, 0, 0, Camera(1, 1, 0, 0, 5000)), 0, 0, 2469);
  ExpectPoint(DepthToPoint(400, 0, 0, Camera(1, 1, 0, 0, 100)), 0, 0, 4000);
  ExpectPoint(DepthToPoint(1, 0, 0, Camera(1, 1, 0, 0, 1)), 0, 0, 1000);
}

TEST(DepthConversion, ZClampsTo32767) {
  ExpectPoint(DepthToPoint(65535, 0, 0, Camera(1, 1, 0, 0, 1000)), 0, 0, 32767);
  ExpectPoint(DepthToPoint(32767, 0, 0, Camera(1, 1, 0, 0, 1000)), 0, 0, 32767);
  ExpectPoint(DepthToPoint(3277, 0, 0, Camera(1, 1, 0, 0, 100)), 0, 0, 32767);
}

TEST(DepthConversion, XYClampToInt16) {
  // (1000 - 0) * 32767 / 100 and its negative are far outside int16.
  ExpectPoint(DepthToPoint(32767, 1000, 0, Camera(100, 100, 0, 1000, 1000)), 32767, -32768,
              32767);
  ExpectPoint(DepthToPoint(32767, 0, 1000, Camera(100, 100, 1000, 0, 1000)), -32768, 32767,
              32767);
}

TEST(DepthConversion, ImageIsRowMajorXYZPerPixel) {
  const Intrinsics k = Camera(1000, 1000, 0, 0, 1000);  // 4 x 3
  std::vector<uint16_t> depth(12);
  for (size_t i = 0; i < depth.size(); ++i) depth[i] = static_cast<uint16_t>(1000 + i);
  std::vector<int16_t> points(36, -1);
  ZeltoSim::DepthImageToPointCloud(depth.data(), k, points.data());
  // Pixel (u = 3, v = 2) is sample 11: z = 1011, x = 3 * 1011 / 1000 = 3.033, y = 2.022.
  EXPECT_EQ(points[33], 3);
  EXPECT_EQ(points[34], 2);
  EXPECT_EQ(points[35], 1011);
  // Pixel (u = 1, v = 1) is sample 5: z = 1005, x = 1.005 -> 1, y = 1.
  EXPECT_EQ(points[15], 1);
  EXPECT_EQ(points[16], 1);
  EXPECT_EQ(points[17], 1005);
  EXPECT_EQ(points[0], 0);
  EXPECT_EQ(points[1], 0);
  EXPECT_EQ(points[2], 1000);
}

}  // namespace
