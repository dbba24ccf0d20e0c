// Loads the installed mesh plug-in through the installed host library, sets a
// reduction level with the installed record, and checks that one frame of the
// simulated device comes back as a 160 x 120 vertex reference-layout mesh.
#include <cstdio>

#include "component/zelto_mesh_constants.h"
#include "mesh/mesh_algorithm_config_property.h"
#include "mesh/mesh_frame_data.h"
#include "weftcore/host/host_core.h"

#define CHECK(ok) if (!(ok)) return std::fprintf(stderr, "failed: %s\n", #ok), 1

int main() {
  weftcore::host::HostConfiguration configuration;
  configuration.components["mesh"].library = MESH_PLUGIN;
  configuration.components["sim"].library = "component_zelto_sim";
  configuration.streams["mesh"] = {"mesh", ZeltoMesh::kPortType};
  configuration.streams["zelto_stream"] = {"sim", "zelto_settings"};
  configuration.streams["zelto_tof_camera2_stream"] = {"sim", "tof_camera"};
  weftcore::host::HostCore core(configuration, {});  // no search path of its own
  weftcore::Stream* stream = nullptr;
  const weftcore::Status opened = core.OpenStream("mesh", &stream);
  if (!opened.ok()) return std::fprintf(stderr, "%s\n", opened.message().c_str()), 1;
  const ZeltoMesh::ZeltoMeshAlgorithmConfigProperty_ config{3, 4};
  CHECK(stream->SetProperty(ZeltoMesh::kZeltoMeshAlgorithmConfigKey, &config).ok());
  weftcore::Frame* frame = nullptr;
  weftcore::Channel* channel = nullptr;
  weftcore::Channel::RawData raw;
  CHECK(stream->Start().ok() && stream->GetFrame(&frame, 5000).ok() && frame != nullptr);
  CHECK(frame->GetChannel(0, &channel).ok() && channel->GetRawData(&raw).ok());
  CHECK(raw.type == ZeltoMesh::kRawDataTypeMesh && raw.size == sizeof(ZeltoMesh::MeshFrameData));
  const auto* mesh = static_cast<const ZeltoMesh::MeshFrameData*>(raw.address);
  CHECK(mesh->vertexCount == 160 * 120 && mesh->vertices != nullptr && mesh->triangleCount > 0);
  CHECK(stream->ReleaseFrame(frame).ok() && stream->Stop().ok() && core.CloseStream(stream).ok());
}
