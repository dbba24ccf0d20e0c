// Base of the sim's sources that only serve properties ("zelto_stream",
// "zelto_segmentation_camera2_stream"): they deliver no frames and have
// nothing to start, stop or close.
#pragma once

#include <cstdint>
#include <vector>

#include "weftcore/stream_source.h"

namespace ZeltoSim {

class FramelessSource : public weftcore::StreamSource {
 public:
  using weftcore::StreamSource::Get;
  using weftcore::StreamSource::Set;

  void GetFrames(std::vector<weftcore::FrameInfo>* /*frames*/) override {}
  weftcore::Status ReleaseFrame(const weftcore::FrameInfo& /*frameinfo*/,
                                const std::vector<uint32_t>* /*ids*/) override {
    return weftcore::Status();
  }
  weftcore::Status Close() override { return weftcore::Status(); }
  weftcore::Status Start() override { return weftcore::Status(); }
  weftcore::Status Stop() override { return weftcore::Status(); }
};

}  // namespace ZeltoSim
