// The exact depth-to-point rule shared by recordings and the synthetic scene.
// It runs on every pixel of every frame the device delivers, so the rounding
// is done inline rather than through the math library, with the same result.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

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

// Four pixels at a time, in the compiler's vector types (SSE2 on x86-64,
// NEON on arm64).
constexpr int kLanes = 4;
using Lanes = float __attribute__((vector_size(16)));
using IntLanes = int32_t __attribute__((vector_size(16)));
constexpr float kDoubtMargin = 0.02f;

inline Lanes Splat(float value) { return Lanes{value, value, value, value}; }

inline Lanes Abs(Lanes value) {
  return reinterpret_cast<Lanes>(reinterpret_cast<IntLanes>(value) & 0x7fffffff);
}

// Rounds half away from zero; sets `doubt` (to -1) in the lanes where the
// estimate may round otherwise than the exact quotient: within kDoubtMargin
// of a half, out of the int16 range, or NaN.
inline IntLanes RoundEstimate(Lanes estimate, IntLanes* doubt) {
  const IntLanes inside = Abs(estimate) < 32766.0f;  // all ones, or 0 (also for NaN)
  const Lanes clamped = reinterpret_cast<Lanes>(reinterpret_cast<IntLanes>(estimate) & inside);
  const IntLanes truncated = __builtin_convertvector(clamped, IntLanes);
  const Lanes fraction = clamped - __builtin_convertvector(truncated, Lanes);
  *doubt |= ~inside | (Abs(Abs(fraction) - 0.5f) <= kDoubtMargin);
  // A true comparison is -1.
  return truncated - (fraction > 0.5f) + (fraction < -0.5f);
}

}  // namespace

Point16 DepthToPoint(uint32_t value, int32_t u, int32_t v, const Intrinsics& intrinsics) {
  return ConvertSample(value, u - intrinsics.cx, v - intrinsics.cy, intrinsics);
}

// Per pixel, the two divisions by the focal lengths are what costs, and the
// conversion runs on every pixel of every frame on the device's decoding
// threads. So a row is first converted in single precision, four pixels at
// a time: the quotient from a float reciprocal is within about 2.5e-7 of the
// exact one relatively, 0.008 at the largest quotient, so it rounds to the
// same integer unless it lies within kDoubtMargin of a half (or out of
// range, or NaN). Only those pixels, fewer than one in ten, are converted
// again by the exact rule, in double precision, so every point is the one
// DepthToPoint gives.
void DepthImageToPointCloud(const uint16_t* depth, const Intrinsics& intrinsics, int16_t* points) {
  const int32_t width = intrinsics.width;
  const bool millimetres = intrinsics.depthScale == 1000.0;  // z = value, exactly
  const float inverseFx = static_cast<float>(1.0 / intrinsics.fx);
  const float inverseFy = static_cast<float>(1.0 / intrinsics.fy);
  std::vector<float> columns(static_cast<size_t>(width));
  for (int32_t u = 0; u < width; ++u) columns[u] = static_cast<float>(u - intrinsics.cx);
  std::vector<int16_t> zs(columns.size()), xs(columns.size()), ys(columns.size());
  std::vector<uint8_t> doubts(columns.size());
  const Lanes fx = Splat(inverseFx), fy = Splat(inverseFy);
  for (int32_t v = 0; v < intrinsics.height; ++v, depth += width) {
    const double row = v - intrinsics.cy;
    const Lanes rowf = Splat(static_cast<float>(row));
    if (millimetres) {
      for (int32_t u = 0; u < width; ++u) {
        zs[u] = static_cast<int16_t>(depth[u] < 32767 ? depth[u] : 32767);
      }
    } else {
      for (int32_t u = 0; u < width; ++u) {
        zs[u] = RoundToInt16(depth[u] * 1000.0 / intrinsics.depthScale, 0, 32767);
      }
    }
    // Whole blocks of four; the last pixels of a row whose width is not a
    // multiple of four take the exact rule.
    const int32_t blocks = width / kLanes * kLanes;
    for (int32_t u = 0; u < blocks; u += kLanes) {
      const IntLanes z_int = {zs[u], zs[u + 1], zs[u + 2], zs[u + 3]};
      const Lanes z = __builtin_convertvector(z_int, Lanes);
      Lanes column;
      std::memcpy(&column, &columns[u], sizeof column);
      IntLanes doubt = {0, 0, 0, 0};
      const IntLanes x = RoundEstimate(column * z * fx, &doubt);
      const IntLanes y = RoundEstimate(rowf * z * fy, &doubt);
      for (int lane = 0; lane < kLanes; ++lane) {
        xs[u + lane] = static_cast<int16_t>(x[lane]);
        ys[u + lane] = static_cast<int16_t>(y[lane]);
        doubts[u + lane] = static_cast<uint8_t>(doubt[lane] != 0);
      }
    }
    for (int32_t u = blocks; u < width; ++u) doubts[u] = 1;
    for (int32_t u = 0; u < width; ++u) {
      if (doubts[u] != 0) {
        const double z = zs[u];
        xs[u] = RoundToInt16((u - intrinsics.cx) * z / intrinsics.fx, -32768, 32767);
        ys[u] = RoundToInt16(row * z / intrinsics.fy, -32768, 32767);
      }
      *points++ = xs[u];
      *points++ = ys[u];
      *points++ = zs[u];
    }
  }
}

}  // namespace ZeltoSim
