// The two exported entry points of libcomponent_zelto_sim.so.
#include "component/sim_factory.h"
#include "weftcore/export.h"

extern "C" WEFTCORE_API weftcore::StandardComponent* CreateComponent() {
  return new weftcore::StandardComponent(new ZeltoSim::SimFactory());
}

extern "C" WEFTCORE_API void DestroyComponent(weftcore::StandardComponent* component) {
  delete component;
}
