// The calibration refresh, and the mappings of one depth point to a colour
// pixel and to a depth pixel (the arithmetic is in point_mapping.h, shared
// with Apply's four-point lanes).
#include <utility>

#include "masking/masked_point_cloud.h"
#include "masking/point_mapping.h"
#include "masking/zelto_vector3.h"
#include "properties/zelto_tof_properties.h"

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
  const Zelto::Pixels<float> pixel =
      Zelto::MapToColor(Zelto::MakeColorLens<float>(calibration, inverseRotation), p.x, p.y, p.z);
  return {pixel.u, pixel.v};
}

std::pair<float, float> MaskedPointCloud::CameraToDepth(const Zelto::ZeltoVector3_& p) const {
  const Zelto::Pixels<float> pixel =
      Zelto::MapToDepth(Zelto::MakeDepthLens<float>(calibration), p.x, p.y, p.z);
  return {pixel.u, pixel.v};
}
