// The synthetic scene: one frame per seed and index whatever was rendered
// before, and masks that mark what the depth image shows.
#include "zelto_sim/synthetic_scene.h"

#include <gtest/gtest.h>

#include <cmath>

namespace ZeltoSim {
namespace {

TEST(SyntheticScene, FrameDependsOnlyOnSeedAndIndex) {
  std::vector<uint16_t> first, again, other;
  const SyntheticScene scene(3);
  scene.RenderDepth(90, &other);  // the same scene rendered another frame before
  scene.RenderDepth(5, &first);
  SyntheticScene(3).RenderDepth(5, &again);
  EXPECT_TRUE(first == again && first != other);
}

// The torso left of the centre and the floor 1.3 m under a camera pitched 15 degrees down. The
// person mask is read as the mesh source reads it: the point turned into the colour camera.
TEST(SyntheticScene, MasksMarkWhatTheDepthImageShows) {
  std::vector<uint16_t> depth;
  std::vector<uint8_t> person, floor;
  SyntheticScene(1).RenderDepth(0, &depth);
  SyntheticScene(1).RenderPersonMask(0, &person);
  SyntheticScene(1).RenderFloorMask(0, &floor);
  const auto calibration = SceneCalibration();
  const auto& [r, c] = std::tie(calibration.R, calibration.c);
  const double pitch = M_PI / 12;
  int seen[2] = {0, 0};  // torso, floor
  for (int v = 100; v < 470; ++v) {
    for (int u = 100; u < 340; ++u) {
      const bool torso = v < 160 && u < 140, on_floor = v >= 440 && u >= 300;
      if (depth[v * 640 + u] == 0 || torso == on_floor) continue;
      ++seen[on_floor];
      const Point16 p = DepthToPoint(depth[v * 640 + u], u, v, SceneIntrinsics());
      const float x = p.x, y = p.y, z = p.z, qz = r.c * x + r.f * y + r.i * z;
      const int column = int(int(c.cx + (r.a * x + r.d * y + r.g * z) * c.fx / qz) * 0.4f);
      const int row = int(int(c.cy + (r.b * x + r.e * y + r.h * z) * c.fy / qz) * 0.4f);
      ASSERT_EQ(person[row * kPersonMaskWidth + column], torso ? 255 : 0) << u << ", " << v;
      const double floor_depth = 1300 / ((v - 239.5) / 525 * std::cos(pitch) + std::sin(pitch));
      ASSERT_TRUE(torso || (floor[(v / 2) * kFloorMaskWidth + u / 2] == 255 &&
                            std::fabs(depth[v * 640 + u] - floor_depth) < 30)) << u << ", " << v;
    }
  }
  EXPECT_TRUE(seen[0] > 2300 && seen[1] > 1150) << seen[0] << ", " << seen[1];
}

}  // namespace
}  // namespace ZeltoSim
