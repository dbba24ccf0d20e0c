// The mask settings a client sets on the mesh source: whether masking is on,
// which segmentation masks to request, and the threshold their bytes are
// compared with.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "weftcore/serialize.h"

namespace ZeltoSegmentation {

struct ZeltoSegmentationMaskInfo_ {
  std::string name;
  bool isColorSource = false;
  bool isInvertMask = false;
  MSGPACK_DEFINE_MAP(name, isColorSource, isInvertMask);
};

}  // namespace ZeltoSegmentation

namespace ZeltoMesh {

constexpr char kZeltoMeshMaskSettingsKey[] = "kZeltoMeshMaskSettingsKey";

struct ZeltoMeshMaskSettingsProperty_ {
  bool enabled = false;
  std::vector<ZeltoSegmentation::ZeltoSegmentationMaskInfo_> maskInfo;
  uint8_t maskThreshold = 0;
  MSGPACK_DEFINE_MAP(enabled, maskInfo, maskThreshold);
};

}  // namespace ZeltoMesh
