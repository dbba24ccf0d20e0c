// What a moving camera delivers: different real frames in turn, so that a
// benchmark reads each frame's depths from memory and re-fits cells whose
// split really changes, as on a device, instead of one frame over and over.
#pragma once

#include <vector>

#include "support/redwood_frame.h"

namespace ZeltoBench {

// `image` as seen by a camera moved (dx, dy) pixels: pixel (u, v) holds what
// (u + dx, v + dy) held; pixels shifted in from outside have no measurement
// (0, 0, 0). Same size as `image`.
ZeltoTest::PointCloudImage Shifted(const ZeltoTest::PointCloudImage& image, int dx, int dy);

// The five redwood frames in turn, then again shifted by (16, 8) and by
// (32, -8) pixels: fifteen different 640 x 480 frames (28 MB, more than any
// cache holds). Throws std::runtime_error when a frame is unreadable.
std::vector<ZeltoTest::PointCloudImage> LoadMovingFrames();

}  // namespace ZeltoBench
