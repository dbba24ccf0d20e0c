#include "tests/component/mesh_host.h"

#include "component/component_entry.h"
#include "component/zelto_mesh_constants.h"

namespace zelto_test {

MeshHost::MeshHost(const FakeUpstream& upstream, const Extension& extend)
    : core_(Configuration(upstream, extend)) {
  registration_ = core_.RegisterComponent(kMeshComponentName, &CreateComponent, &DestroyComponent);
  if (registration_.ok()) registration_ = FakeUpstream::Register(&core_);
}

weftcore::host::HostConfiguration MeshHost::Configuration(const FakeUpstream& upstream,
                                                          const Extension& extend) {
  weftcore::host::HostConfiguration configuration;
  configuration.streams[kMeshStreamKey] =
      weftcore::host::StreamEntry{kMeshComponentName, ZeltoMesh::kPortType};
  upstream.AddTo(&configuration);
  if (extend) extend(&configuration);
  return configuration;
}

weftcore::Status MeshHost::OpenMesh(weftcore::Stream** stream) {
  return core_.OpenStream(kMeshStreamKey, stream);
}

ZeltoMeshStreamSource* MeshHost::SourceOf(weftcore::Stream* stream) const {
  return static_cast<ZeltoMeshStreamSource*>(core_.SourceOf(stream));
}

}  // namespace zelto_test
