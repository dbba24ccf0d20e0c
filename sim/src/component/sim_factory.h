// The sim's factory: builds the shared device from the component arguments
// and creates the four source types over it.
#pragma once

#include <memory>

#include "component/sim_device.h"
#include "weftcore/stream_source_factory.h"

namespace ZeltoSim {

class SimFactory final : public weftcore::StreamSourceFactory {
 public:
  // Parses the options and creates the device (loading the recording) on
  // the first call; appends the four source types in any case. A failure is
  // kept and answered by every CreateSource.
  void GetSupportedList(const weftcore::ComponentArgument& args,
                        std::vector<std::pair<std::string, int>>* list) override;
  // Unknown types, and any type before GetSupportedList, fail with cause 2.
  weftcore::Status CreateSource(const std::pair<std::string, int>& type,
                                weftcore::StreamSource** source) override;

 private:
  std::unique_ptr<SimDevice> device_;
  weftcore::Status deviceStatus_;
};

}  // namespace ZeltoSim
