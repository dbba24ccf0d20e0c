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
  Zelto::InvertRotation(calibration.R, inverseRotation);
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
