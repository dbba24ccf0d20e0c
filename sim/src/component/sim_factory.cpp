#include "component/sim_factory.h"

#include "component/segmentation_source.h"
#include "component/settings_source.h"
#include "component/tof_source.h"
#include "sim_error.h"

namespace ZeltoSim {
void SimFactory::GetSupportedList(const weftcore::ComponentArgument& args,
                                  std::vector<std::pair<std::string, int>>* list) {
  if (!device_ && deviceStatus_.ok()) {
    SimOptions options;
    deviceStatus_ = ParseSimOptions(args, &options);
    if (deviceStatus_.ok()) deviceStatus_ = SimDevice::Create(options, &device_);
  }
  if (list == nullptr) return;
  for (const char* type : {kSettingsSourceType, kTofCameraSourceType, kTofPlayerSourceType,
                           kSegmentationSourceType}) {
    list->emplace_back(type, 0);
  }
}

weftcore::Status SimFactory::CreateSource(const std::pair<std::string, int>& type,
                                          weftcore::StreamSource** source) {
  if (source == nullptr) return SimError(weftcore::kCauseInvalidArgument, "Null pointer");
  if (deviceStatus_.IsError()) {
    weftcore::Status status = deviceStatus_;
    return status.AddTrace(nullptr, 0);
  }
  if (!device_) {
    return SimError(weftcore::kCauseInvalidArgument,
                    "source type \"" + type.first + "\" asked before GetSupportedList");
  }
  if (type.first == kSettingsSourceType) {
    *source = new SettingsSource(device_.get());
  } else if (type.first == kTofCameraSourceType || type.first == kTofPlayerSourceType) {
    *source = new TofSource(device_.get(), type.first);
  } else if (type.first == kSegmentationSourceType) {
    *source = new SegmentationSource(device_.get());
  } else {
    return SimError(weftcore::kCauseInvalidArgument, "unknown source type \"" + type.first + "\"");
  }
  return weftcore::Status();
}

}  // namespace ZeltoSim
