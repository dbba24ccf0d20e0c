// The two entry points the host resolves in libcomponent_zelto_mesh.so.
#include "component/component_entry.h"

#include <new>

#include "component/zelto_mesh_sourcefactory.h"

extern "C" weftcore::StandardComponent* CreateComponent() {
  // An exception cannot cross this C boundary into the host, so a failed
  // construction releases what was built and reports null.
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
