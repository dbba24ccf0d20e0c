// The exact depth-to-point rule shared by recordings and the synthetic scene.
// It runs on every pixel of every frame the device delivers, so the rounding
// is done inline rather than through the math library, with the same result.
#include <cmath>

#include "zelto_sim/recording.h"

namespace ZeltoSim {
namespace {

// std::round (half away from zero), then saturation to low..high; NaN
// becomes 0. Values at or beyond a bound round to at least that bound, so
// only values strictly inside are rounded, where the conversion to int
// cannot overflow and value - truncated is exact.
inline int16_t RoundToInt16(double value, double low, double high) {
  if (value > low && value < high) {
    const int32_t truncated = static_cast<int32_t>(value);
    const double fraction = value - truncated;
    if (fraction >= 0.5) return static_cast<int16_t>(truncated + 1);
    if (fraction <= -0.5) return static_cast<int16_t>(truncated - 1);
    return static_cast<int16_t>(truncated);
  }
  if (std::isnan(value)) return 0;
  return static_cast<int16_t>(value <= low ? low : high);
}

inline Point16 ConvertSample(uint32_t value, double column, double row,
                             const Intrinsics& intrinsics) {
  Point16 point;
  point.z = RoundToInt16(static_cast<double>(value) * 1000.0 / intrinsics.depthScale, 0, 32767);
  const double z = point.z;
  point.x = RoundToInt16(column * z / intrinsics.fx, -32768, 32767);
  point.y = RoundToInt16(row * z / intrinsics.fy, -32768, 32767);
  return point;
}

}  // namespace

Point16 DepthToPoint(uint32_t value, int32_t u, int32_t v, const Intrinsics& intrinsics) {
  return ConvertSample(value, u - intrinsics.cx, v - intrinsics.cy, intrinsics);
}

// Per pixel, the two divisions by the focal lengths are what costs. Each is
// replaced by a multiplication with the reciprocal, which differs from the
// correctly rounded quotient by a few units in the last place; rounding that
// to an integer gives the same result unless the quotient lies within
// kHalfwayMargin of a half or near a bound, and only then is the exact
// division done.
void DepthImageToPointCloud(const uint16_t* depth, const Intrinsics& intrinsics, int16_t* points) {
  constexpr double kHalfwayMargin = 1e-6;  // far above the error, at quotients below 2^16
  const bool millimetres = intrinsics.depthScale == 1000.0;  // z = value, exactly
  const double inverseFx = 1.0 / intrinsics.fx;
  const double inverseFy = 1.0 / intrinsics.fy;
  const auto round_quotient = [](double numerator, double divisor, double inverse) {
    const double estimate = numerator * inverse;
    if (estimate > -32767.0 && estimate < 32766.0) {
      const int32_t truncated = static_cast<int32_t>(estimate);
      const double fraction = estimate - truncated;
      // Without branches on the fraction: on noisy depth they mispredict.
      if (std::fabs(std::fabs(fraction) - 0.5) > kHalfwayMargin) {
        return static_cast<int16_t>(truncated + static_cast<int32_t>(fraction > 0.5) -
                                    static_cast<int32_t>(fraction < -0.5));
      }
    }
    return RoundToInt16(numerator / divisor, -32768, 32767);
  };
  for (int32_t v = 0; v < intrinsics.height; ++v) {
    const double row = v - intrinsics.cy;
    for (int32_t u = 0; u < intrinsics.width; ++u) {
      const uint16_t value = *depth++;
      const int16_t z =
          millimetres ? static_cast<int16_t>(value < 32767 ? value : 32767)
                      : RoundToInt16(value * 1000.0 / intrinsics.depthScale, 0, 32767);
      const double column = u - intrinsics.cx;
      *points++ = round_quotient(column * z, intrinsics.fx, inverseFx);
      *points++ = round_quotient(row * z, intrinsics.fy, inverseFy);
      *points++ = z;
    }
  }
}

}  // namespace ZeltoSim
