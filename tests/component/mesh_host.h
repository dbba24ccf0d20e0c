// The host of the component tests: a HostCore that serves "mesh" from the
// component of zelto_mesh_static (its own CreateComponent/DestroyComponent)
// and the upstream keys from a FakeUpstream.
#pragma once

#include <functional>
#include <string>

#include "component/zelto_mesh_streamsource.h"
#include "tests/component/fake_upstream.h"
#include "weftcore/host/host_core.h"

namespace zelto_test {

class MeshHost {
 public:
  static constexpr char kMeshComponentName[] = "zelto_mesh";
  static constexpr char kMeshStreamKey[] = "mesh";

  // Lets a suite route further streams (and register their components
  // afterwards through core()).
  using Extension = std::function<void(weftcore::host::HostConfiguration*)>;

  explicit MeshHost(const FakeUpstream& upstream, const Extension& extend = Extension());
  MeshHost(const MeshHost&) = delete;
  MeshHost& operator=(const MeshHost&) = delete;

  weftcore::host::HostCore& core() { return core_; }
  // The status of registering the two components.
  const weftcore::Status& registration() const { return registration_; }

  // Opens "mesh" through the core (RegisterMandatoryProperties, then Open).
  weftcore::Status OpenMesh(weftcore::Stream** stream);
  // The concrete source behind an open "mesh" stream of this host.
  ZeltoMeshStreamSource* SourceOf(weftcore::Stream* stream) const;

 private:
  static weftcore::host::HostConfiguration Configuration(const FakeUpstream& upstream,
                                                         const Extension& extend);

  weftcore::host::HostCore core_;
  weftcore::Status registration_;
};

}  // namespace zelto_test
