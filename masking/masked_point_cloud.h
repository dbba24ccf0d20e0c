// MaskedPointCloud: maps the depth camera's points to colour and depth
// pixels through the camera's calibration, and blanks in place the points
// that segmentation masks select, before the mesh is built from them.
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
  // Refreshes `calibration` from `stream` and inverts its rotation; does
  // nothing while `stream` is null.
  void SetupCoordinate();
  // Whole-pixel position in the colour image, or (-1, -1): the mapping
  // Apply makes for every point, for one point.
  std::pair<float, float> CameraToColor(const Zelto::ZeltoVector3_& p) const;
  // Sub-pixel position in the depth image, or (-1, -1), likewise.
  std::pair<float, float> CameraToDepth(const Zelto::ZeltoVector3_& p) const;

  // Sets z = 32001 for every point of `raw` that a mask of `list` selects.
  // Fails only before it touches any point: cause 2 for an invalid mask or a
  // null argument, cause 6 when the per-call mask table cannot be allocated;
  // never throws. The mask bytes are read in place, never copied.
  weftcore::Status Apply(weftcore::Channel::RawData* raw,
                         const ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_* list);

  // Owned by the frame thread, which sets `stream` and calls SetupCoordinate
  // and Apply; no property handler touches them, so they take no lock.
  ZeltoTof::ZeltoTofCalibrationSettingsProperty_ calibration;
  float inverseRotation[9] = {};
  weftcore::Stream* stream = nullptr;  // the ToF camera stream, borrowed from the source

  // Guarded by the stream source's mask mutex: the mask settings Set handler
  // writes it, and the frame thread calls Apply, which reads it, under that
  // mutex. A mask byte strictly above it counts as inside the mask.
  uint8_t maskThreshold = 55;
};
