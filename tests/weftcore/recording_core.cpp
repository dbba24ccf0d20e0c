#include "weftcore/recording_core.h"

#include <string>
#include <vector>

#include "weftcore/recording_component.h"

namespace weftcore_test {

std::unique_ptr<weftcore::host::HostCore> MakeRecordingCore() {
  weftcore::host::HostConfiguration configuration;
  configuration.streams["recording"] = {kRecordingComponent, "recording"};
  auto core =
      std::make_unique<weftcore::host::HostCore>(configuration, std::vector<std::string>{});
  if (!core->RegisterComponent(kRecordingComponent, CreateRecordingComponent,
                               DestroyRecordingComponent)
           .ok()) {
    return nullptr;
  }
  return core;
}

}  // namespace weftcore_test
