// The exact depth-to-point rule shared by recordings and the synthetic scene.
#include <cmath>

#include "zelto_sim/recording.h"

namespace ZeltoSim {
namespace {

// Rounds half away from zero (std::round) and saturates; NaN becomes 0.
int16_t RoundToInt16(double value, double low, double high) {
  if (std::isnan(value)) return 0;
  const double rounded = std::round(value);
  if (rounded < low) return static_cast<int16_t>(low);
  if (rounded > high) return static_cast<int16_t>(high);
  return static_cast<int16_t>(rounded);
}

}  // namespace

Point16 DepthToPoint(uint32_t value, int32_t u, int32_t v, const Intrinsics& intrinsics) {
  Point16 point;
  point.z = RoundToInt16(static_cast<double>(value) * 1000.0 / intrinsics.depthScale, 0, 32767);
  const double z = point.z;
  point.x = RoundToInt16((u - intrinsics.cx) * z / intrinsics.fx, -32768, 32767);
  point.y = RoundToInt16((v - intrinsics.cy) * z / intrinsics.fy, -32768, 32767);
  return point;
}

void DepthImageToPointCloud(const uint16_t* depth, const Intrinsics& intrinsics, int16_t* points) {
  for (int32_t v = 0; v < intrinsics.height; ++v) {
    for (int32_t u = 0; u < intrinsics.width; ++u) {
      const Point16 point = DepthToPoint(*depth++, u, v, intrinsics);
      *points++ = point.x;
      *points++ = point.y;
      *points++ = point.z;
    }
  }
}

}  // namespace ZeltoSim
