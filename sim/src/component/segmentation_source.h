// "zelto_segmentation_camera2_stream": answers the mask data list property
// with masks held in the device's memory. It delivers no frames.
#pragma once

#include "component/frameless_source.h"

namespace ZeltoSim {

class SegmentationSource final : public FramelessSource {
 public:
  explicit SegmentationSource(SimDevice* device)
      : FramelessSource(device, kSegmentationSourceType) {}

  using FramelessSource::Get;
  using FramelessSource::Set;

  weftcore::Status Open(weftcore::Core* core, weftcore::StreamSourceUtility* util) override;

  // The input record is the request: one entry per wanted mask name.
  weftcore::Status Get(const std::string& key,
                       ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_* property);
  weftcore::Status Set(const std::string& key,
                       const ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_* property);
};

}  // namespace ZeltoSim
