// The host configuration of a mesh pipeline fed by component_zelto_sim: the
// mesh component serves "mesh", the sim serves the four upstream streams.
#pragma once

#include <string>

#include "weftcore/host/configuration.h"
#include "zelto_sim/sim_options.h"

namespace ZeltoSim {

constexpr char kMeshComponentKey[] = "mesh_component";
constexpr char kSimComponentKey[] = "sim_component";
constexpr char kMeshLibraryName[] = "component_zelto_mesh";
constexpr char kSimLibraryName[] = "component_zelto_sim";
constexpr char kMeshStreamKey[] = "mesh";
constexpr char kMeshSourceType[] = "mesh";

struct HostOptions {
  SimOptions sim;
  bool player = true;  // map "player_tof_stream"; false leaves it absent
  std::string meshLibrary = kMeshLibraryName;  // a name or a path containing '/'
  std::string simLibrary = kSimLibraryName;
};

// components: kMeshComponentKey -> meshLibrary (no args),
//             kSimComponentKey  -> simLibrary, args ToComponentArgument(sim)
// streams:    "mesh"                              -> mesh component, "mesh"
//             "zelto_stream"                      -> sim, kSettingsSourceType
//             "zelto_tof_camera2_stream"          -> sim, kTofCameraSourceType
//             "player_tof_stream" (if player)     -> sim, kTofPlayerSourceType
//             "zelto_segmentation_camera2_stream" -> sim, kSegmentationSourceType
weftcore::host::HostConfiguration BuildHostConfiguration(const HostOptions& options);

}  // namespace ZeltoSim
