// "zelto_segmentation_camera2_stream": answers the mask data list property
// with masks held in the device's memory. It delivers no frames.
#pragma once

#include "component/sim_device.h"
#include "weftcore/stream_source.h"

namespace ZeltoSim {

class SegmentationSource final : public weftcore::StreamSource {
 public:
  explicit SegmentationSource(SimDevice* device) : device_(device) {}

  using weftcore::StreamSource::Get;
  using weftcore::StreamSource::Set;

  void GetFrames(std::vector<weftcore::FrameInfo>* /*frames*/) override {}
  weftcore::Status ReleaseFrame(const weftcore::FrameInfo& /*frameinfo*/,
                                const std::vector<uint32_t>* /*ids*/) override {
    return weftcore::Status();
  }
  weftcore::Status Open(weftcore::Core* core, weftcore::StreamSourceUtility* util) override;
  weftcore::Status Close() override { return weftcore::Status(); }
  weftcore::Status Start() override { return weftcore::Status(); }
  weftcore::Status Stop() override { return weftcore::Status(); }

  // The input record is the request: one entry per wanted mask name.
  weftcore::Status Get(const std::string& key,
                       ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_* property);
  weftcore::Status Set(const std::string& key,
                       const ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_* property);

 private:
  SimDevice* device_;  // owned by the factory
};

}  // namespace ZeltoSim
