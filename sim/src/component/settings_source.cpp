#include "component/settings_source.h"

#include "component/source_errors.h"

namespace ZeltoSim {

weftcore::Status SettingsSource::Open(weftcore::Core* /*core*/,
                                      weftcore::StreamSourceUtility* util) {
  const SimFaults& faults = device_->options().faults;
  weftcore::Status status = Refused(&SimFaults::failOpen, "open");
  if (status.ok()) {
    status = ServeProperty<Zelto::ZeltoLogLevelProperty_>(util, Zelto::kZeltoLogLevelKey, this,
                                                          faults);
  }
  if (status.ok()) {
    status = ServeProperty<Zelto::ZeltoRuntimeSettingsProperty_>(
        util, Zelto::kZeltoRuntimeSettingsKey, this, faults);
  }
  if (status.IsError()) status.AddTrace(nullptr, 0);
  return status;
}

weftcore::Status SettingsSource::Get(const std::string& /*key*/,
                                     Zelto::ZeltoLogLevelProperty_* property) {
  if (property == nullptr) return NullRecordError();
  *property = device_->LogLevel();
  return weftcore::Status();
}

weftcore::Status SettingsSource::Set(const std::string& /*key*/,
                                     const Zelto::ZeltoLogLevelProperty_* property) {
  if (property == nullptr) return NullRecordError();
  const int32_t level = property->logLevel;
  if (level < 2 || level > 8) {
    return SimError(weftcore::kCauseInvalidArgument,
                    "log level " + std::to_string(level) + " is out of range 2..8");
  }
  device_->SetLogLevel(*property);
  return weftcore::Status();
}

weftcore::Status SettingsSource::Get(const std::string& /*key*/,
                                     Zelto::ZeltoRuntimeSettingsProperty_* property) {
  if (property == nullptr) return NullRecordError();
  *property = device_->RuntimeSettings();
  return weftcore::Status();
}

weftcore::Status SettingsSource::Set(const std::string& /*key*/,
                                     const Zelto::ZeltoRuntimeSettingsProperty_* property) {
  if (property == nullptr) return NullRecordError();
  device_->SetRuntimeSettings(*property);
  return weftcore::Status();
}

}  // namespace ZeltoSim
