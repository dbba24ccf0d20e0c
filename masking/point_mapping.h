// The mappings of depth points to colour pixels and to depth pixels, for one
// point or four lanes of points. All arithmetic is single precision and
// written in the order it must be evaluated; every file that includes this
// one is built with -ffp-contract=off, so that no product is fused into a
// sum and a point lands on the same mask byte on x86-64 and on arm64.
#pragma once

#include "masking/lanes.h"
#include "masking/truncate_to_int32.h"
#include "properties/zelto_tof_properties.h"

namespace Zelto {

// A position per lane, or (-1, -1) in the lanes that fall off the image.
template <class F>
struct Pixels {
  F u;
  F v;
};

// Whole-pixel positions in the colour image. `inverse` is the inverted
// rotation of `calibration`, row by row.
template <class F>
Pixels<F> MapToColor(const ZeltoTof::ZeltoTofCalibrationSettingsProperty_& calibration,
                     const float (&inverse)[9], F x, F y, F z) {
  const float* m = inverse;
  // Rotation only: the translation T is deliberately not applied. Clients
  // have tuned their colour masks to this lookup; adding T now would shift
  // every masked region by the camera baseline.
  const F qx = m[0] * x + m[1] * y + m[2] * z;
  const F qy = m[3] * x + m[4] * y + m[5] * z;
  const F qz = m[6] * x + m[7] * y + m[8] * z;
  const ZeltoTof::InternalParameter_& c = calibration.c;
  const auto u = TruncateToInt32(c.cx + (qx * c.fx) / qz);
  const auto v = TruncateToInt32(c.cy + (qy * c.fy) / qz);
  // The truncation is tested, not the float, so -1 < u < 0 is column 0.
  const auto outside =
      Either(Either(u < 0, ToFloat(u) >= static_cast<float>(calibration.colorWidth)),
             Either(v < 0, ToFloat(v) >= static_cast<float>(calibration.colorHeight)));
  return {Select(outside, Splat<F>(-1.0f), ToFloat(u)), Select(outside, Splat<F>(-1.0f), ToFloat(v))};
}

// Sub-pixel positions in the depth image.
template <class F>
Pixels<F> MapToDepth(const ZeltoTof::ZeltoTofCalibrationSettingsProperty_& calibration, F x,
                     F y, F z) {
  const ZeltoTof::InternalParameter_& d = calibration.d;
  const F u = (x * d.fx) / z + d.cx;
  const F v = (y * d.fy) / z + d.cy;
  // The float itself is tested, so -0.5 is outside (unlike the colour
  // mapping). NaN, from the point (0, 0, 0), passes both tests (its
  // truncation is 0) and is returned as is; it then reads mask byte 0.
  const auto outside = Either(Either(u < 0.0f, TruncateToInt32(u) >= calibration.depthWidth),
                              Either(v < 0.0f, TruncateToInt32(v) >= calibration.depthHeight));
  return {Select(outside, Splat<F>(-1.0f), u), Select(outside, Splat<F>(-1.0f), v)};
}

}  // namespace Zelto
