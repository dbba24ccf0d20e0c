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

// What the colour mapping reads of the calibration, in every lane: loaded
// once per frame rather than once per point.
template <class F>
struct ColorLens {
  F m[9];  // the inverted rotation, row by row
  F fx, fy, cx, cy;
  F width, height;
};

// R's inverse as adjugate over determinant, row by row. No zero test: an
// uncalibrated camera reports a zero matrix, whose inverse is NaN or
// infinite, and every mapping then fails its range tests.
inline void InvertRotation(const ZeltoTof::Matrix_& r, float (&m)[9]) {
  const float det = r.a * (r.e * r.i - r.f * r.h) - r.b * (r.d * r.i - r.f * r.g) +
                    r.c * (r.d * r.h - r.e * r.g);
  m[0] = (r.e * r.i - r.f * r.h) / det;
  m[1] = (r.c * r.h - r.b * r.i) / det;
  m[2] = (r.b * r.f - r.c * r.e) / det;
  m[3] = (r.f * r.g - r.d * r.i) / det;
  m[4] = (r.a * r.i - r.c * r.g) / det;
  m[5] = (r.c * r.d - r.a * r.f) / det;
  m[6] = (r.d * r.h - r.e * r.g) / det;
  m[7] = (r.b * r.g - r.a * r.h) / det;
  m[8] = (r.a * r.e - r.b * r.d) / det;
}

// `inverse` is the inverted rotation of `calibration`, row by row.
template <class F>
ColorLens<F> MakeColorLens(const ZeltoTof::ZeltoTofCalibrationSettingsProperty_& calibration,
                           const float (&inverse)[9]) {
  ColorLens<F> lens;
  for (int i = 0; i < 9; ++i) lens.m[i] = Splat<F>(inverse[i]);
  const ZeltoTof::InternalParameter_& c = calibration.c;
  lens.fx = Splat<F>(c.fx);
  lens.fy = Splat<F>(c.fy);
  lens.cx = Splat<F>(c.cx);
  lens.cy = Splat<F>(c.cy);
  lens.width = Splat<F>(static_cast<float>(calibration.colorWidth));
  lens.height = Splat<F>(static_cast<float>(calibration.colorHeight));
  return lens;
}

// Whole-pixel positions in the colour image.
template <class F>
Pixels<F> MapToColor(const ColorLens<F>& lens, F x, F y, F z) {
  const F* m = lens.m;
  // Rotation only: the translation T is deliberately not applied. Clients
  // have tuned their colour masks to this lookup; adding T now would shift
  // every masked region by the camera baseline.
  const F qx = m[0] * x + m[1] * y + m[2] * z;
  const F qy = m[3] * x + m[4] * y + m[5] * z;
  const F qz = m[6] * x + m[7] * y + m[8] * z;
  const auto u = TruncateToInt32(lens.cx + (qx * lens.fx) / qz);
  const auto v = TruncateToInt32(lens.cy + (qy * lens.fy) / qz);
  // The truncation is tested, not the float, so -1 < u < 0 is column 0.
  const auto outside =
      Either(Either(u < 0, ToFloat(u) >= lens.width), Either(v < 0, ToFloat(v) >= lens.height));
  return {Select(outside, Splat<F>(-1.0f), ToFloat(u)),
          Select(outside, Splat<F>(-1.0f), ToFloat(v))};
}

// What the depth mapping reads of the calibration, in every lane.
template <class F>
struct DepthLens {
  F fx, fy, cx, cy;
  IntegerOfT<F> width, height;
};

template <class F>
DepthLens<F> MakeDepthLens(const ZeltoTof::ZeltoTofCalibrationSettingsProperty_& calibration) {
  using I = IntegerOfT<F>;
  const ZeltoTof::InternalParameter_& d = calibration.d;
  DepthLens<F> lens;
  lens.fx = Splat<F>(d.fx);
  lens.fy = Splat<F>(d.fy);
  lens.cx = Splat<F>(d.cx);
  lens.cy = Splat<F>(d.cy);
  lens.width = Splat<I>(calibration.depthWidth);
  lens.height = Splat<I>(calibration.depthHeight);
  return lens;
}

// Sub-pixel positions in the depth image.
template <class F>
Pixels<F> MapToDepth(const DepthLens<F>& lens, F x, F y, F z) {
  const F u = (x * lens.fx) / z + lens.cx;
  const F v = (y * lens.fy) / z + lens.cy;
  // The float itself is tested, so -0.5 is outside (unlike the colour
  // mapping). NaN, from the point (0, 0, 0), passes both tests (its
  // truncation is 0) and is returned as is; it then reads mask byte 0.
  const auto outside = Either(Either(u < 0.0f, TruncateToInt32(u) >= lens.width),
                              Either(v < 0.0f, TruncateToInt32(v) >= lens.height));
  return {Select(outside, Splat<F>(-1.0f), u), Select(outside, Splat<F>(-1.0f), v)};
}

}  // namespace Zelto
