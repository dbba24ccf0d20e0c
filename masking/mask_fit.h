// How a mask is laid over its reference image (Part 3.2, pass 1, steps 3-4).
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
// centres it; the tie goes to the height ratio. The reference sizes are the
// calibration's, already converted to float.
MaskFit FitMaskToReference(uint32_t maskWidth, uint32_t maskHeight, float refWidth,
                           float refHeight);

}  // namespace Zelto
