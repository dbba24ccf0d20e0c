// The segmentation stream and its mask data list record: the masks of the
// current frame, which the mesh source reads in place by address.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "weftcore/serialize.h"

namespace ZeltoSegmentation {

constexpr char kSegmentationStreamKey[] = "zelto_segmentation_camera2_stream";
constexpr char kZeltoSegmentationMaskDataListKey[] = "kZeltoSegmentationMaskDataListKey";

// One mask held in memory of this process; its bytes are read in place.
struct ZeltoSegmentationMaskDataProperty_ {
  std::string name;
  uint64_t maskDataAddress = 0;
  uint64_t maskDataSize = 0;
  uint32_t maskDataWidth = 0;
  uint32_t maskDataHeight = 0;
  uint64_t maskDataTimestamp = 0;
  bool isColorSource = false;
  bool isInvertMask = false;
  MSGPACK_DEFINE_MAP(name, maskDataAddress, maskDataSize, maskDataWidth, maskDataHeight,
                     maskDataTimestamp, isColorSource, isInvertMask);
};

struct ZeltoSegmentationMaskDataListProperty_ {
  std::vector<ZeltoSegmentationMaskDataProperty_> data;
  MSGPACK_DEFINE_MAP(data);
};

}  // namespace ZeltoSegmentation
