// The options of component_zelto_sim, carried as the component's
// ComponentArgument (string key/value pairs of the host configuration).
#pragma once

#include <cstdint>
#include <string>

#include "weftcore/status.h"
#include "weftcore/stream_source_factory.h"

namespace ZeltoSim {

// Source types that the sim's factory offers, one per upstream stream key.
constexpr char kSettingsSourceType[] = "zelto_settings";    // "zelto_stream"
constexpr char kTofCameraSourceType[] = "tof_camera";       // "zelto_tof_camera2_stream"
constexpr char kTofPlayerSourceType[] = "tof_player";       // "player_tof_stream"
constexpr char kSegmentationSourceType[] = "segmentation";  // "zelto_segmentation_camera2_stream"

struct SimOptions {
  std::string input;      // "input": recording directory; empty = synthetic scene
  uint64_t frames = 0;    // "frames": frames per Start; 0 = all (recording) or endless (synthetic)
  uint64_t seed = 1;      // "seed": synthetic scene noise seed
  bool remote = false;    // "remote": runtime settings isRemoteServer
  uint8_t runMode = 0;    // "run_mode": runtime settings runMode, 0..255
  bool realtime = false;  // "realtime": deliver each frame at its timestamp, not at once
  int32_t logLevel = 8;   // "log_level": the log level record, 2..8
};

// Every option as text ("true"/"false" for flags, decimal numbers).
weftcore::ComponentArgument ToComponentArgument(const SimOptions& options);
// Missing keys keep the defaults above. An unknown key or a bad value fails
// with cause 2 and a one-line message naming the key, e.g.
// "component argument \"frames\": \"x\" is not an unsigned integer".
weftcore::Status ParseSimOptions(const weftcore::ComponentArgument& args, SimOptions* options);

}  // namespace ZeltoSim
