// The calibration refresh and the mappings of a depth point to a colour pixel
// and to a depth pixel. All arithmetic is single precision and written in the
// order it must be evaluated; the module is built with -ffp-contract=off so
// that no product is fused into a sum, and a point lands on the same mask
// byte on x86-64 and on arm64.
#include <utility>

#include "masking/masked_point_cloud.h"
#include "masking/zelto_vector3.h"
#include "properties/zelto_tof_properties.h"

namespace {

constexpr std::pair<float, float> kOutside{-1.0f, -1.0f};

}  // namespace

void MaskedPointCloud::SetupCoordinate() {
  if (stream == nullptr) return;
  // The status is discarded on purpose: a camera that cannot answer for one
  // frame keeps the calibration it gave before, and the inverse is computed
  // all the same. A calibration change upstream shows on the next frame.
  static_cast<void>(stream->GetProperty(ZeltoTof::kZeltoTofCalibrationSettingsKey, &calibration));

  const ZeltoTof::Matrix_& r = calibration.R;
  // Adjugate over determinant. No zero test: an uncalibrated camera reports
  // a zero matrix, whose inverse is NaN or infinite, and every mapping then
  // fails its range tests, so no point is masked until a calibration arrives.
  const float det = r.a * (r.e * r.i - r.f * r.h) - r.b * (r.d * r.i - r.f * r.g) +
                    r.c * (r.d * r.h - r.e * r.g);
  inverseRotation[0] = (r.e * r.i - r.f * r.h) / det;
  inverseRotation[1] = (r.c * r.h - r.b * r.i) / det;
  inverseRotation[2] = (r.b * r.f - r.c * r.e) / det;
  inverseRotation[3] = (r.f * r.g - r.d * r.i) / det;
  inverseRotation[4] = (r.a * r.i - r.c * r.g) / det;
  inverseRotation[5] = (r.c * r.d - r.a * r.f) / det;
  inverseRotation[6] = (r.d * r.h - r.e * r.g) / det;
  inverseRotation[7] = (r.b * r.g - r.a * r.h) / det;
  inverseRotation[8] = (r.a * r.e - r.b * r.d) / det;
}

std::pair<float, float> MaskedPointCloud::CameraToColor(const Zelto::ZeltoVector3_& p) const {
  const float* m = inverseRotation;
  // Rotation only: the translation T is deliberately not applied. Clients
  // have tuned their colour masks to this lookup; adding T now would shift
  // every masked region by the camera baseline.
  const float qx = m[0] * p.x + m[1] * p.y + m[2] * p.z;
  const float qy = m[3] * p.x + m[4] * p.y + m[5] * p.z;
  const float qz = m[6] * p.x + m[7] * p.y + m[8] * p.z;
  const ZeltoTof::InternalParameter_& c = calibration.c;

  const float uf = c.cx + (qx * c.fx) / qz;
  const int32_t u = Zelto::TruncateToInt32(uf);
  // Truncation first, so that -1 < uf < 0 is accepted as column 0.
  if (u < 0) return kOutside;
  if (static_cast<float>(u) >= static_cast<float>(calibration.colorWidth)) return kOutside;

  const float vf = c.cy + (qy * c.fy) / qz;
  const int32_t v = Zelto::TruncateToInt32(vf);
  if (v < 0 || static_cast<float>(v) >= static_cast<float>(calibration.colorHeight)) {
    return kOutside;
  }
  return {static_cast<float>(u), static_cast<float>(v)};
}

std::pair<float, float> MaskedPointCloud::CameraToDepth(const Zelto::ZeltoVector3_& p) const {
  const ZeltoTof::InternalParameter_& d = calibration.d;
  const float uf = (p.x * d.fx) / p.z + d.cx;
  const float vf = (p.y * d.fy) / p.z + d.cy;
  // The float itself is tested, so -0.5 is rejected (unlike CameraToColor).
  // NaN, from the point (0, 0, 0), passes both tests (its truncation is 0)
  // and is returned as is; Apply then reads mask pixel 0 of row 0.
  if (uf < 0 || calibration.depthWidth <= Zelto::TruncateToInt32(uf)) return kOutside;
  if (vf < 0 || calibration.depthHeight <= Zelto::TruncateToInt32(vf)) return kOutside;
  return {uf, vf};
}
