// How a segmentation mask, computed at its own resolution, is laid over the
// colour or depth image it was computed from.
#pragma once

#include <cstdint>

namespace Zelto {

// Mask pixel = reference pixel x scale - offset.
struct MaskFit {
  float scale = 0;
  float offsetX = 0;
  float offsetY = 0;
};

// Fits the mask by the larger of its two ratios to the reference image and
// centres it, so the excess of the scaled image is cut off equally on both
// sides; the tie goes to the height ratio. The reference sizes are the
// calibration's, already converted to float: before the first calibration
// they are 0, the scale is infinite and no point lands on the mask.
MaskFit FitMaskToReference(uint32_t maskWidth, uint32_t maskHeight, float refWidth,
                           float refHeight);

}  // namespace Zelto
