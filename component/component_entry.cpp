// Part 1.2: the exported entry points of component_zelto_mesh.
#include "component/component_entry.h"

#include <new>

#include "component/zelto_mesh_sourcefactory.h"

extern "C" weftcore::StandardComponent* CreateComponent() {
  // An exception cannot cross this C boundary into the host, so a failed
  // construction releases what was built and reports null (deviation of
  // Part 1.2: the original let the exception go on).
  ZeltoMeshSourceFactory* factory = nullptr;
  try {
    factory = new ZeltoMeshSourceFactory();
    return new weftcore::StandardComponent(factory);
  } catch (...) {
    delete factory;
    return nullptr;
  }
}

extern "C" void DestroyComponent(weftcore::StandardComponent* component) {
  delete component;  // the component deletes its factory
}
