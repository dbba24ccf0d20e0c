// MaskedPointCloud (Parts 3.1, 3.2): calibration-based mapping of depth
// points to colour and depth pixels, and the in-place masking of a point cloud.
#pragma once

#include <cstdint>
#include <utility>

#include "masking/zelto_vector3.h"
#include "properties/zelto_segmentation_properties.h"
#include "properties/zelto_tof_properties.h"
#include "weftcore/frame.h"
#include "weftcore/status.h"
#include "weftcore/stream.h"

class MaskedPointCloud {
 public:
  // Part 3.1: refreshes `calibration` from `stream` and inverts its rotation.
  void SetupCoordinate();
  // Whole-pixel position in the colour image, or (-1, -1).
  std::pair<float, float> CameraToColor(const Zelto::ZeltoVector3_& p) const;
  // Sub-pixel position in the depth image, or (-1, -1).
  std::pair<float, float> CameraToDepth(const Zelto::ZeltoVector3_& p) const;

  // Part 3.2: sets z = 32001 for every point of `raw` that a mask of `list`
  // selects. Fails only before it touches any point: cause 2 for an invalid
  // mask or a null argument, cause 6 when the per-call mask table cannot be
  // allocated (docs/deviations.md); never throws that failure.
  weftcore::Status Apply(weftcore::Channel::RawData* raw,
                         const ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_* list);

  // Members in the order of Parts 3.1 and 3.2.
  ZeltoTof::ZeltoTofCalibrationSettingsProperty_ calibration;
  float inverseRotation[9] = {};
  weftcore::Stream* stream = nullptr;  // not owned
  uint8_t maskThreshold = 55;
};
