#include "component/segmentation_source.h"

#include "component/source_errors.h"

namespace ZeltoSim {

weftcore::Status SegmentationSource::Open(weftcore::Core* /*core*/,
                                          weftcore::StreamSourceUtility* util) {
  weftcore::Status status = Refused(&SimFaults::failOpen, "open");
  if (status.ok()) {
    status = ServeProperty<ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_>(
        util, ZeltoSegmentation::kZeltoSegmentationMaskDataListKey, this,
        device_->options().faults);
  }
  if (status.IsError()) status.AddTrace(nullptr, 0);
  return status;
}

weftcore::Status SegmentationSource::Get(
    const std::string& /*key*/,
    ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_* property) {
  if (property == nullptr) return NullRecordError();
  device_->AnswerMasks(property);
  return weftcore::Status();
}

weftcore::Status SegmentationSource::Set(
    const std::string& key,
    const ZeltoSegmentation::ZeltoSegmentationMaskDataListProperty_* /*property*/) {
  return NotSettableError(key);
}

}  // namespace ZeltoSim
