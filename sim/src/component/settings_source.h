// "zelto_stream": the application-wide settings (log level, runtime
// settings). It delivers no frames.
#pragma once

#include "component/frameless_source.h"

namespace ZeltoSim {

class SettingsSource final : public FramelessSource {
 public:
  explicit SettingsSource(SimDevice* device) : FramelessSource(device, kSettingsSourceType) {}

  using FramelessSource::Get;
  using FramelessSource::Set;

  weftcore::Status Open(weftcore::Core* core, weftcore::StreamSourceUtility* util) override;

  weftcore::Status Get(const std::string& key, Zelto::ZeltoLogLevelProperty_* property);
  // Accepts levels 2..8 (as the mesh source does), else cause 2.
  weftcore::Status Set(const std::string& key, const Zelto::ZeltoLogLevelProperty_* property);
  weftcore::Status Get(const std::string& key, Zelto::ZeltoRuntimeSettingsProperty_* property);
  weftcore::Status Set(const std::string& key,
                       const Zelto::ZeltoRuntimeSettingsProperty_* property);
};

}  // namespace ZeltoSim
