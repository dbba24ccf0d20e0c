// The real depth frames of examples/redwood as point clouds, converted by the
// rule the simulator uses too, so that checksums agree across suites.
#pragma once

#include <cstdint>
#include <string>
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

// The samples of a 16-bit grayscale PNG, row-major; throws std::runtime_error otherwise.
std::vector<uint16_t> ReadDepthPng(const std::string& path, int32_t* width, int32_t* height);
// z = round(value * 1000 / depthScale) clamped to 0..32767, x = round((u - cx) z / fx),
// y = round((v - cy) z / fy) clamped to int16; double precision, halves away from zero.
PointCloudImage DepthToPointCloud(const std::vector<uint16_t>& depth, int32_t width,
                                  int32_t height, const RedwoodIntrinsics& intrinsics);
// examples/redwood/depth/NNNNN.png as a point cloud.
PointCloudImage LoadRedwoodFrame(int index);

}  // namespace ZeltoTest
