// The synthetic scene: determinism, the camera models, the masks.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "zelto_sim/synthetic_scene.h"

namespace {

using namespace ZeltoSim;

size_t CountEqual(const std::vector<uint16_t>& depth, uint16_t value) {
  return static_cast<size_t>(std::count(depth.begin(), depth.end(), value));
}

TEST(SyntheticScene, SameSeedSameBytes) {
  std::vector<uint16_t> first, second;
  SyntheticScene(7).RenderDepth(12, &first);
  SyntheticScene(7).RenderDepth(12, &second);
  ASSERT_EQ(first.size(), 640u * 480u);
  EXPECT_EQ(first, second);
}

TEST(SyntheticScene, FrameDoesNotDependOnWhatWasRenderedBefore) {
  const SyntheticScene scene(3);
  std::vector<uint16_t> direct, afterOthers, other, fresh;
  scene.RenderDepth(5, &direct);
  scene.RenderDepth(4, &other);
  scene.RenderDepth(90, &other);
  scene.RenderDepth(5, &afterOthers);
  SyntheticScene(3).RenderDepth(5, &fresh);
  EXPECT_EQ(direct, afterOthers);
  EXPECT_EQ(direct, fresh);
}

TEST(SyntheticScene, SeedChangesOnlyTheNoise) {
  std::vector<uint16_t> a, b;
  SyntheticScene(1).RenderDepth(0, &a);
  SyntheticScene(2).RenderDepth(0, &b);
  EXPECT_NE(a, b);
  size_t close = 0, measuredInBoth = 0;
  for (size_t i = 0; i < a.size(); ++i) {
    if (a[i] == 0 || b[i] == 0) continue;
    ++measuredInBoth;
    close += std::abs(static_cast<int>(a[i]) - static_cast<int>(b[i])) <= 60;
  }
  EXPECT_GT(measuredInBoth, a.size() * 8 / 10);
  EXPECT_EQ(close, measuredInBoth);  // noise stays within a few centimetres
}

TEST(SyntheticScene, TheSphereMoves) {
  std::vector<uint16_t> first, later;
  SyntheticScene(1).RenderDepth(0, &first);
  SyntheticScene(1).RenderDepth(30, &later);
  size_t changed = 0;
  for (size_t i = 0; i < first.size(); ++i) {
    changed += std::abs(static_cast<int>(first[i]) - static_cast<int>(later[i])) > 100;
  }
  EXPECT_GT(changed, 2000u);
}

TEST(SyntheticScene, InvalidPixelsExistButAreAMinority) {
  std::vector<uint16_t> depth;
  SyntheticScene(1).RenderDepth(0, &depth);
  const size_t invalid = CountEqual(depth, 0);
  EXPECT_GT(invalid, 1000u);                 // doorway, range limit, silhouettes, dropouts
  EXPECT_LT(invalid, depth.size() * 2 / 10);
  EXPECT_LE(*std::max_element(depth.begin(), depth.end()), 6000);
}

TEST(SyntheticScene, TheDoorwayReturnsNothing) {
  // The back wall's doorway is at x 800..1700 mm, 5.6 m away: around u = 400, v = 150.
  std::vector<uint16_t> depth;
  SyntheticScene(1).RenderDepth(0, &depth);
  size_t invalid = 0;
  for (int v = 140; v < 160; ++v) {
    for (int u = 400; u < 420; ++u) invalid += depth[v * 640 + u] == 0;
  }
  EXPECT_EQ(invalid, 400u);
}

TEST(SyntheticScene, FloorDepthMatchesTheGeometry) {
  // Camera 1.3 m above the floor, pitched 15 degrees down: the floor seen
  // through pixel row v lies at depth 1300 / ((v - cy) / fy * cos 15 + sin 15).
  std::vector<uint16_t> depth;
  SyntheticScene(1).RenderDepth(0, &depth);
  const double pitch = 15.0 * 3.14159265358979323846 / 180.0;
  const int v = 470;
  const double expected = 1300.0 / ((v - 239.5) / 525.0 * std::cos(pitch) + std::sin(pitch));
  int near = 0;
  for (int u = 300; u < 340; ++u) near += std::fabs(depth[v * 640 + u] - expected) < 25.0;
  EXPECT_GE(near, 38);  // all but the random dropouts
}

TEST(SyntheticScene, Intrinsics) {
  const Intrinsics k = SceneIntrinsics();
  EXPECT_EQ(k.width, 640);
  EXPECT_EQ(k.height, 480);
  EXPECT_EQ(k.fx, 525.0);
  EXPECT_EQ(k.fy, 525.0);
  EXPECT_EQ(k.cx, 319.5);
  EXPECT_EQ(k.cy, 239.5);
  EXPECT_EQ(k.depthScale, 1000.0);
}

TEST(SyntheticScene, CalibrationIsASmallRotation) {
  const auto calibration = SceneCalibration();
  EXPECT_TRUE(calibration.isCalibrated);
  EXPECT_EQ(calibration.colorWidth, 640);
  EXPECT_EQ(calibration.colorHeight, 480);
  EXPECT_EQ(calibration.depthWidth, 640);
  EXPECT_EQ(calibration.depthHeight, 480);
  EXPECT_EQ(calibration.c.fx, 500.0f);
  EXPECT_EQ(calibration.c.cx, 320.0f);
  EXPECT_EQ(calibration.d.fx, 525.0f);
  EXPECT_EQ(calibration.d.cy, 239.5f);
  const auto& r = calibration.R;
  const double rows[3][3] = {{r.a, r.b, r.c}, {r.d, r.e, r.f}, {r.g, r.h, r.i}};
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      double dot = 0;
      for (int k = 0; k < 3; ++k) dot += rows[i][k] * rows[j][k];
      EXPECT_NEAR(dot, i == j ? 1.0 : 0.0, 1e-6);
    }
  }
  // Rotation angle from the trace: between 1 and 2 degrees.
  const double angle = std::acos((r.a + r.e + r.i - 1.0) / 2.0) * 180.0 / 3.14159265358979323846;
  EXPECT_GT(angle, 1.0);
  EXPECT_LT(angle, 2.0);
  EXPECT_EQ(calibration.T.x, 0.0f);
}

