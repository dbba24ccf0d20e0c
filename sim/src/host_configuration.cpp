#include "zelto_sim/host_configuration.h"

#include "properties/zelto_runtime_settings_property.h"
#include "properties/zelto_segmentation_properties.h"
#include "properties/zelto_tof_properties.h"

namespace ZeltoSim {

weftcore::host::HostConfiguration BuildHostConfiguration(const HostOptions& options) {
  using weftcore::host::StreamEntry;
  weftcore::host::HostConfiguration configuration;
  configuration.components[kMeshComponentKey].library = options.meshLibrary;
  configuration.components[kSimComponentKey].library = options.simLibrary;
  configuration.components[kSimComponentKey].args = ToComponentArgument(options.sim);

  configuration.streams[kMeshStreamKey] = StreamEntry{kMeshComponentKey, kMeshSourceType};
  configuration.streams[Zelto::kStreamKey] = StreamEntry{kSimComponentKey, kSettingsSourceType};
  configuration.streams[ZeltoTof::kCamera2StreamKey] =
      StreamEntry{kSimComponentKey, kTofCameraSourceType};
  if (options.player) {
    configuration.streams[ZeltoTof::kCamera2StreamPlaybackKey] =
        StreamEntry{kSimComponentKey, kTofPlayerSourceType};
  }
  configuration.streams[ZeltoSegmentation::kSegmentationStreamKey] =
      StreamEntry{kSimComponentKey, kSegmentationSourceType};
  return configuration;
}

}  // namespace ZeltoSim
