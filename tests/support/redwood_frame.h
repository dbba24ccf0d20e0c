// The real depth frames of examples/redwood as point clouds, converted by the rule the simulator
// uses too (z = round(depth * 1000 / depthScale) in 0..32767, x = round((u - cx) z / fx),
// y = round((v - cy) z / fy), halves away from zero), so that checksums agree across suites.
#pragma once

#include <cstdint>
#include <vector>

namespace ZeltoTest {

struct RedwoodIntrinsics {  // examples/redwood/intrinsics.json
  int32_t width = 640;
  int32_t height = 480;
  float fx = 525.0f;
  float fy = 525.0f;
  float cx = 319.5f;
  float cy = 239.5f;
  double depthScale = 1000.0;
};

struct PointCloudImage {
  int32_t width = 0;
  int32_t height = 0;
  std::vector<int16_t> points;  // x, y, z per pixel, row-major
};

// examples/redwood/depth/NNNNN.png as a point cloud; throws std::runtime_error when unreadable.
PointCloudImage LoadRedwoodFrame(int index);

}  // namespace ZeltoTest