TEST(SyntheticScene, PersonMaskMarksThePerson) {
  std::vector<uint8_t> mask;
  SyntheticScene(1).RenderPersonMask(0, &mask);
  ASSERT_EQ(mask.size(), 256u * 192u);
  const size_t inside = static_cast<size_t>(std::count(mask.begin(), mask.end(), 255));
  const size_t outside = static_cast<size_t>(std::count(mask.begin(), mask.end(), 0));
  EXPECT_EQ(inside + outside, mask.size());  // only 0 and 255
  EXPECT_GT(inside, 1000u);
  EXPECT_LT(inside, mask.size() / 4);
  // The person stands left of centre: torso around colour pixel (135, 150).
  EXPECT_EQ(mask[60 * 256 + 54], 255);
  EXPECT_EQ(mask[0], 0);
  EXPECT_EQ(mask[100 * 256 + 200], 0);
}

// The mask pixel that the mesh source consults for depth pixel (u, v):
// q = R^-1 p (R^T for a rotation), whole colour pixels, scale 0.4 (Parts 3.1, 3.2).
uint8_t PersonMaskAtDepthPixel(const std::vector<uint8_t>& mask, const std::vector<uint16_t>& depth,
                               int u, int v) {
  const auto calibration = SceneCalibration();
  const auto& r = calibration.R;
  const Point16 p = DepthToPoint(depth[v * 640 + u], u, v, SceneIntrinsics());
  const float x = p.x, y = p.y, z = p.z;
  const float qx = r.a * x + r.d * y + r.g * z;
  const float qy = r.b * x + r.e * y + r.h * z;
  const float qz = r.c * x + r.f * y + r.i * z;
  const int colorU = static_cast<int>(calibration.c.cx + qx * calibration.c.fx / qz);
  const int colorV = static_cast<int>(calibration.c.cy + qy * calibration.c.fy / qz);
  const int col = static_cast<int>(colorU * 0.4f);
  const int row = static_cast<int>(colorV * 0.4f);
  return mask[row * 256 + col];
}

TEST(SyntheticScene, PersonMaskCoversThePersonsDepthPixels) {
  const SyntheticScene scene(1);
  std::vector<uint8_t> mask;
  std::vector<uint16_t> depth;
  scene.RenderPersonMask(0, &mask);
  scene.RenderDepth(0, &depth);
  int torso = 0, torsoMasked = 0, floor = 0, floorMasked = 0;
  for (int v = 100; v < 160; ++v) {
    for (int u = 100; u < 140; ++u) {
      if (depth[v * 640 + u] == 0) continue;
      ++torso;
      torsoMasked += PersonMaskAtDepthPixel(mask, depth, u, v) == 255;
    }
  }
  for (int v = 440; v < 470; ++v) {
    for (int u = 300; u < 340; ++u) {
      if (depth[v * 640 + u] == 0) continue;
      ++floor;
      floorMasked += PersonMaskAtDepthPixel(mask, depth, u, v) == 255;
    }
  }
  EXPECT_GT(torso, 2300);
  EXPECT_EQ(torsoMasked, torso);
  EXPECT_GT(floor, 1150);
  EXPECT_EQ(floorMasked, 0);
}

TEST(SyntheticScene, FloorMaskMarksTheFloor) {
  std::vector<uint8_t> mask;
  SyntheticScene(1).RenderFloorMask(0, &mask);
  ASSERT_EQ(mask.size(), 320u * 240u);
  EXPECT_EQ(mask[239 * 320 + 160], 255);  // bottom centre
  EXPECT_EQ(mask[0 * 320 + 160], 0);      // top centre: the back wall
  const size_t inside = static_cast<size_t>(std::count(mask.begin(), mask.end(), 255));
  EXPECT_GT(inside, mask.size() / 10);
}

TEST(SyntheticScene, FloorMaskAgreesWithDepth) {
  // Where the floor mask is set, the depth image shows the floor's depth.
  std::vector<uint8_t> mask;
  std::vector<uint16_t> depth;
  SyntheticScene(1).RenderFloorMask(0, &mask);
  SyntheticScene(1).RenderDepth(0, &depth);
  const double pitch = 15.0 * 3.14159265358979323846 / 180.0;
  int checked = 0, agreeing = 0;
  for (int v = 360; v < 480; v += 10) {
    const int u = 320;
    if (mask[(v / 2) * 320 + u / 2] != 255 || depth[v * 640 + u] == 0) continue;
    ++checked;
    const double floorDepth = 1300.0 / ((v - 239.5) / 525.0 * std::cos(pitch) + std::sin(pitch));
    agreeing += std::fabs(depth[v * 640 + u] - floorDepth) < 30.0;
  }
  EXPECT_GE(checked, 10);
  EXPECT_EQ(agreeing, checked);
}

}  // namespace
