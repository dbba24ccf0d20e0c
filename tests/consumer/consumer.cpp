// Loads the installed mesh plug-in through the installed host library, sets a
// reduction level with the installed record, and checks that one frame of the
// simulated device comes back as a 160 x 120 vertex reference-layout mesh.
#include <cstdio>

#include "component/zelto_mesh_constants.h"
#include "mesh/mesh_algorithm_config_property.h"
#include "mesh/mesh_frame_data.h"
#include "weftcore/host/host_core.h"

namespace {

// Says which check failed; main returns 1 at the first one.
bool Check(bool ok, const char* what) {
  if (!ok) std::fprintf(stderr, "failed: %s\n", what);
  return ok;
}

int Run() {
  weftcore::host::HostConfiguration configuration;
  configuration.components["mesh"].library = MESH_PLUGIN;
  configuration.components["sim"].library = "component_zelto_sim";
  configuration.streams["mesh"] = {"mesh", ZeltoMesh::kPortType};
  configuration.streams["zelto_stream"] = {"sim", "zelto_settings"};
  configuration.streams["zelto_tof_camera2_stream"] = {"sim", "tof_camera"};
  weftcore::host::HostCore core(configuration, {});  // no search path of its own
  weftcore::Stream* stream = nullptr;
  const weftcore::Status opened = core.OpenStream("mesh", &stream);
  if (!Check(opened.ok(), opened.message().c_str())) return 1;
  const ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_ config{3, 4};
  if (!Check(stream->SetProperty(ZeltoMesh::kZeltoMeshAlgorithmConfigKey, &config).ok(),
             "set the reduction level")) {
    return 1;
  }
  weftcore::Frame* frame = nullptr;
  weftcore::Channel* channel = nullptr;
  weftcore::Channel::RawData raw;
  if (!Check(stream->Start().ok() && stream->GetFrame(&frame, 5000).ok() && frame != nullptr &&
                 frame->GetChannel(0, &channel).ok() && channel->GetRawData(&raw).ok(),
             "one frame with a channel 0")) {
    return 1;
  }
  const auto* mesh = static_cast<const ZeltoMesh::MeshFrameData*>(raw.address);
  if (!Check(raw.type == ZeltoMesh::kRawDataTypeMesh &&
                 raw.size == sizeof(ZeltoMesh::MeshFrameData) && mesh->vertexCount == 160 * 120 &&
                 mesh->vertices != nullptr && mesh->triangleCount > 0,
             "a 160 x 120 reference-layout mesh")) {
    return 1;
  }
  return Check(stream->ReleaseFrame(frame).ok() && stream->Stop().ok() &&
                   core.CloseStream(stream).ok(),
               "release, stop and close")
             ? 0
             : 1;
}

}  // namespace

int main() { return Run(); }
