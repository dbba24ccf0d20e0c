// The options of component_zelto_sim, carried as the component's
// ComponentArgument (string key/value pairs of the host configuration).
#pragma once

#include <cstdint>
#include <set>
#include <string>

#include "weftcore/status.h"
#include "weftcore/stream_source_factory.h"

namespace ZeltoSim {

// Source types that the sim's factory offers, one per upstream stream key.
constexpr char kSettingsSourceType[] = "zelto_settings";    // "zelto_stream"
constexpr char kTofCameraSourceType[] = "tof_camera";       // "zelto_tof_camera2_stream"
constexpr char kTofPlayerSourceType[] = "tof_player";       // "player_tof_stream"
constexpr char kSegmentationSourceType[] = "segmentation";  // "zelto_segmentation_camera2_stream"

// Failure knobs, for trying a host or a component against a device that
// misbehaves. Lists are comma-separated in the component argument; an empty
// list changes nothing.
struct SimFaults {
  std::set<std::string> failOpen;   // "fail_open": source types whose Open fails
  std::set<std::string> failStart;  // "fail_start"
  std::set<std::string> failStop;   // "fail_stop"
  std::set<std::string> failClose;  // "fail_close"
  std::set<std::string> failGet;    // "fail_get": property keys whose Get fails
  std::set<std::string> failSet;    // "fail_set": property keys whose Set fails
  std::set<std::string> throwGet;   // "throw_get": property keys whose Get throws
  // "point_cloud": "full"; "null", a point-cloud channel without memory; or
  // "short", one point fewer than the image.
  std::string pointCloud = "full";
};

struct SimOptions {
  std::string input;      // "input": recording directory; empty = synthetic scene
  uint64_t frames = 0;    // "frames": frames per Start; 0 = all (recording) or endless (synthetic)
  uint64_t seed = 1;      // "seed": synthetic scene noise seed
  bool remote = false;    // "remote": runtime settings isRemoteServer
  uint8_t runMode = 0;    // "run_mode": runtime settings runMode, 0..255
  bool realtime = false;  // "realtime": deliver each frame at its timestamp, not at once
  int32_t logLevel = 8;   // "log_level": the log level record, 2..8
  SimFaults faults;
};

// Every option as text ("true"/"false" for flags, decimal numbers); the
// failure knobs only when set, so that a working device's arguments stay short.
weftcore::ComponentArgument ToComponentArgument(const SimOptions& options);
// Missing keys keep the defaults above. An unknown key or a bad value fails
// with cause 2 and a one-line message naming the key, e.g.
// "component argument \"frames\": \"x\" is not an unsigned integer".
weftcore::Status ParseSimOptions(const weftcore::ComponentArgument& args, SimOptions* options);

}  // namespace ZeltoSim
