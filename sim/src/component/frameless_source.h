// Base of the sim's sources that only serve properties ("zelto_stream",
// "zelto_segmentation_camera2_stream"): they deliver no frames and have
// nothing to start, stop or close, unless a failure knob says so.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "component/fault_injection.h"
#include "component/sim_device.h"
#include "weftcore/stream_source.h"

namespace ZeltoSim {

class FramelessSource : public weftcore::StreamSource {
 public:
  FramelessSource(SimDevice* device, std::string type) : device_(device), type_(std::move(type)) {}

  using weftcore::StreamSource::Get;
  using weftcore::StreamSource::Set;

  void GetFrames(std::vector<weftcore::FrameInfo>* /*frames*/) override {}
  weftcore::Status ReleaseFrame(const weftcore::FrameInfo& /*frameinfo*/,
                                const std::vector<uint32_t>* /*ids*/) override {
    return weftcore::Status();
  }
  weftcore::Status Close() override { return Refused(&SimFaults::failClose, "close"); }
  weftcore::Status Start() override { return Refused(&SimFaults::failStart, "start"); }
  weftcore::Status Stop() override { return Refused(&SimFaults::failStop, "stop"); }

 protected:
  weftcore::Status Refused(std::set<std::string> SimFaults::*knob, const char* call) const {
    return RefusedCall(device_->options().faults.*knob, type_, call);
  }

  SimDevice* device_;  // owned by the factory
  std::string type_;   // the source type the factory created
};

}  // namespace ZeltoSim
