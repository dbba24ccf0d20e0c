// A broken component library for the loading tests: it exports
// CreateComponent but not DestroyComponent.
#include "weftcore/weftcore.h"

extern "C" __attribute__((visibility("default"))) weftcore::StandardComponent* CreateComponent() {
  return nullptr;
}
